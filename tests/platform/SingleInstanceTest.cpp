#include "platform/linux/SingleInstance.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <fstream>
#include <thread>

#include "TestBus.h"
#include "platform/linux/UniqueFd.h"

namespace tidewell {
namespace {

using SendResult = SingleInstance::SendResult;

/// Sends from another thread, as another process would, while the event loop runs here.
SendResult sendWhileRunning(const std::filesystem::path& folder, InstanceWord word)
{
    std::atomic<bool> done = false;
    SendResult result{};
    std::thread sender{[&] {
        result = SingleInstance::send(folder, word, std::chrono::seconds{10});
        done = true;
    }};
    EXPECT_TRUE(runUntil([&] { return done.load(); }));
    sender.join();
    return result;
}

UniqueFd connectTo(const std::filesystem::path& folder)
{
    UniqueFd fd{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = (folder / "instance.socket").string();
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    const void* plain = &address;
    EXPECT_EQ(::connect(fd.get(), static_cast<const sockaddr*>(plain), sizeof address), 0);
    return fd;
}

/// The peer's end was closed without an answer.
bool isHungUp(const UniqueFd& fd)
{
    char byte = 0;
    return runUntil([&] {
        const ssize_t count = ::recv(fd.get(), &byte, 1, MSG_DONTWAIT);
        return count == 0 || (count < 0 && errno == ECONNRESET);
    });
}

TEST(SingleInstance, theSecondStartFindsTheFirstAndHandsItsWordOver)
{
    const TemporaryFolder folder;
    const auto where = folder.path() / std::string(120, 'x');  // Longer than a socket's name may be.
    EXPECT_EQ(SingleInstance::send(where, InstanceWord::activate), SendResult::notRunning);
    auto first = SingleInstance::acquire(where);
    ASSERT_TRUE(first && *first);
    const auto second = SingleInstance::acquire(where);
    ASSERT_TRUE(second);
    EXPECT_EQ(*second, nullptr);

    std::vector<InstanceWord> words;
    (*first)->onWord([&](InstanceWord word) { words.push_back(word); });
    EXPECT_EQ(sendWhileRunning(where, InstanceWord::activate), SendResult::delivered);
    EXPECT_EQ(sendWhileRunning(where, InstanceWord::configurationChanged), SendResult::delivered);
    EXPECT_TRUE(runUntil([&] { return words.size() == 2; }));
    EXPECT_EQ(words, (std::vector{InstanceWord::activate, InstanceWord::configurationChanged}));

    struct stat info{};
    ASSERT_EQ(::stat((where / "instance.socket").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
    first->reset();
    EXPECT_EQ(SingleInstance::send(where, InstanceWord::activate), SendResult::notRunning);
    const auto next = SingleInstance::acquire(where);
    EXPECT_TRUE(next && *next);
}

TEST(SingleInstance, whatADeadInstanceLeftIsNoObstacle)
{
    const TemporaryFolder folder;
    std::ofstream{folder.path() / "instance.lock"} << "4711";
    std::ofstream{folder.path() / "instance.socket"} << "no socket at all";
    const auto instance = SingleInstance::acquire(folder.path());
    ASSERT_TRUE(instance && *instance);
    EXPECT_EQ(sendWhileRunning(folder.path(), InstanceWord::activate), SendResult::delivered);
}

TEST(SingleInstance, anInstanceThatDoesNotAnswerIsGivenUpOn)
{
    const TemporaryFolder folder;
    const auto instance = SingleInstance::acquire(folder.path());
    ASSERT_TRUE(instance && *instance);
    // No event loop runs meanwhile.
    EXPECT_EQ(SingleInstance::send(folder.path(), InstanceWord::activate, std::chrono::milliseconds{20}),
              SendResult::noAnswer);
}

TEST(SingleInstance, aFolderThatOthersMayEnterIsRefused)
{
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    EXPECT_FALSE(SingleInstance::acquire(folder.path()));
    EXPECT_FALSE(SingleInstance::acquire("/proc/no/such/place"));
}

TEST(SingleInstance, junkIsDroppedAndAFloodDoesNotKeepWordsOut)
{
    const TemporaryFolder folder;
    const auto instance = SingleInstance::acquire(folder.path());
    ASSERT_TRUE(instance && *instance);
    int heard = 0;
    (*instance)->onWord([&](InstanceWord) { ++heard; });
    for (const std::string& junk : {std::string{"\n"}, std::string{"ACTIVATE\n"}, std::string(100'000, 'a'),
                                    std::string{"activate", 8} + '\0' + "\n", std::string{"\xff\xfe\n"}}) {
        const UniqueFd peer = connectTo(folder.path());
        [[maybe_unused]] const ssize_t sent =
            ::send(peer.get(), junk.data(), junk.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        EXPECT_TRUE(isHungUp(peer)) << junk.substr(0, 10);
    }
    EXPECT_EQ(heard, 0);

    {
        // As many silent peers as the backlog takes; those beyond the limit are hung up on at once.
        std::vector<UniqueFd> silent;
        for (int i = 0; i < 16; ++i)
            silent.push_back(connectTo(folder.path()));
        EXPECT_TRUE(isHungUp(silent.back()));
    }
    EXPECT_EQ(sendWhileRunning(folder.path(), InstanceWord::activate), SendResult::delivered);
    EXPECT_TRUE(runUntil([&] { return heard == 1; }));
}

}  // namespace
}  // namespace tidewell

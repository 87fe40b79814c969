#include "platform/linux/SingleInstance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/Folders.h"
#include "platform/linux/UniqueFd.h"
#include "support/Log.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

const Log log{"SingleInstance"};

constexpr const char* lockName = "instance.lock";
constexpr const char* socketName = "instance.socket";
constexpr std::string_view answer = "ok\n";
/// Longer than any word; a peer that sends more is not one of ours.
constexpr std::size_t longestWord = 64;
constexpr std::size_t mostPeers = 8;
constexpr std::chrono::milliseconds peerTimeout{1000};

struct WordText {
    InstanceWord word;
    std::string_view text;
};
constexpr std::array words{WordText{InstanceWord::activate, "activate"},
                           WordText{InstanceWord::configurationChanged, "configuration-changed"},
                           WordText{InstanceWord::snoozeChanged, "snooze-changed"},
                           WordText{InstanceWord::historyChanged, "history-changed"},
                           WordText{InstanceWord::areYouThere, "are-you-there"}};

std::error_code lastError() { return {errno, std::system_category()}; }

/// The address of the socket by way of its opened folder, since a path may be longer than an address holds.
sockaddr_un socketAddress(int folder)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder, socketName);
    return address;
}

const sockaddr* generic(const sockaddr_un& address)
{
    const void* plain = &address;
    return static_cast<const sockaddr*>(plain);
}

bool isSameUser(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::getuid();
}

UniqueFd openFolder(const std::filesystem::path& folder)
{
    return UniqueFd{::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
}

}  // namespace

struct SingleInstance::Impl {
    UniqueFd folder{};
    UniqueFd lock{};
    UniqueFd listener{};
    std::unique_ptr<QSocketNotifier> arrivals{};
    std::function<void(InstanceWord)> handler{};
    std::set<InstanceWord> heard{};  ///< Not told yet; a set, so a flood of words is a few calls.
    QObject loop{};

    struct Peer {
        UniqueFd fd;
        std::unique_ptr<QSocketNotifier> readable;
        std::string text{};
    };
    std::map<int, Peer> peers{};

    ~Impl()
    {
        if (listener)
            ::unlinkat(folder.get(), socketName, 0);
    }

    std::error_code listen()
    {
        // What is there was left by an instance that died: this one holds the lock.
        if (::unlinkat(folder.get(), socketName, 0) != 0 && errno != ENOENT)
            return lastError();
        UniqueFd fd{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
        const sockaddr_un address = socketAddress(folder.get());
        if (!fd || ::fchmod(fd.get(), 0600) != 0 || ::bind(fd.get(), generic(address), sizeof address) != 0 ||
            ::listen(fd.get(), 16) != 0)
            return lastError();
        listener = std::move(fd);
        arrivals = std::make_unique<QSocketNotifier>(listener.get(), QSocketNotifier::Read);
        QObject::connect(arrivals.get(), &QSocketNotifier::activated, &loop, [this] { accept(); });
        return {};
    }

    /// One at a time: the event loop comes back while more wait, and does its other work in between.
    void accept()
    {
        UniqueFd fd{::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!fd || !isSameUser(fd.get()))
            return;
        if (peers.size() >= mostPeers)
            readAllPeers();  // Who has left already must not keep others out.
        if (peers.size() >= mostPeers)
            return;
        const int number = fd.get();
        Peer& peer = peers.try_emplace(number, Peer{std::move(fd), nullptr}).first->second;
        peer.readable = std::make_unique<QSocketNotifier>(number, QSocketNotifier::Read);
        QObject* life = peer.readable.get();
        QObject::connect(peer.readable.get(), &QSocketNotifier::activated, &loop,
                         [this, number] { readPeer(number); });
        QTimer::singleShot(peerTimeout, life, [this, number] { dropPeer(number); });
    }

    /// The descriptor's number is free again afterwards, so its notifier must have stopped before.
    void dropPeer(int number)
    {
        const auto found = peers.find(number);
        if (found == peers.end())
            return;
        found->second.readable->setEnabled(false);
        found->second.readable.release()->deleteLater();
        peers.erase(found);
    }

    void readAllPeers()
    {
        std::vector<int> numbers;
        for (const auto& [number, peer] : peers)
            numbers.push_back(number);
        for (const int number : numbers)
            readPeer(number);
    }

    void readPeer(int number)
    {
        const auto found = peers.find(number);
        if (found == peers.end())
            return;
        std::string& text = found->second.text;
        std::array<char, longestWord> buffer{};
        const ssize_t count = ::recv(number, buffer.data(), buffer.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        const auto end = text.find('\n');
        if (end == std::string::npos && count > 0 && text.size() <= longestWord)
            return;  // The rest may still come.
        const auto word = std::ranges::find(words, std::string_view{text}.substr(0, end), &WordText::text);
        if (end != std::string::npos && word != words.end()) {
            ::send(number, answer.data(), answer.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            hear(word->word);
        }
        dropPeer(number);
    }

    void hear(InstanceWord word)
    {
        heard.insert(word);
        if (heard.size() == 1)
            QTimer::singleShot(0, &loop, [this] { tell(); });
    }

    void tell()
    {
        for (const InstanceWord word : std::exchange(heard, {})) {
            if (handler)
                handler(word);
        }
    }
};

SingleInstance::SingleInstance(std::unique_ptr<Impl> impl) : impl_{std::move(impl)} {}

SingleInstance::~SingleInstance() = default;

std::expected<std::unique_ptr<SingleInstance>, std::error_code> SingleInstance::acquire(
    const std::filesystem::path& runtimeFolder)
{
    if (const std::error_code error = prepareRuntimeFolder(runtimeFolder))
        return std::unexpected{error};
    auto impl = std::make_unique<Impl>();
    impl->folder = openFolder(runtimeFolder);
    impl->lock = UniqueFd{
        ::openat(impl->folder.get(), lockName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)};
    if (!impl->folder || !impl->lock)
        return std::unexpected{lastError()};
    if (::flock(impl->lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return nullptr;
        return std::unexpected{lastError()};
    }
    if (const std::error_code error = impl->listen())
        log.warning("Later starts cannot reach this instance: " + error.message());
    return std::unique_ptr<SingleInstance>{new SingleInstance{std::move(impl)}};
}

void SingleInstance::onWord(std::function<void(InstanceWord)> handler)
{
    impl_->handler = std::move(handler);
}

SingleInstance::SendResult SingleInstance::send(const std::filesystem::path& runtimeFolder, InstanceWord word,
                                                std::chrono::milliseconds deadline)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    const UniqueFd folder = openFolder(runtimeFolder);
    if (!folder)
        return SendResult::notRunning;
    const UniqueFd fd{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    const sockaddr_un address = socketAddress(folder.get());
    if (!fd)
        return SendResult::noAnswer;
    if (::connect(fd.get(), generic(address), sizeof address) != 0)
        return errno == ENOENT || errno == ECONNREFUSED ? SendResult::notRunning : SendResult::noAnswer;
    if (!isSameUser(fd.get()))
        return SendResult::noAnswer;
    const std::string text = std::string{std::ranges::find(words, word, &WordText::word)->text} + "\n";
    if (::send(fd.get(), text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size()))
        return SendResult::noAnswer;

    std::string heard;
    while (heard.size() < answer.size()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd wait{.fd = fd.get(), .events = POLLIN, .revents = 0};
        if (left.count() <= 0 || ::poll(&wait, 1, static_cast<int>(left.count())) == 0)
            return SendResult::noAnswer;
        std::array<char, answer.size()> buffer{};
        const ssize_t count = ::recv(fd.get(), buffer.data(), buffer.size() - heard.size(), 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
            return SendResult::noAnswer;
        if (count > 0)
            heard.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return heard == answer ? SendResult::delivered : SendResult::noAnswer;
}

}  // namespace tidewell

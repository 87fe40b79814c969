#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "config/ConfigTesting.h"
#include "config/FileKeychainItemStore.h"
#include "config/MemoryKeychainItemStore.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view service = "Tidewell.test";

TEST(KeychainItemStore, keepsOneItemPerServiceAndAccount)
{
    const TemporaryFolder folder;
    MemoryKeychainItemStore memory;
    FileKeychainItemStore file{folder / "new/secrets.json"};
    for (KeychainItemStoring* store : std::initializer_list<KeychainItemStoring*>{&memory, &file}) {
        EXPECT_EQ(store->read(service, "a"), KeychainLookup{KeychainItemNotFound{}});
        EXPECT_EQ(store->remove(service, "a"), keychainStatus::itemNotFound);
        EXPECT_EQ(store->write(service, "a", SecretText{"first"}), keychainStatus::success);
        EXPECT_EQ(store->write(service, "a", SecretText{everyByte()}), keychainStatus::success);
        EXPECT_EQ(store->write(service, "b", SecretText{}), keychainStatus::success);
        EXPECT_EQ(store->write("Other", "a", SecretText{"other"}), keychainStatus::success);
        EXPECT_EQ(store->read(service, "a"), KeychainLookup{SecretText{everyByte()}});
        EXPECT_EQ(store->read(service, "b"), KeychainLookup{SecretText{}});
        EXPECT_EQ(store->remove(service, "a"), keychainStatus::success);
        EXPECT_EQ(store->read(service, "a"), KeychainLookup{KeychainItemNotFound{}});
        EXPECT_EQ(store->read("Other", "a"), KeychainLookup{SecretText{"other"}});
    }
    struct stat status{};
    ASSERT_EQ(::stat((folder / "new/secrets.json").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    ASSERT_EQ(::stat((folder / "new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
}

/// Every call answers `status`, says why in the log and leaves the place as it is.
void expectRefused(const std::filesystem::path& path, std::int32_t status, std::string_view reason)
{
    const LogCatcher log;
    FileKeychainItemStore store{path};
    EXPECT_EQ(store.read(service, "a"), KeychainLookup{KeychainFailure{status}}) << path;
    EXPECT_EQ(store.write(service, "a", SecretText{"new-secret"}), status) << path;
    EXPECT_EQ(store.remove(service, "a"), status) << path;
    EXPECT_NE(log.text().find(reason), std::string::npos) << log.text();
    EXPECT_EQ(log.text().find("secret\""), std::string::npos) << log.text();
}

TEST(FileKeychainItemStore, refusesAFileThatIsNotOursAlone)
{
    const TemporaryFolder folder;
    const auto file = folder / "secrets.json";
    ASSERT_EQ((FileKeychainItemStore{file}.write(service, "a", SecretText{"old"})), keychainStatus::success);
    const auto before = bytesOf(file);
    for (const mode_t mode : {0640U, 0604U, 0660U, 0601U}) {
        ASSERT_EQ(::chmod(file.c_str(), mode), 0);
        expectRefused(file, keychainStatus::invalidStore, "chmod 600");
        EXPECT_EQ(bytesOf(file), before);
    }
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    std::filesystem::create_symlink(file, folder / "link.json");
    expectRefused(folder / "link.json", keychainStatus::invalidStore, "cannot be opened");
    ASSERT_EQ(::mkfifo((folder / "pipe.json").c_str(), 0600), 0);
    expectRefused(folder / "pipe.json", keychainStatus::invalidStore, "not a regular file");
    std::filesystem::create_directory(folder / "folder.json");
    expectRefused(folder / "folder.json", keychainStatus::invalidStore, "not a regular file");
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(file.c_str(), 12345, 12345), 0);
        expectRefused(file, keychainStatus::invalidStore, "another user");
    }
    EXPECT_EQ(bytesOf(file), before);
}

TEST(FileKeychainItemStore, leavesADamagedFileAsItIs)
{
    const TemporaryFolder folder;
    const auto file = folder / "secrets.json";
    ASSERT_EQ((FileKeychainItemStore{file}.write(service, "a", SecretText{"value"})),
              keychainStatus::success);
    const auto good = bytesOf(file);
    const std::string item = R"({"service":"s","account":"a","data":"AAAA"})";
    auto damaged = parts(
        R"(|[]|{}|secret"|{"version":2,"items":[]}|{"version":"1","items":[]}|{"version":1,"items":{}}|)"
        R"({"version":1,"items":[7]}|{"version":1,"items":[{"service":"s","account":"a"}]}|)"
        R"({"version":1,"items":[{"service":"s","account":"a","data":"AAA"}]})");
    damaged.push_back(good + "x");
    damaged.push_back(fmt::format(R"({{"version":1,"items":[{},{}]}})", item, item));
    damaged.push_back(std::string(2 << 20, ' '));
    for (std::size_t size = 1; size + 1 < good.size(); size += 7)
        damaged.push_back(good.substr(0, size));
    for (const std::string& bytes : damaged) {
        writeBytes(file, bytes);
        const auto status = bytes.size() > good.size() * 100 ? keychainStatus::io : keychainStatus::decode;
        expectRefused(file, status, status == keychainStatus::io ? "cannot be read" : "damaged");
        EXPECT_EQ(bytesOf(file), bytes);
    }
    writeBytes(file, good);
    EXPECT_EQ((FileKeychainItemStore{file}.read(service, "a")), KeychainLookup{SecretText{"value"}});
}

TEST(FileKeychainItemStore, aFailedWriteChangesNothing)
{
    const TemporaryFolder folder;
    const auto file = folder / "secrets.json";
    FileKeychainItemStore store{file, 0ms};
    ASSERT_EQ(store.write(service, "a", SecretText{"value"}), keychainStatus::success);
    const auto before = contentOf(folder);
    {
        const FullDisk full;
        EXPECT_EQ(store.write(service, "a", SecretText{"other"}), keychainStatus::io);
        EXPECT_EQ(store.remove(service, "a"), keychainStatus::io);
    }
    EXPECT_EQ(store.write(service, "not UTF-8 \xff", SecretText{"other"}), keychainStatus::io);

    // Another process is writing and does not let go.
    const int held = ::open((folder / "secrets.json.lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    EXPECT_EQ(store.write(service, "a", SecretText{"other"}), keychainStatus::notAvailable);
    EXPECT_EQ(store.read(service, "a"), KeychainLookup{SecretText{"value"}}) << "reading needs no lock";
    ::close(held);
    EXPECT_EQ(contentOf(folder), before);
    EXPECT_EQ(store.write(service, "a", SecretText{"other"}), keychainStatus::success);

    writeBytes(folder / "blocker", "");
    EXPECT_EQ((FileKeychainItemStore{folder / "blocker/secrets.json"}.write(service, "a", SecretText{"x"})),
              keychainStatus::io);
}

TEST(FileKeychainItemStore, writersWaitForEachOther)
{
    const TemporaryFolder folder;
    const auto write = [&folder](int writer) {
        FileKeychainItemStore store{folder / "secrets.json"};
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(store.write(service, fmt::format("{}-{}", writer, i), SecretText{"x"}),
                      keychainStatus::success);
    };
    std::thread other{write, 1};
    write(2);
    other.join();
    FileKeychainItemStore store{folder / "secrets.json"};
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(store.read(service, fmt::format("{}-{}", 1 + i / 10, i % 10)),
                  KeychainLookup{SecretText{"x"}});
}

TEST(KeychainItemStoring, aWriteIsVerifiedByReadingItBack)
{
    FaultyKeychain store;
    EXPECT_EQ(verifyWritten(store, service, "a", SecretText{"x"}), keychainStatus::decode);
    ASSERT_EQ(store.write(service, "a", SecretText{"x"}), keychainStatus::success);
    EXPECT_EQ(verifyWritten(store, service, "a", SecretText{"x"}), keychainStatus::success);
    EXPECT_EQ(verifyWritten(store, service, "a", SecretText{"y"}), keychainStatus::decode);
    store.failAlways = true;
    EXPECT_EQ(verifyWritten(store, service, "a", SecretText{"x"}), keychainStatus::interactionNotAllowed);
}

}  // namespace
}  // namespace tidewell

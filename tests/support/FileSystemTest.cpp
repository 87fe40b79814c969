#include "support/FileSystem.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "testing/TemporaryFolder.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

class FileSystemTest : public testing::Test {
protected:
    void put(std::string_view name, std::string_view content)
    {
        const FileHandle file = files.createNew(temporary / name).value();
        EXPECT_EQ(files.write(file, content), content.size());
        EXPECT_FALSE(files.sync(file));
        EXPECT_FALSE(files.close(file));
    }

    TemporaryFolder temporary;
    SystemFileSystem files;
};

TEST_F(FileSystemTest, aNewFileIsPrivateAndReplacesNothing)
{
    put("a", "content");
    struct stat status{};
    ASSERT_EQ(::stat((temporary / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | S_IRUSR | S_IWUSR));
    fs::create_symlink("nowhere", temporary / "dangling");
    EXPECT_EQ(files.createNew(temporary / "a").error(), std::errc::file_exists);
    EXPECT_EQ(files.createNew(temporary / "dangling").error(), std::errc::file_exists);
    EXPECT_EQ(files.createNew(temporary / "missing" / "a").error(), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(fs::exists(temporary / "nowhere"));
    EXPECT_EQ(files.write(-1, "x").error(), std::errc::bad_file_descriptor);
    EXPECT_EQ(files.sync(-1), std::errc::bad_file_descriptor);
    EXPECT_EQ(files.close(-1), std::errc::bad_file_descriptor);
}

TEST_F(FileSystemTest, readsRegularFilesAndFollowsNoLink)
{
    put("a", "content");
    fs::create_symlink("a", temporary / "link");
    ASSERT_EQ(::mkfifo((temporary / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(files.read(temporary / "a", 7).value(), "content");
    EXPECT_EQ(files.read(temporary / "missing", 7).value(), std::nullopt);
    EXPECT_EQ(files.read(temporary / "a", 6).error(), std::errc::file_too_large);
    EXPECT_EQ(files.read(temporary / "link", 7).error(), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(files.read(temporary / "pipe", 7).error(), std::errc::invalid_argument);
    EXPECT_EQ(files.read(temporary.path(), 7).error(), std::errc::is_a_directory);
}

TEST_F(FileSystemTest, absentThingsAreAbsentAndOthersAreTold)
{
    put("a", "");
    fs::create_symlink("nowhere", temporary / "dangling");
    EXPECT_TRUE(files.exists(temporary / "a").value());
    EXPECT_TRUE(files.exists(temporary / "dangling").value());
    EXPECT_FALSE(files.exists(temporary / "missing").value());
    EXPECT_EQ(files.exists(temporary / "a" / "b").error(), std::errc::not_a_directory);

    EXPECT_FALSE(files.makeFolder(temporary / "folder"));
    EXPECT_EQ(fs::status(temporary / "folder").permissions(), fs::perms::owner_all);
    EXPECT_EQ(files.makeFolder(temporary / "folder"), std::errc::file_exists);
    EXPECT_EQ(files.makeFolder(temporary / "a"), std::errc::not_a_directory);
    EXPECT_EQ(files.makeFolder(temporary / "b" / "c"), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(files.syncFolder(temporary / "folder"));
    EXPECT_EQ(files.syncFolder(temporary / "a"), std::errc::not_a_directory);

    auto names = files.list(temporary.path()).value();
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"a", "dangling", "folder"}));
    EXPECT_EQ(files.list(temporary / "missing").value(), std::vector<std::string>{});
    EXPECT_EQ(files.list(temporary / "a").error(), std::errc::not_a_directory);

    EXPECT_EQ(files.removeFile(temporary / "folder"), std::errc::is_a_directory);
    EXPECT_EQ(files.removeFolder(temporary.path()), std::errc::directory_not_empty);
    for (int again = 0; again < 2; ++again) {
        EXPECT_FALSE(files.removeFile(temporary / "a"));
        EXPECT_FALSE(files.removeFile(temporary / "dangling"));
        EXPECT_FALSE(files.removeFolder(temporary / "folder"));
    }
    EXPECT_EQ(files.rename(temporary / "a", temporary / "b"), std::errc::no_such_file_or_directory);
}

TEST_F(FileSystemTest, aLockExcludesEveryOtherUntilItIsClosed)
{
    const FileHandle held = files.lock(temporary / ".lock").value();
    const int other = ::open((temporary / ".lock").c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), -1);
    EXPECT_FALSE(files.close(held));
    EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
    ::close(other);
    EXPECT_FALSE(files.close(files.lock(temporary / ".lock").value()));
    EXPECT_EQ(files.lock(temporary / "missing" / ".lock").error(), std::errc::no_such_file_or_directory);
}

TEST_F(FileSystemTest, backupsAreAskedToLeaveAFileOut)
{
    const fs::path file = temporary / "a";
    if (::setxattr(temporary.path().c_str(), "user.tidewell.test", "x", 1, 0) != 0)
        GTEST_SKIP() << "this file system has no extended attributes";
    EXPECT_FALSE(replaceFile(files, file, temporary / "b", "content", Backup::exclude));
    std::array<char, 8> value{};
    const ssize_t size = ::getxattr(file.c_str(), "user.xdg.robots.backup", value.data(), value.size());
    ASSERT_EQ(size, 5);
    EXPECT_EQ(std::string_view(value.data(), 5), "false");
    EXPECT_FALSE(replaceFile(files, file, temporary / "b", "content"));
    EXPECT_EQ(::getxattr(file.c_str(), "user.xdg.robots.backup", value.data(), value.size()), -1);

    // What is there already is nobody's temporary file.
    put("taken", "kept");
    EXPECT_EQ(replaceFile(files, file, temporary / "taken", "other"), std::errc::file_exists);
    EXPECT_EQ(files.read(temporary / "taken", 9).value(), "kept");
    EXPECT_EQ(files.read(file, 9).value(), "content");
}

}  // namespace
}  // namespace tidewell

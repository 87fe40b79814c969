#include "support/AtomicFile.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "support/Time.h"
#include "testing/TemporaryFolder.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

class AtomicFileTest : public testing::Test {
protected:
    [[nodiscard]] std::string content(const fs::path& file) const
    {
        return readFile(file).value().value_or("absent");
    }

    [[nodiscard]] std::size_t entries() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator{folder}, {}));
    }

    TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
};

TEST_F(AtomicFileTest, replacesTheWholeFileForItsOwnerAlone)
{
    const fs::path file = folder / "a";
    ASSERT_FALSE(writeFileAtomically(file, "first, and longer"));
    fs::permissions(file, fs::perms::all);
    ASSERT_FALSE(writeFileAtomically(file, std::string("second\0", 7)));
    EXPECT_EQ(content(file), std::string("second\0", 7));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(AtomicFileTest, aFailedWriteLeavesTheOldFileAndNothingElse)
{
    const fs::path file = folder / "a";
    ASSERT_FALSE(writeFileAtomically(file, "old"));

    // A full disk, as a limit on the size of files shows it.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 1000, .rlim_max = before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const std::error_code full = writeFileAtomically(file, std::string(5000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(full, std::errc::file_too_large);

    EXPECT_EQ(writeFileAtomically(folder / "missing" / "b", "x"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(writeFileAtomically(folder, "x"), std::errc::is_a_directory);
    EXPECT_EQ(writeFileAtomically(file / "b", "x"), std::errc::not_a_directory);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(writeFileAtomically(folder / "pipe", "x"), std::errc::operation_not_permitted);
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(entries(), 2U);
}

TEST_F(AtomicFileTest, aLinkStaysALinkAndItsTargetIsReplaced)
{
    fs::create_directory(folder / "dotfiles");
    const fs::path target = folder / "dotfiles" / "real";
    fs::create_symlink("dotfiles/real", folder / "relative");
    fs::create_symlink(folder / "relative", folder / "chain");
    ASSERT_FALSE(writeFileAtomically(folder / "chain", "through a link that dangled"));
    EXPECT_EQ(content(target), "through a link that dangled");
    ASSERT_FALSE(writeFileAtomically(folder / "chain", "again"));
    EXPECT_EQ(content(target), "again");
    EXPECT_TRUE(fs::is_symlink(folder / "chain"));
    EXPECT_TRUE(fs::is_symlink(folder / "relative"));
    fs::create_symlink("loop", folder / "loop");
    EXPECT_EQ(writeFileAtomically(folder / "loop", "x"), std::errc::too_many_symbolic_link_levels);
}

TEST_F(AtomicFileTest, readsRegularFilesUpToTheLimit)
{
    const fs::path file = folder / "a";
    EXPECT_EQ(readFile(file).value(), std::nullopt);
    ASSERT_FALSE(writeFileAtomically(file, ""));
    EXPECT_EQ(readFile(file).value(), "");
    ASSERT_FALSE(writeFileAtomically(file, std::string(200'000, 'x')));
    EXPECT_EQ(readFile(file, 200'000).value().value().size(), 200'000U);
    EXPECT_EQ(readFile(file, 199'999).error(), std::errc::file_too_large);
    EXPECT_EQ(readFile(folder).error(), std::errc::is_a_directory);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readFile(folder / "pipe").error(),
              std::errc::invalid_argument);  // And does not wait for a writer.
    EXPECT_EQ(readFile("/dev/zero").error(), std::errc::invalid_argument);
}

TEST_F(AtomicFileTest, makesPrivateFolders)
{
    const fs::path deep = folder / "a" / "b" / "c" / "";
    EXPECT_FALSE(makePrivateFolder(deep));
    EXPECT_FALSE(makePrivateFolder(deep));
    for (const fs::path& made : {folder / "a", folder / "a" / "b", folder / "a" / "b" / "c"})
        EXPECT_EQ(fs::status(made).permissions(), fs::perms::owner_all) << made;
    std::ofstream{folder / "file"} << "x";
    EXPECT_EQ(makePrivateFolder(folder / "file"), std::errc::not_a_directory);
    EXPECT_EQ(makePrivateFolder(folder / "file" / "x"), std::errc::not_a_directory);
    EXPECT_TRUE(makePrivateFolder(""));
}

TEST_F(AtomicFileTest, removesOnlyItsOwnOldTemporaries)
{
    const auto make = [this](const std::string& name, std::chrono::minutes age) {
        std::ofstream{folder / name} << "x";
        fs::last_write_time(folder / name, fs::file_time_type::clock::now() - age);
    };
    const std::string ours = ".tidewell-0123456789abcdef.tmp";
    make(ours, 61min);
    make(".tidewell-0123456789abcdee.tmp", 59min);
    make(".tidewell-0123456789abcdeg.tmp", 61min);
    make(".tidewell-0123456789abcdef0.tmp", 61min);
    make("tidewell-0123456789abcdef.tmp", 61min);
    make(".other-0123456789abcdef.tmp", 61min);
    removeStrayTemporaries(folder);
    removeStrayTemporaries(folder / "missing");
    EXPECT_FALSE(fs::exists(folder / ours));
    EXPECT_EQ(entries(), 5U);

    // The name that a write uses is the name that is cleaned up: stop one between its write and its rename.
    const fs::path file = folder / "made";
    const pid_t child = fork();
    if (child == 0) {
        const rlimit small{.rlim_cur = 1000, .rlim_max = 1000};
        setrlimit(RLIMIT_FSIZE, &small);  // The signal's default action ends the process in mid-write.
        const rlimit noCore{};
        setrlimit(RLIMIT_CORE, &noCore);
        (void)writeFileAtomically(file, std::string(5000, 'x'));
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_EQ(entries(), 6U);
    for (const auto& entry : fs::directory_iterator{folder})
        fs::last_write_time(entry, fs::file_time_type::clock::now() - 61min);
    removeStrayTemporaries(folder);
    EXPECT_EQ(entries(), 4U);  // The four names that were never ours.
}

}  // namespace
}  // namespace tidewell

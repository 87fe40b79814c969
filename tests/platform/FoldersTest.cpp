#include "platform/linux/Folders.h"

#include <sys/stat.h>
#include <unistd.h>
#include <set>

#include "TestBus.h"

namespace tidewell {
namespace {

struct Given {
    std::map<std::string, std::string> variables{};
    std::optional<std::string> accountHome = "/home/account";
    std::set<std::string> privateFolders{};
};

std::optional<Folders> foldersFor(const Given& given)
{
    return standardFolders({.variable = [&](const char* name) -> std::optional<std::string> {
                                const auto found = given.variables.find(name);
                                return found == given.variables.end() ? std::nullopt
                                                                      : std::optional{found->second};
                            },
                            .accountHome = [&] { return given.accountHome; },
                            .isPrivateFolder =
                                [&](const std::filesystem::path& folder) {
                                    return given.privateFolders.contains(folder.string());
                                },
                            .userID = 1000});
}

TEST(Folders, followTheBaseDirectoriesAndIgnoreRelativeOnes)
{
    const auto named = foldersFor({.variables = {{"HOME", "/home/anna"},
                                                 {"XDG_CONFIG_HOME", "/c/./x/../y"},
                                                 {"XDG_STATE_HOME", "relative/state"},
                                                 {"XDG_DATA_HOME", ""},
                                                 {"XDG_RUNTIME_DIR", "/run/anna"}},
                                   .privateFolders = {"/run/anna"}});
    ASSERT_TRUE(named);
    EXPECT_EQ(named->configuration, "/c/y/tidewell");
    EXPECT_EQ(named->state, "/home/anna/.local/state/tidewell");
    EXPECT_EQ(named->data, "/home/anna/.local/share/Tidewell");
    EXPECT_EQ(named->runtime, "/run/anna/tidewell");
}

TEST(Folders, homeComesFromTheAccountWhenTheVariableIsOfNoUse)
{
    for (const auto& home : {std::map<std::string, std::string>{}, {{"HOME", ""}}, {{"HOME", "here"}}}) {
        const auto folders = foldersFor({.variables = home});
        ASSERT_TRUE(folders);
        EXPECT_EQ(folders->configuration, "/home/account/.config/tidewell");
    }
    EXPECT_FALSE(foldersFor({.accountHome = std::nullopt}));
    EXPECT_FALSE(foldersFor({.accountHome = "nowhere"}));
    EXPECT_TRUE(foldersFor(
        {.variables = {{"XDG_CONFIG_HOME", "/c"}, {"XDG_STATE_HOME", "/s"}, {"XDG_DATA_HOME", "/d"}},
         .accountHome = std::nullopt}));
}

TEST(Folders, runtimeFolderIsOneThatNobodyElseMayEnter)
{
    const std::map<std::string, std::string> open{{"XDG_RUNTIME_DIR", "/open"}};
    EXPECT_EQ(foldersFor({.variables = open, .privateFolders = {"/run/user/1000"}})->runtime,
              "/run/user/1000/tidewell");
    EXPECT_EQ(foldersFor({.variables = open})->runtime, "/tmp/tidewell-1000");
    EXPECT_EQ(foldersFor({})->runtime, "/tmp/tidewell-1000");
}

TEST(Folders, preparingRefusesAFolderThatIsNotOursAlone)
{
    const TemporaryFolder root;
    const auto made = root.path() / "a" / "b";
    EXPECT_FALSE(prepareRuntimeFolder(made));
    EXPECT_FALSE(prepareRuntimeFolder(made)) << "a second start";
    struct stat info{};
    ASSERT_EQ(::stat(made.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);

    ::chmod(made.c_str(), 0750);
    EXPECT_EQ(prepareRuntimeFolder(made), std::errc::operation_not_permitted);
    ::chmod(made.c_str(), 0700);
    const auto link = root.path() / "link";
    std::filesystem::create_directory_symlink(made, link);
    EXPECT_TRUE(prepareRuntimeFolder(link)) << "somebody else may turn a link elsewhere";
    const auto file = root.path() / "file";
    EXPECT_EQ(::symlink("x", file.c_str()), 0);
    EXPECT_TRUE(prepareRuntimeFolder(file));
    if (::getuid() == 0 && ::chown(made.c_str(), 12345, 12345) == 0)
        EXPECT_EQ(prepareRuntimeFolder(made), std::errc::operation_not_permitted)
            << "it belongs to another user";
}

}  // namespace
}  // namespace tidewell

// Runs the program as a person would, against its own demonstration.

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tidewell {
namespace {

struct Ended {
    int code = -1;
    std::string output{};
};

class GraphCommand : public testing::Test {
protected:
    GraphCommand()
    {
        std::string name = testing::TempDir() + "tidewell-graph-XXXXXX";
        folder = ::mkdtemp(name.data());
    }
    ~GraphCommand() override { std::filesystem::remove_all(folder); }

    /// With standard error where the arguments send it.
    [[nodiscard]] Ended run(const std::string& arguments) const
    {
        return runLine(fmt::format("'{}' {}", TIDEWELL_PROGRAM, arguments));
    }

    [[nodiscard]] Ended runLine(const std::string& line) const
    {
        const std::string command = fmt::format(
            "cd '{0}' && env -i HOME='{0}' XDG_RUNTIME_DIR='{0}' TZ=UTC TIDEWELL_KEYCHAIN=file "
            "PATH=/usr/bin:/bin DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent {1}",
            folder.string(), line);
        FILE* const pipe = ::popen(command.c_str(), "r");
        Ended ended;
        char bytes[4096];
        for (std::size_t count = 0; (count = std::fread(bytes, 1, sizeof bytes, pipe)) > 0;)
            ended.output.append(bytes, count);
        const int status = ::pclose(pipe);
        ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return ended;
    }

    [[nodiscard]] std::string contents(const std::string& name) const
    {
        std::ifstream stream{folder / name};
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    std::filesystem::path folder;
};

TEST_F(GraphCommand, drawsTheDemonstrationsOnStandardOutput)
{
    for (const char* demo : {"--demo", "--demo=libre"}) {
        const auto ended = run(fmt::format("graph {} --hours 12 2>&1", demo));
        EXPECT_EQ(ended.code, 0) << ended.output;
        EXPECT_NE(ended.output.find("mg/dL"), std::string::npos);
        EXPECT_NE(ended.output.find(" 270 ┤"), std::string::npos) << ended.output;
        EXPECT_NE(ended.output.find("Last reading: "), std::string::npos);
        EXPECT_EQ(ended.output.find('\x1b'), std::string::npos);
    }
    EXPECT_EQ(run("--demo graph 2>&1").code, 0);
}

TEST_F(GraphCommand, writesPicturesForTheirOwnerAlone)
{
    EXPECT_EQ(run("graph --demo --output a.png 2>&1").output, "");
    EXPECT_EQ(contents("a.png").substr(0, 8), "\x89PNG\r\n\x1a\n");
    // Width and height, big-endian, in the first chunk: 480 by 270 points at two pixels each.
    EXPECT_EQ(contents("a.png").substr(16, 8), std::string("\0\0\x03\xc0\0\0\x02\x1c", 8));
    struct stat status{};
    ASSERT_EQ(::stat((folder / "a.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(run("graph --demo=libre --hours 24 --theme dark --text-scale 1.5 --output B.SVG 2>&1").code, 0);
    EXPECT_NE(contents("B.SVG").find("<desc>Glucose graph, last 24 hours. "), std::string::npos);
}

TEST_F(GraphCommand, mistakesAndMissingReadingsChangeNoFile)
{
    std::ofstream{folder / "old.png"} << "old";
    struct Case {
        std::string arguments;
        int code;
        std::string said;
    };
    const Case cases[]{
        {"graph --output old.png", 5, "Sign in required"},
        {"graph", 5, "Sign in required"},
        {"graph --demo=nonsense --output old.png", 1, "nonsense"},
        {"graph --demo --output x.gif", 2, ".png or .svg"},
        {"graph --demo --output ''", 2, ".png or .svg"},
        {"graph --demo --output nowhere/x.png", 1, "nowhere/x.png"},
        {"graph --demo --hours 5", 2, "--hours"},
        {"graph --demo --output old.png --scale 9", 2, "--scale"},
        {"graph --demo --output old.png --theme pink", 2, "--theme"},
    };
    for (const Case& one : cases) {
        const auto ended = run(one.arguments + " 2>&1 >/dev/null");
        EXPECT_EQ(ended.code, one.code) << one.arguments;
        EXPECT_NE(ended.output.find(one.said), std::string::npos) << one.arguments << ": " << ended.output;
        EXPECT_EQ(contents("old.png"), "old");
    }
}

TEST_F(GraphCommand, colorsATerminalUnlessToldNotTo)
{
    const auto output = [&](const std::string& variables) {
        return runLine(
                   fmt::format("{} script -qec \"'{}' graph --demo\" /dev/null", variables, TIDEWELL_PROGRAM))
            .output;
    };
    EXPECT_NE(output("TERM=xterm").find("\x1b["), std::string::npos);
    EXPECT_EQ(output("TERM=xterm NO_COLOR=1").find("\x1b["), std::string::npos);
    EXPECT_NE(output("TERM=xterm NO_COLOR=").find("\x1b["), std::string::npos);
    EXPECT_EQ(output("TERM=dumb").find("\x1b["), std::string::npos);
    EXPECT_NE(output("TERM=linux").find('*'), std::string::npos);
}

}  // namespace
}  // namespace tidewell

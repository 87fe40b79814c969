// Runs the real program as a person or a script would, against a simulated service on loopback.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QDBusConnectionInterface>

#include <algorithm>
#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "config/UserDefaults.h"
#include "platform/FakeNotificationServer.h"
#include "simulator/DemoService.h"
#include "simulator/TraceReplay.h"
#include "support/Json.h"
#include "support/SystemClock.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

struct Ended {
    int code = -1;
    std::string output;
    std::string errors;
};

std::string contents(const std::filesystem::path& file)
{
    std::ifstream stream{file};
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

/// A private home, and the program run in it: no bus, no display, secrets in a file.
class CommandLineTest : public testing::Test {
protected:
    CommandLineTest()
    {
        std::string pattern = testing::TempDir() + "tidewell-cli-XXXXXX";
        home = ::mkdtemp(pattern.data());
        environment = {{"HOME", home.string()},
                       {"PATH", "/usr/bin:/bin"},
                       {"TZ", "UTC"},
                       {"XDG_RUNTIME_DIR", (home / "run").string()},
                       {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session"},
                       {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system"},
                       {"TIDEWELL_KEYCHAIN", "file"}};
        std::filesystem::create_directory(home / "run");
        ::chmod((home / "run").c_str(), 0700);
        for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"})
            if (const char* value = std::getenv(name))
                environment[name] = value;
    }
    ~CommandLineTest() override { std::filesystem::remove_all(home); }

    /// In the place of the one that runs, if there is one.
    void startService(std::string scenario = "steady")
    {
        std::uint16_t port = 0;
        if (service) {
            const auto base = parseJson(service->endpointsDocument()).value().at("libreLinkUp").at("de");
            const std::string address{base.as_string()};
            port = static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
            service.reset();
        }
        auto started = DemoService::start(clock, {.port = port, .scenario = std::move(scenario)});
        ASSERT_TRUE(started) << started.error();
        service = std::move(*started);
        std::ofstream{home / "endpoints.json"} << service->endpointsDocument();
        environment["TIDEWELL_ENDPOINTS"] = (home / "endpoints.json").string();
    }

    /// Starts the program with its input from a string and its output into files.
    pid_t start(const std::vector<std::string>& arguments, const std::string& input = {},
                std::optional<int> output = {})
    {
        std::ofstream{home / "input"} << input;
        std::vector<std::string> texts{TIDEWELL_PROGRAM};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        std::vector<char*> values;
        for (auto& text : texts)
            values.push_back(text.data());
        values.push_back(nullptr);
        std::vector<std::string> variables;
        for (const auto& [name, value] : environment)
            variables.push_back(name + "=" + value);
        std::vector<char*> variableValues;
        for (auto& text : variables)
            variableValues.push_back(text.data());
        variableValues.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, (home / "input").c_str(), O_RDONLY, 0);
        if (output)
            posix_spawn_file_actions_adddup2(&actions, *output, 1);
        else
            posix_spawn_file_actions_addopen(&actions, 1, (home / "output").c_str(),
                                             O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, (home / "errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        pid_t child = -1;
        const int error =
            ::posix_spawn(&child, TIDEWELL_PROGRAM, &actions, nullptr, values.data(), variableValues.data());
        posix_spawn_file_actions_destroy(&actions);
        EXPECT_EQ(error, 0);
        return child;
    }

    Ended finish(pid_t child)
    {
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return {.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                .output = contents(home / "output"),
                .errors = contents(home / "errors")};
    }

    Ended run(const std::vector<std::string>& arguments, const std::string& input = {})
    {
        return finish(start(arguments, input));
    }

    Ended signIn(const std::string& password)
    {
        return run({"account", "set", "--provider", "dexcom", "--username", service->account().username,
                    "--region", service->account().region, "--password-stdin"},
                   password + "\n");
    }

    /// `account set` for LibreLinkUp, from a region that is not the account's own.
    Ended setLibreLinkUp(std::vector<std::string> more = {}, std::string region = "DE")
    {
        std::vector<std::string> arguments{"account",         "set",
                                           "--provider",      "libreLinkUp",
                                           "--username",      service->account().username,
                                           "--region",        std::move(region),
                                           "--password-stdin"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments, service->account().password + "\n");
    }

    asio::io_context io{1};
    SystemClock clock{io};
    std::filesystem::path home;
    std::map<std::string, std::string> environment;
    std::unique_ptr<DemoService> service;
};

/// A service that takes connections and never answers.
class SilentServer {
public:
    [[nodiscard]] std::string endpointsDocument(const std::string& region) const
    {
        const auto port = acceptor_.local_endpoint().port();
        return R"({"dexcom": {")" + region + R"(": {"base": "http://127.0.0.1:)" + std::to_string(port) +
               R"(/ShareWebServices/Services"}}})";
    }

private:
    asio::io_context io_{1};
    asio::ip::tcp::acceptor acceptor_{io_, {asio::ip::address_v4::loopback(), 0}};
};

TEST_F(CommandLineTest, helpAndVersionNeedNothingAndMistakesGetOneLineAndCodeTwo)
{
    EXPECT_EQ(run({"--version"}).code, 0);
    const auto help = run({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.output.find("no medical device"), std::string::npos);
    const std::vector<std::vector<std::string>> mistakes{
        {"--frobnicate"},
        {"dance"},
        {"watch", "--format", "xml"},
        {"account"},
        {"account", "set", "--provider", "dexcom", "--username", "ada", "--region", "us"},
        {"account", "set", "--provider", "contour", "--username", "ada", "--region", "us",
         "--password-stdin"},
        {"account", "set", "--provider", "dexcom", "--username", "ada", "--region", "mars",
         "--password-stdin"},
        {"account", "set", "--provider", "dexcom", "--username", "ada", "--region", "us", "--password-stdin"},
        {"account", "set", "--provider", "libreLinkUp", "--username", "ada", "--region", "mars",
         "--password-stdin"},
        {"account", "set", "--provider", "dexcom", "--username", "ada", "--region", "us", "--patient", "x",
         "--password-stdin"},
        {"account", "set", "--patient", "x", "--region", "us"},
        {"account", "set", "--patient", ""},
        {"account", "set"},
        {"settings", "get", "colour"},
        {"settings", "set", "lowGlucoseThreshold", "12"},
        {"settings", "set", "measurementUnit", "stone"},
        {"snooze"},
        {"snooze", "30s"},
        {"snooze", "25h"},
        {"resume", "now"},
        {"doctor", "--json=false"},
        {"--icon", "round"},
        {"--panel", "light", "watch", "--once"},
    };
    for (const auto& arguments : mistakes) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, 2);
        EXPECT_EQ(ended.output, "");
        // The last line is the error; above it, the owner-only password file may have been announced.
        const auto line = ended.errors.substr(ended.errors.rfind("tidewell: ") == std::string::npos
                                                  ? ended.errors.size()
                                                  : ended.errors.rfind("tidewell: "));
        EXPECT_EQ(std::ranges::count(line, '\n'), 1) << ended.errors;
    }
}

TEST_F(CommandLineTest, signsInShowsTheValueAndSignsOutAgain)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_EQ(run({"watch", "--once"}).code, 5);

    const auto refused = signIn("not the password");
    EXPECT_EQ(refused.code, 5) << refused.errors;
    EXPECT_EQ(run({"account", "show"}).code, 5);

    const auto password = service->account().password;
    const auto signedIn = signIn(password);
    EXPECT_EQ(signedIn.code, 0) << signedIn.errors;
    const auto shown = run({"account", "show"});
    EXPECT_EQ(shown.code, 0) << shown.errors;
    EXPECT_NE(shown.output.find(service->account().username), std::string::npos);
    EXPECT_EQ((shown.output + shown.errors).find(password), std::string::npos);
    EXPECT_EQ(contents(home / ".config/tidewell/configuration.json").find(password), std::string::npos);

    const auto once = run({"watch", "--format", "json", "--once"});
    EXPECT_EQ(once.code, 0) << once.output << once.errors;
    std::istringstream lines{once.output};
    std::string line;
    std::string last;
    while (std::getline(lines, line)) {
        ASSERT_TRUE(parseJson(line)) << line;
        last = line;
    }
    const auto document = parseJson(last).value();
    EXPECT_EQ(document.at("freshness"), "current");
    EXPECT_TRUE(document.at("reading").is_object());
    EXPECT_GT(document.at("readingCount").to_number<int>(), 100);
    EXPECT_TRUE(document.at("currentError").is_null());

    // Without its bookkeeping it still knows whom it follows, and keeps what it could not read.
    const auto bookkeeping = home / ".local/state/tidewell/defaults.json";
    std::ofstream{bookkeeping} << "[";
    EXPECT_EQ(run({"account", "show"}).code, 0);
    EXPECT_EQ(run({"watch", "--once"}).code, 0);
    EXPECT_NE(contents(bookkeeping), "[");
    EXPECT_EQ(contents(bookkeeping.string() + ".unreadable"), "[");

    EXPECT_EQ(run({"account", "clear"}).code, 0);
    EXPECT_EQ(run({"watch", "--once"}).code, 5);
}

TEST_F(CommandLineTest, aLibreLinkUpAccountFollowsWhoWasSelectedAndNobodyElse)
{
    ASSERT_NO_FATAL_FAILURE(startService("libre-several"));
    const auto document = home / ".config/tidewell/configuration.json";
    EXPECT_EQ(setLibreLinkUp({"--patient", "nobody"}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(document));

    const auto set = setLibreLinkUp();
    EXPECT_EQ(set.code, 0) << set.errors;
    EXPECT_NE(set.errors.find("lives in the region \"eu2\", not in \"de\""), std::string::npos) << set.errors;
    const auto listed = run({"account", "connections"});
    EXPECT_EQ(listed.code, 0);
    EXPECT_EQ(std::ranges::count(listed.output, '\n'), 3) << listed.output;
    EXPECT_NE(set.output.find(listed.output), std::string::npos) << set.output;
    const std::string id = listed.output.substr(0, listed.output.find("  "));
    const std::string name = listed.output.substr(id.size() + 2, listed.output.find('\n') - id.size() - 2);
    const std::string select = "\ntidewell account set --patient " + id + "\n";
    EXPECT_NE(set.output.find(select), std::string::npos);
    EXPECT_NE(listed.errors.find(select), std::string::npos);
    EXPECT_NE(run({"account", "show"}).output.find("patient   not selected\n"), std::string::npos);
    EXPECT_EQ(run({"account", "reconnect"}).code, 5);
    EXPECT_EQ(run({"watch", "--once"}).code, 5);

    const auto before = contents(document);
    const auto wrong = run({"account", "set", "--patient", "nobody"});
    EXPECT_EQ(wrong.code, 2);
    EXPECT_NE(wrong.errors.find(listed.output), std::string::npos) << wrong.errors;
    EXPECT_EQ(contents(document), before);

    EXPECT_EQ(run({"account", "set", "--patient", id}).code, 0);
    const auto shown = run({"account", "show"});
    EXPECT_NE(shown.output.find("region    eu2\npatient   " + id + "\nname      " + name + "\n"),
              std::string::npos)
        << shown.output;
    const auto marked = run({"account", "connections"});
    EXPECT_NE(marked.output.find(id + "  " + name + "  (selected)\n"), std::string::npos);
    EXPECT_EQ(marked.output.find("(selected)"), marked.output.rfind("(selected)"));
    EXPECT_EQ(run({"account", "reconnect"}).code, 0);
    EXPECT_EQ(run({"watch", "--once"}).code, 0);

    const auto again = setLibreLinkUp({}, "eu2");
    EXPECT_NE(again.output.find("follows " + name), std::string::npos) << "who signs in again means the same";
    for (const auto& text :
         {set.output + set.errors, listed.errors, shown.output, again.errors, contents(document)})
        EXPECT_EQ(text.find(service->account().password), std::string::npos);
}

TEST_F(CommandLineTest, oneOrNobodyWhoSharesIsSaidWithWhatToDo)
{
    ASSERT_NO_FATAL_FAILURE(startService("libre"));
    const auto [provider, username, password, region, id, name] = service->account();
    EXPECT_EQ(setLibreLinkUp().code, 0);
    const auto one = run({"account", "connections"});
    EXPECT_EQ(one.output, id + "  " + name + "\n");
    EXPECT_NE(one.errors.find("shares with this account: " + name), std::string::npos) << one.errors;
    EXPECT_NE(one.errors.find("tidewell account set --patient " + id + "\n"), std::string::npos);
    EXPECT_NE(run({"account", "show"}).output.find("not selected"), std::string::npos);
    EXPECT_EQ(setLibreLinkUp({"--patient", id}).code, 0);

    ASSERT_NO_FATAL_FAILURE(startService("libre-none"));
    const std::string text =
        "No LibreLinkUp connections were found. Accept a sharing invitation in the "
        "LibreLinkUp app first.";
    const auto none = run({"account", "connections"});
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(none.output, "");
    EXPECT_NE(none.errors.find("\n" + text), std::string::npos) << none.errors;
    const auto stored = setLibreLinkUp();
    EXPECT_EQ(stored.code, 0);
    EXPECT_NE(stored.output.find(text), std::string::npos) << stored.output;
    EXPECT_NE(run({"account", "show"}).output.find("not selected"), std::string::npos);

    EXPECT_EQ(run({"account", "clear"}).code, 0);
    ASSERT_NO_FATAL_FAILURE(startService("libre-action"));
    const auto pending = setLibreLinkUp();
    EXPECT_EQ(pending.code, 5);
    EXPECT_NE(pending.errors.find("complete the account setup"), std::string::npos) << pending.errors;
    EXPECT_EQ(run({"account", "show"}).code, 5) << "nothing was stored";
}

TEST_F(CommandLineTest, reconnectingTellsThoseWhoFollowTheAccountUnlessItIsRefused)
{
    ASSERT_NO_FATAL_FAILURE(startService("libre"));
    ASSERT_EQ(setLibreLinkUp({"--patient", service->account().patientID}).code, 0);
    // A program that runs notices a new document, and then looks up when the account was confirmed.
    const auto document = home / ".config/tidewell/configuration.json";
    const auto trace = [&] {
        struct stat file{};
        EXPECT_EQ(::stat(document.c_str(), &file), 0);
        return std::pair{file.st_ino, contents(home / ".local/state/tidewell/defaults.json")};
    };
    const auto content = contents(document);
    const auto before = trace();
    ASSERT_NO_FATAL_FAILURE(startService("libre-action"));
    EXPECT_EQ(run({"account", "reconnect"}).code, 5);
    EXPECT_EQ(trace(), before);
    ASSERT_NO_FATAL_FAILURE(startService("libre"));
    EXPECT_EQ(run({"account", "reconnect"}).code, 0);
    EXPECT_NE(trace().first, before.first);
    EXPECT_NE(trace().second, before.second);
    EXPECT_EQ(contents(document), content);
}

TEST_F(CommandLineTest, settingsAreKeptAndShown)
{
    EXPECT_EQ(run({"settings", "set", "measurementUnit", "mmol/L"}).code, 0);
    EXPECT_EQ(run({"settings", "set", "lowGlucoseThreshold", "4.0 mmol/L"}).code, 0);
    EXPECT_NE(run({"settings"}).output.find("measurementUnit = mmol/L"), std::string::npos);
    EXPECT_EQ(run({"settings", "get", "measurementUnit"}).output, "mmol/L\n");
    struct stat file{};
    ASSERT_EQ(::stat((home / ".config/tidewell/configuration.json").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600U);

    std::ofstream{home / ".config/tidewell/configuration.json"} << "[]";
    const auto damaged = run({"settings"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_NE(damaged.errors.find("configuration.json"), std::string::npos);
    EXPECT_EQ(contents(home / ".config/tidewell/configuration.json"), "[]");
}

TEST_F(CommandLineTest, startAtLoginIsWhatTheDesktopDoes)
{
    environment["XDG_CONFIG_DIRS"] = (home / "xdg").string();
    const auto entry = home / ".config/autostart/org.tidewell.Tidewell.desktop";
    const auto value = [this] { return run({"settings", "get", "startAtLogin"}).output; };
    EXPECT_EQ(value(), "false\n");
    EXPECT_EQ(run({"settings", "set", "startAtLogin", "on"}).output, "startAtLogin = true\n");
    EXPECT_NE(contents(entry).find("Exec=" TIDEWELL_PROGRAM "\n"), std::string::npos) << contents(entry);
    EXPECT_EQ(value(), "true\n");

    // Somebody else switched it off.
    std::ofstream{entry, std::ios::app} << "Hidden=true\n";
    EXPECT_EQ(value(), "false\n");
    EXPECT_NE(run({"settings"}).output.find("startAtLogin = false\n"), std::string::npos);

    EXPECT_EQ(run({"settings", "set", "startAtLogin", "off"}).output, "startAtLogin = false\n");
    EXPECT_FALSE(std::filesystem::exists(entry));
    std::ofstream{entry} << "Dear diary\n";
    const auto refused = run({"settings", "set", "startAtLogin", "on"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.errors.ends_with(" is not a desktop entry.\n")) << refused.errors;
    const auto doctor = run({"doctor"}).output;
    EXPECT_NE(doctor.find("note     " + entry.string() + " is not a desktop entry. — "), std::string::npos)
        << doctor;
    EXPECT_EQ(contents(entry), "Dear diary\n");
}

TEST_F(CommandLineTest, aSnoozeIsKeptSaidAndEnded)
{
    const auto bookkeeping = home / ".local/state/tidewell/defaults.json";
    const auto stored = [&] { return parseJson(contents(bookkeeping)).value().as_object(); };
    const double before = clock.now().time_since_epoch().count();
    const auto snoozed = run({"snooze", "1h30m"});
    EXPECT_EQ(snoozed.code, 0) << snoozed.errors;
    EXPECT_TRUE(snoozed.output.starts_with("Low, high and rapid-change alerts snoozed until "));
    EXPECT_NE(snoozed.output.find("not running"), std::string::npos) << snoozed.output;
    const double until = stored().at(alertsSnoozedUntilKey).to_number<double>();
    EXPECT_GE(until, before + 5400);
    EXPECT_LE(until, clock.now().time_since_epoch().count() + 5400);

    EXPECT_EQ(run({"settings", "set", "snoozeLowAlerts", "off"}).code, 0);
    EXPECT_EQ(run({"settings", "set", "alertsEnabled", "off"}).code, 0);
    const auto shorter = run({"snooze", "1"});
    EXPECT_TRUE(shorter.output.starts_with("High and rapid-change alerts snoozed until ")) << shorter.output;
    EXPECT_NE(shorter.output.find("switched off altogether"), std::string::npos);
    EXPECT_LT(stored().at(alertsSnoozedUntilKey).to_number<double>(), until) << "a later command wins";

    EXPECT_TRUE(run({"resume"}).output.starts_with("Alerts are no longer snoozed.\n"));
    EXPECT_FALSE(stored().contains(alertsSnoozedUntilKey));
    EXPECT_TRUE(run({"resume"}).output.starts_with("Alerts were not snoozed.\n"));

    std::filesystem::remove_all(bookkeeping.parent_path());
    std::ofstream{bookkeeping.parent_path()} << "in the way";
    const auto failed = run({"snooze", "30m"});
    EXPECT_EQ(failed.code, 1);
    EXPECT_NE(failed.errors.find("Nothing was changed"), std::string::npos) << failed.errors;
    EXPECT_EQ(failed.output, "");
}

TEST_F(CommandLineTest, aRunningProgramNoticesASnooze)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const pid_t child = start({"watch", "--format", "json"}, {}, pipe[1]);
    ::close(pipe[1]);
    std::string printed;
    const auto readUntil = [&](std::string_view text) {
        char byte = 0;
        while (!printed.contains(text) && ::read(pipe[0], &byte, 1) == 1)
            printed += byte;
        return printed.contains(text);
    };
    EXPECT_TRUE(readUntil("Sign in required"));
    EXPECT_EQ(run({"snooze", "2h"}).code, 0);
    EXPECT_TRUE(readUntil("\"alertsSnoozedUntil\":\"")) << printed;
    printed.clear();
    EXPECT_EQ(run({"resume"}).code, 0);
    EXPECT_TRUE(readUntil("\"alertsSnoozedUntil\":null"));
    ::kill(child, SIGTERM);
    EXPECT_EQ(finish(child).code, 0);
    ::close(pipe[0]);
}

TEST_F(CommandLineTest, theDoctorSaysWhatIsWrongWhereverItRuns)
{
    /// "severity subject" of each finding.
    const auto findings = [this] {
        std::vector<std::string> all;
        const auto ended = run({"doctor", "--json"});
        EXPECT_EQ(ended.code, 1) << ended.errors;
        const auto document = parseJson(ended.output);
        if (!document) {
            ADD_FAILURE() << ended.output << ended.errors;
            return all;
        }
        for (const auto& finding : document->as_array()) {
            all.push_back(std::string{finding.at("severity").as_string()} + " " +
                          std::string{finding.at("subject").as_string()});
            EXPECT_EQ(finding.at("severity") == "good", finding.at("remedy").as_string().empty());
            EXPECT_EQ(finding.at("subject") == "tidewell", finding.at("command") == "tidewell");
        }
        return all;
    };
    const auto has = [](const std::vector<std::string>& all, std::string_view one) {
        return std::ranges::count(all, one) == 1;
    };
    const auto bare = findings();
    for (const auto* one : {"problem tidewell", "problem notifications", "problem account", "good alerts"})
        EXPECT_TRUE(has(bare, one)) << one << testing::PrintToString(bare);
    EXPECT_TRUE(std::ranges::is_sorted(bare, {}, [](const std::string& one) {
        return std::string_view{"pcg"}.find(one.front());
    })) << testing::PrintToString(bare);
    const std::string printed = run({"doctor"}).output;
    EXPECT_TRUE(printed.contains("nobody watches for alerts. — Start Tidewell: tidewell\n")) << printed;

    ASSERT_NO_FATAL_FAILURE(startService());
    ASSERT_EQ(signIn(service->account().password).code, 0);
    EXPECT_EQ(run({"settings", "set", "alertOnMissingData", "off"}).code, 0);
    EXPECT_EQ(run({"settings", "get", "alertOnMissingData"}).output, "false\n");
    EXPECT_EQ(run({"snooze", "5m"}).code, 0);
    const auto signedIn = findings();
    for (const auto* one : {"good account", "good data", "caution missingData", "caution snooze"})
        EXPECT_TRUE(has(signedIn, one)) << one << testing::PrintToString(signedIn);

    const auto bookkeeping = home / ".local/state/tidewell/defaults.json";
    EXPECT_FALSE(has(signedIn, "problem setup") || has(signedIn, "problem terms"))
        << "no window has asked for anything";
    EXPECT_FALSE(has(signedIn, "caution bookkeeping")) << testing::PrintToString(signedIn);
    std::filesystem::remove(bookkeeping);
    const auto unfinished = findings();
    EXPECT_EQ(unfinished.front(), "problem setup");
    EXPECT_TRUE(has(unfinished, "good account"));
    for (const auto* one : {"good data", "good low", "good high", "good rapidFall"})
        EXPECT_FALSE(has(unfinished, one)) << one;
    std::filesystem::create_directory(bookkeeping);  // Nothing can be written in its place.
    const auto unknown = findings();
    EXPECT_TRUE(has(unknown, "caution bookkeeping")) << testing::PrintToString(unknown);
    EXPECT_FALSE(has(unknown, "problem setup")) << "nobody knows that";
    std::filesystem::remove(bookkeeping);

    std::ofstream{bookkeeping} << R"({"TidewellAlertsSnoozedUntil":9e12})";
    ASSERT_NO_FATAL_FAILURE(startService("no-readings"));
    const auto noReadings = findings();
    EXPECT_TRUE(has(noReadings, "problem account")) << testing::PrintToString(noReadings);
    EXPECT_TRUE(has(noReadings, "good snooze")) << "one that ends too late is none";

    environment["TIDEWELL_KEYCHAIN"] = "secret-service";
    const auto keyring = run({"doctor"});
    EXPECT_EQ(keyring.code, 1);
    EXPECT_TRUE(keyring.output.contains("Unlock the keyring")) << keyring.output;
    std::ofstream{home / ".config/tidewell/configuration.json"} << "[]";
    const auto damaged = run({"doctor"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_TRUE(damaged.output.contains("configuration.json")) << damaged.output;
    EXPECT_EQ(contents(home / ".config/tidewell/configuration.json"), "[]");
}

TEST_F(CommandLineTest, aTestAlertThatNobodyWouldSeeFails)
{
    const auto ended = run({"test-alert"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_TRUE(ended.errors.contains("tidewell: Notifications are disabled.")) << ended.errors;
}

TEST_F(CommandLineTest, aTestAlertReachesTheDesktop)
{
    int count = 1;
    std::string name{"test"};
    char* values[] = {name.data(), nullptr};
    const QCoreApplication application{count, values};
    TestBus bus;
    FakeNotificationServer server{bus, {"body", "actions", "sound"}};
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
    const auto runServed = [this](const std::vector<std::string>& arguments) {
        const pid_t child = start(arguments);
        siginfo_t ended{};
        EXPECT_TRUE(runUntil([&] {
            return ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
                   ended.si_pid == child;
        }));
        return finish(child);
    };
    const auto sent = runServed({"test-alert"});
    EXPECT_EQ(sent.code, 0) << sent.errors;
    EXPECT_EQ(sent.output, "Test alert sent.\n");
    ASSERT_EQ(server.posted.size(), 1U);
    EXPECT_EQ(server.posted[0].summary, "Tidewell test alert");
    EXPECT_EQ(server.posted[0].body, "Notifications are configured correctly.");
    EXPECT_TRUE(runServed({"doctor", "--json"}).output.contains(R"("good","subject":"notifications")"));

    server.moodForNotify = FakeNotificationServer::Mood::refuses;
    const auto failed = runServed({"test-alert"});
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_TRUE(failed.errors.contains("tidewell: Test alert could not be sent.")) << failed.errors;
}

TEST_F(CommandLineTest, watchersAndShortCommandsShareOnePollerAndTheNextOneTakesOver)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    ASSERT_EQ(signIn(service->account().password).code, 0);
    int count = 1;
    std::string name{"test"};
    char* values[] = {name.data(), nullptr};
    const QCoreApplication application{count, values};
    TestBus bus;
    QDBusConnection client = bus.connect();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
    const QString tidewell = QStringLiteral("org.tidewell.Tidewell");
    const auto owner = [&] {
        QDBusMessage call =
            QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "GetConnectionUnixProcessID");
        call << tidewell;
        return callAndWait(client, call).arguments().value(0).toInt();
    };
    const auto watch = [&](const std::string& file) {
        const int output = ::open((home / file).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const pid_t child = start({"watch", "--format", "json"}, {}, output);
        ::close(output);
        return child;
    };
    /// What it shows, apart from when it was printed; empty without a reading.
    const auto shown = [&](const std::string& file) -> std::string {
        const std::string all = contents(home / file);
        const auto line = all.rfind("\"statusTitle\"");
        return all.ends_with('\n') && all.find("\"mgdL\"", line) != std::string::npos ? all.substr(line) : "";
    };

    const pid_t first = watch("first");
    ASSERT_TRUE(runUntil([&] { return owner() == first; }));
    // Instead of its own first request, some seconds later.
    (void)callAndWait(
        client, QDBusMessage::createMethodCall(tidewell, "/org/tidewell/Tidewell", tidewell, "Refresh"));
    ASSERT_TRUE(runUntil([&] { return !shown("first").empty(); }));

    // From here on nobody could answer a request.
    service.reset();
    const pid_t second = watch("second");
    ASSERT_TRUE(runUntil([&] { return !shown("second").empty() && shown("second") == shown("first"); }));
    const auto once = run({"watch", "--once", "--format", "json"});
    EXPECT_EQ(once.code, 0) << once.errors;
    EXPECT_TRUE(once.output.ends_with(shown("first"))) << once.output;
    EXPECT_EQ(run({"graph"}).code, 0);

    ::kill(first, SIGKILL);
    EXPECT_TRUE(runUntil([&] { return owner() == second; }));
    (void)finish(first);
    ::kill(second, SIGTERM);
    EXPECT_EQ(finish(second).code, 0);
    EXPECT_EQ(contents(home / "second").find("currentError\":{"), std::string::npos);

    // Whoever comes after an owner that waits for the person says so too, and asks nothing.
    ASSERT_NO_FATAL_FAILURE(startService("wrong-password"));
    const auto tells = [&](const std::string& file) {
        const std::string all = contents(home / file);
        const auto last = all.rfind("\n{", all.size() - 2);
        return all.ends_with('\n') && all.find("\"activity\":null", last) != std::string::npos &&
               all.find("\"currentError\":{", last) != std::string::npos;
    };
    std::vector<pid_t> watchers{watch("0")};
    ASSERT_TRUE(runUntil([&] { return owner() == watchers[0]; }));
    (void)callAndWait(
        client, QDBusMessage::createMethodCall(tidewell, "/org/tidewell/Tidewell", tidewell, "Refresh"));
    ASSERT_TRUE(runUntil([&] { return tells("0"); }));
    for (const char* file : {"1", "2"}) {
        watchers.push_back(watch(file));
        ASSERT_TRUE(runUntil([&] { return tells(file); }));
    }
    for (const std::size_t next : {1U, 2U}) {
        ::kill(watchers[next - 1], SIGKILL);
        (void)finish(watchers[next - 1]);
        ASSERT_TRUE(runUntil([&] { return owner() == watchers[next]; }));
        EXPECT_EQ(run({"watch", "--once"}).code, 5);
        EXPECT_TRUE(tells(std::to_string(next))) << contents(home / std::to_string(next));
    }
    ::kill(watchers[2], SIGTERM);
    EXPECT_EQ(finish(watchers[2]).code, 0);
}

TEST_F(CommandLineTest, badSurroundingsGetOneClearLine)
{
    environment["TIDEWELL_ENDPOINTS"] = (home / "absent.json").string();
    auto ended = run({"watch", "--once"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_NE(ended.errors.find("absent.json"), std::string::npos) << ended.errors;
    environment.erase("TIDEWELL_ENDPOINTS");

    environment["TIDEWELL_KEYCHAIN"] = "cupboard";
    EXPECT_EQ(run({"watch", "--once"}).code, 2);
    environment["TIDEWELL_KEYCHAIN"] = "file";

    ended = run({});
    EXPECT_EQ(ended.code, 1);
    EXPECT_NE(ended.errors.find("tidewell watch"), std::string::npos) << ended.errors;
}

TEST_F(CommandLineTest, whatNobodyTypesIsNoAccount)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    const auto account = service->account();
    const auto& [provider, username, password, region, patientID, patientName] = account;
    const std::string longText(4097, 'x');
    const std::vector<std::pair<std::string, std::string>> mistakes{
        {username, ""},
        {username, "\n"},
        {username, longText},
        {username, std::string(1'000'000, 'x')},
        {username, std::string{"hun\0ter\n", 8}},
        {username, "\xFF\xFE\n"},
        {username, "\x1B[31m\n"},
        {" ", password},
        {longText, password},
        {"ada\nbyron", password},
        {"ada\x1B[31m", password},
        {"\xFF\xFE", password},
    };
    for (const auto& [name, secret] : mistakes) {
        SCOPED_TRACE(testing::PrintToString(name.substr(0, 20)) +
                     testing::PrintToString(secret.substr(0, 20)));
        const auto ended = run({"account", "set", "--provider", "dexcom", "--username", name, "--region",
                                region, "--password-stdin"},
                               secret);
        EXPECT_EQ(ended.code, 2) << ended.errors;
        EXPECT_FALSE(std::filesystem::exists(home / ".config/tidewell/configuration.json"));
    }
    EXPECT_EQ(signIn(password + "\r").code, 0);
}

TEST_F(CommandLineTest, aTerminalEchoesAgainWhenThePasswordIsNotTyped)
{
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        for (const auto& [name, value] : environment)
            ::setenv(name.c_str(), value.c_str(), 1);
        ::execl(TIDEWELL_PROGRAM, "tidewell", "account", "set", "--provider", "dexcom", "--username", "ada",
                "--region", "us", "--password-stdin", nullptr);
        ::_exit(127);
    }
    const auto echoes = [&] {
        termios state{};
        return ::tcgetattr(terminal, &state) == 0 && (state.c_lflag & static_cast<tcflag_t>(ECHO)) != 0;
    };
    std::string shown;
    for (char byte = 0; !shown.ends_with("Password: ") && ::read(terminal, &byte, 1) == 1;)
        shown += byte;
    EXPECT_TRUE(shown.ends_with("Password: ")) << shown;
    EXPECT_FALSE(echoes());
    constexpr char interrupt = 3;
    EXPECT_EQ(::write(terminal, &interrupt, 1), 1);
    EXPECT_EQ(finish(child).code, 128 + SIGINT);
    EXPECT_TRUE(echoes());
    ::close(terminal);
}

TEST_F(CommandLineTest, outputThatCannotBeWrittenIsAFailureThatIsSaid)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"settings"}, {"--help"}, {"watch"}, {"watch", "--once"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        ASSERT_GE(full, 0);
        const pid_t child = start(arguments, {}, full);
        ::close(full);
        const auto ended = finish(child);
        EXPECT_EQ(ended.code, 1);
        EXPECT_NE(ended.errors.find("cannot be written"), std::string::npos) << ended.errors;
    }
}

TEST_F(CommandLineTest, theDemonstrationIsAskedForBeforeOrAfterWatchAndNowhereElse)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--demo=no-readings", "watch", "--once"},
          {"watch", "--once", "--demo=no-readings"}}) {
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, 4) << ended.errors;
        // Each part of a problem's text is a sentence of its own.
        EXPECT_NE(ended.output.find("available from Dexcom. Ensure"), std::string::npos) << ended.output;
    }
    EXPECT_EQ(run({"--demo", "settings"}).code, 2);
}

TEST_F(CommandLineTest, savesHistoryAfterAYesAndGivesItBackAndForgetsIt)
{
    EXPECT_EQ(run({"history", "status"}).code, 5);
    ASSERT_NO_FATAL_FAILURE(startService());
    ASSERT_EQ(signIn(service->account().password).code, 0);
    EXPECT_NE(run({"history", "status"}).output.find("Saving: off, and never was on"), std::string::npos);

    const double newest = std::floor(unixSeconds(clock.now()) / 60) * 60;
    std::string csv = "epoch_s,glucose_mgdl,trend\n";
    for (int i = 0; i < 50 * 24; ++i)
        csv += std::to_string(static_cast<std::int64_t>(newest) - i * 3600) + ",147.6,FortyFiveUp\n";
    std::ofstream{home / "readings.csv"} << csv << "x,100,\n";
    const auto import = [this](std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"history", "import", (home / "readings.csv").string()});
        return run(more);
    };
    EXPECT_EQ(import().code, 1) << "nobody said yes yet";

    // Without a terminal nobody can be asked.
    const auto asked = run({"history", "enable"});
    EXPECT_EQ(asked.code, 2);
    EXPECT_NE(asked.output.find("Nothing is ever uploaded."), std::string::npos);
    EXPECT_NE(asked.output.find("in the file " + (home / ".local/state/tidewell/keychain.json").string()),
              std::string::npos)
        << asked.output;
    EXPECT_FALSE(std::filesystem::exists(home / ".local/share/Tidewell"));
    EXPECT_EQ(run({"history", "enable", "--accept", "--retention", "90"}).code, 0);

    const auto tried = import({"--dry-run"});
    EXPECT_EQ(tried.code, 0) << tried.errors;
    EXPECT_NE(tried.output.find("line 1202: The column epoch_s"), std::string::npos) << tried.output;
    EXPECT_NE(tried.output.find("Would be added: 1200\n"), std::string::npos);
    const auto count = [this] {
        const auto status = run({"history", "status", "--json"});
        const auto document = parseJson(status.output);
        return document ? document->at("readingCount").to_number<int>() : -1;
    };
    EXPECT_EQ(count(), 0);
    EXPECT_NE(import().output.find("Added: 1200\n"), std::string::npos);
    EXPECT_NE(import().output.find("Added: 0\nSaved already, and left as they are: 1200\n"),
              std::string::npos);
    EXPECT_EQ(count(), 1200);

    const auto out = home / "out.json";
    const auto exported = run({"history", "export", out.string(), "--days", "2"});
    EXPECT_EQ(exported.code, 0) << exported.errors;
    EXPECT_NE(exported.output.find("not encrypted"), std::string::npos);
    struct stat file{};
    ASSERT_EQ(::stat(out.c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777, 0600U);
    EXPECT_EQ(parseJson(contents(out))->at("readings").as_array().size(), 48U);
    EXPECT_EQ(run({"history", "export", out.string(), "--format", "csv"}).code, 1) << "it exists";
    EXPECT_EQ(run({"history", "export", out.string(), "--format", "csv", "--force"}).code, 0);
    EXPECT_EQ(std::ranges::count(contents(out), '\n'), 1201);
    std::filesystem::remove(out);

    // Nothing of a value or a name lies about.
    for (const auto& entry : std::filesystem::recursive_directory_iterator{home / ".local/share"}) {
        if (!entry.is_regular_file())
            continue;
        const auto bytes = contents(entry.path());
        EXPECT_EQ(bytes.find("147.6"), std::string::npos) << entry.path();
        EXPECT_EQ(bytes.find(service->account().username), std::string::npos) << entry.path();
    }

    EXPECT_EQ(run({"history", "disable"}).code, 0);
    for (const std::vector<std::string>& shorter : {std::vector<std::string>{"history", "retention", "30"},
                                                    {"history", "enable", "--accept", "--retention", "30"}}) {
        const auto unasked = run(shorter);
        EXPECT_EQ(unasked.code, 2);
        EXPECT_NE(unasked.errors.find("--yes says yes"), std::string::npos) << unasked.errors;
        EXPECT_EQ(count(), 1200) << "readings were deleted unasked";
    }
    EXPECT_EQ(run({"history", "enable", "--accept", "--retention", "30", "--yes"}).code, 0);
    EXPECT_NEAR(count(), 720, 1);
    EXPECT_EQ(run({"history", "delete"}).code, 2);

    // The key is away: nothing is lost, and all is back with it.
    const auto keychain = home / ".local/state/tidewell/keychain.json";
    std::filesystem::rename(keychain, home / "aside");
    const auto locked = run({"history", "status"});
    EXPECT_EQ(locked.code, 6);
    EXPECT_NE(locked.errors.find("The saved history encryption key is unavailable."), std::string::npos);
    EXPECT_EQ(run({"history", "export", out.string()}).code, 6);
    EXPECT_EQ(import().code, 6);
    std::filesystem::rename(home / "aside", keychain);
    EXPECT_NEAR(count(), 720, 1);

    EXPECT_EQ(run({"history", "delete", "--yes"}).code, 0);
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(run({"history", "export", out.string()}).code, 1);
    EXPECT_EQ(contents(keychain).find("encryption-key"), std::string::npos);
}

TEST_F(CommandLineTest, whoIsSignedOutOrHasDamagedFilesCanStillSeeAndDeleteWhatIsSaved)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    ASSERT_EQ(signIn(service->account().password).code, 0);
    EXPECT_EQ(run({"history", "enable", "--accept"}).code, 0);
    std::ofstream{home / "readings.csv"} << "epoch_s,glucose_mgdl\n"
                                         << static_cast<std::int64_t>(unixSeconds(clock.now())) - 60
                                         << ",100\n";
    EXPECT_EQ(run({"history", "import", (home / "readings.csv").string()}).code, 0);
    const auto root = home / ".local/share/Tidewell/SavedHistory";
    const auto dayFiles = [&root] {
        const std::filesystem::recursive_directory_iterator files{root};
        return std::ranges::count_if(
            files, [](const auto& entry) { return entry.path().extension() == ".history"; });
    };
    ASSERT_EQ(dayFiles(), 1);
    EXPECT_EQ(run({"account", "clear"}).code, 0);

    const auto expectOthers = [this](int code, std::string_view problem) {
        const auto status = run({"history", "status"});
        EXPECT_EQ(status.code, code);
        EXPECT_NE(status.output.find("Other accounts or persons with saved readings: 1, in "),
                  std::string::npos)
            << status.output << status.errors;
        const auto object = parseJson(run({"history", "status", "--json"}).output);
        ASSERT_TRUE(object);
        EXPECT_EQ(object->at("otherHistories"), 1);
        EXPECT_TRUE(object->at("readingCount").is_null());
        EXPECT_EQ(object->at("problem").at("case").as_string(), problem);
    };
    expectOthers(5, "accountRequired");
    const auto document = home / ".config/tidewell/configuration.json";
    std::ofstream{document} << "{";
    expectOthers(1, "accountUnreadable");
    EXPECT_EQ(run({"history", "delete", "--yes"}).code, 1) << "which one is not known";
    EXPECT_EQ(dayFiles(), 1);

    // A damaged list of accounts is no obstacle either, and the way out is named.
    std::ofstream{root / "manifest.json"} << "[";
    std::filesystem::remove(document);
    ASSERT_EQ(signIn(service->account().password).code, 0);
    const auto damaged = run({"history", "status"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_NE(damaged.errors.find("tidewell history delete --all"), std::string::npos) << damaged.errors;
    EXPECT_EQ(contents(root / "manifest.json"), "[");
    EXPECT_EQ(run({"account", "clear"}).code, 0);
    EXPECT_EQ(run({"history", "delete", "--all"}).code, 2) << "unasked";
    EXPECT_EQ(run({"history", "delete", "--all", "--yes"}).code, 0);
    EXPECT_EQ(dayFiles(), 0);
    EXPECT_EQ(contents(home / ".local/state/tidewell/keychain.json").find("encryption-key"),
              std::string::npos);
    const auto after = run({"history", "status"});
    EXPECT_EQ(after.code, 5);
    EXPECT_EQ(after.output, "");
}

TEST_F(CommandLineTest, weeksOfRealReadingsComeBackEqualAndLieNowhereInClearText)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    int count = 1;
    std::string name{"test"};
    char* values[] = {name.data(), nullptr};
    const QCoreApplication application{count, values};
    TestBus bus;
    QDBusConnection client = bus.connect();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address().toStdString();
    const auto temporary = home / "tmp";
    std::filesystem::create_directory(temporary);
    environment["TMPDIR"] = temporary.string();
    const std::string password = service->account().password;
    std::string outputs;
    std::string errors;
    const auto runGood = [&](const std::vector<std::string>& arguments, const std::string& input = {}) {
        const auto ended = run(arguments, input);
        EXPECT_EQ(ended.code, 0) << testing::PrintToString(arguments) << ended.errors;
        outputs += ended.output;
        errors += ended.errors;
    };
    runGood({"account", "set", "--provider", "dexcom", "--username", service->account().username, "--region",
             service->account().region, "--password-stdin"},
            password + "\n");
    runGood({"history", "enable", "--accept"});

    // Two recorded weeks, moved to the last month, and a value that nothing else can be.
    const std::string odd = "216.730519";
    const double begin = std::floor(unixSeconds(clock.now())) - 21 * 86400;
    std::map<double, std::string> expected{{begin - 300, odd}};
    for (const auto& [trace, first] :
         {std::pair{&GlucoseTrace::builtIn(), begin}, std::pair{&GlucoseTrace::libre(), begin + 10 * 86400}})
        for (const auto& point : trace->points)
            expected[std::floor(first + point.seconds)] = std::to_string(point.mgdL);
    ASSERT_GT(expected.size(), 2500U);
    std::string csv = "epoch_s,glucose_mgdl\n";
    std::string wanted;
    for (const auto& [at, value] : expected) {
        csv += std::to_string(static_cast<std::int64_t>(at)) + "," + value + "\n";
        wanted += isoText(dateFromUnix(at)) + "," + value + "\n";
    }
    const auto given = home / "given.csv";
    std::ofstream{given} << csv;
    runGood({"history", "import", given.string()});
    const auto taken = temporary / "taken.csv";
    runGood({"history", "export", taken.string()});
    std::istringstream lines{contents(taken)};
    std::string got;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line))
        got += line.substr(0, line.find(',', line.find(',') + 1)) + "\n";
    EXPECT_EQ(got, wanted);
    std::filesystem::remove(given);
    std::filesystem::remove(taken);

    // A run that saves: what the service has of today dates from before the yes, which is moved back.
    const auto root = home / ".local/share/Tidewell/SavedHistory";
    for (const auto& entry : std::filesystem::recursive_directory_iterator{root / "accounts"})
        if (entry.path().filename() == "configuration.json") {
            auto record = parseJson(contents(entry.path())).value().as_object();
            record.erase("collectionCutoff");
            std::ofstream{entry.path()} << compactJson(record);
        }
    const auto day = static_cast<std::int64_t>(unixSeconds(clock.now()) / 86400);
    const auto ofToday = [&] {
        const std::filesystem::recursive_directory_iterator files{root};
        return std::ranges::any_of(files, [day](const auto& entry) {
            const auto file = entry.path().filename();
            return file == std::to_string(day) + ".history" || file == std::to_string(day + 1) + ".history";
        });
    };
    ASSERT_FALSE(ofToday());
    const int output = ::open((home / "watched").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const pid_t child = start({"watch", "--format", "json"}, {}, output);
    ::close(output);
    const QString tidewell = QStringLiteral("org.tidewell.Tidewell");
    ASSERT_TRUE(runUntil([&] { return client.interface()->isServiceRegistered(tidewell).value(); }));
    (void)callAndWait(
        client, QDBusMessage::createMethodCall(tidewell, "/org/tidewell/Tidewell", tidewell, "Refresh"));
    EXPECT_TRUE(runUntil(ofToday)) << contents(home / "watched") << contents(home / "errors");
    ::kill(child, SIGTERM);
    EXPECT_EQ(finish(child).code, 0);
    errors += contents(home / "errors");
    outputs += contents(home / "watched");
    std::filesystem::remove(home / "watched");
    runGood({"history", "status"});

    std::filesystem::remove(home / "input");
    std::size_t looked = 0;
    const auto keychain = home / ".local/state/tidewell/keychain.json";
    for (const auto& entry : std::filesystem::recursive_directory_iterator{home}) {
        if (!entry.is_regular_file() || entry.path() == keychain)
            continue;
        const auto bytes = contents(entry.path());
        for (const std::string& secret : {password, odd, std::string{"mgdL"}, std::string{"trend"}})
            EXPECT_EQ(bytes.find(secret), std::string::npos) << secret << " is in " << entry.path();
        ++looked;
    }
    EXPECT_GT(looked, 16U);
    EXPECT_EQ((outputs + errors).find(password), std::string::npos);
    EXPECT_EQ((outputs + errors).find(odd), std::string::npos);
    EXPECT_EQ(errors.find("mgdL"), std::string::npos) << errors;
}

TEST_F(CommandLineTest, withoutAKeyringNothingIsStoredAndTheCodeIsSix)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    environment["TIDEWELL_KEYCHAIN"] = "secret-service";
    const auto ended = signIn(service->account().password);
    EXPECT_EQ(ended.code, 6) << ended.errors;
    EXPECT_FALSE(std::filesystem::exists(home / ".config/tidewell/configuration.json"));
}

TEST_F(CommandLineTest, watchPrintsAtOnceAndEndsWithCodeZeroOnATerminationSignal)
{
    ASSERT_NO_FATAL_FAILURE(startService());
    ASSERT_EQ(signIn(service->account().password).code, 0);
    const SilentServer silent;
    std::ofstream{home / "endpoints.json"} << silent.endpointsDocument(service->account().region);
    struct Case {
        std::vector<std::string> arguments;
        std::string_view until;  ///< The signal comes after this was printed.
    };
    for (const Case& each :
         {Case{{"watch", "--format", "json"}, "{"}, Case{{"watch", "--format", "json", "--once"}, "{"},
          Case{{"watch", "--format", "json", "--once"}, "\"refreshing\""},
          Case{{"watch", "--format", "json", "--demo"}, "{"}}) {
        SCOPED_TRACE(testing::PrintToString(each.arguments) + std::string{each.until});
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
        const pid_t child = start(each.arguments, {}, pipe[1]);
        ::close(pipe[1]);
        std::string printed;
        char byte = 0;
        while (!printed.contains(each.until) && ::read(pipe[0], &byte, 1) == 1)
            printed += byte;
        EXPECT_EQ(printed.substr(0, 1), "{");
        ::kill(child, SIGTERM);
        const auto ended = finish(child);
        EXPECT_EQ(ended.code, 0) << ended.errors;
        ::close(pipe[0]);
    }
}

TEST_F(CommandLineTest, aBarGetsOneLineForOneAnswerAndNoValueAsTheLastOfManyLines)
{
    const auto once = run({"watch", "--format", "polybar", "--once", "--demo=wrong-password"});
    EXPECT_EQ(once.code, 5) << once.errors;
    EXPECT_EQ(once.output, "%{F#8A8A8E}-- !%{F-}\n");

    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const pid_t child = start({"watch", "--format", "i3blocks", "--demo"}, {}, pipe[1]);
    ::close(pipe[1]);
    std::string printed;
    char byte = 0;
    while (::read(pipe[0], &byte, 1) == 1) {
        printed += byte;
        if (byte == '\n' && std::ranges::count(printed, '\n') == 2)
            ::kill(child, SIGTERM);
    }
    EXPECT_EQ(finish(child).code, 0);
    EXPECT_TRUE(printed.ends_with("{\"full_text\":\"-- !\",\"short_text\":\"-- !\",\"color\":\"#8A8A8E\"}\n"))
        << printed;
    ::close(pipe[0]);
}

TEST_F(CommandLineTest, watchEndsQuietlyWhenItsReaderHasGone)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    ::close(pipe[0]);
    const pid_t child = start({"watch"}, {}, pipe[1]);
    ::close(pipe[1]);
    const auto ended = finish(child);
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.errors.find("tidewell: "), std::string::npos) << ended.errors;
}

}  // namespace

}  // namespace tidewell

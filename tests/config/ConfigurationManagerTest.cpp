#include "config/ConfigurationManager.h"

#include <source_location>

#include "config/ConfigTesting.h"

namespace tidewell {
namespace {

using Result = std::expected<void, ConfigurationProblem>;
using Account = GlucoseAccountConfiguration;

constexpr std::string_view service = "Tidewell.account";

Account alice() { return {GlucoseProvider::dexcom, "alice", SecretText{"pass-of-alice"}, "us"}; }

Account bob()
{
    return {GlucoseProvider::libreLinkUp, "bob@example.org", SecretText{"pass-of-bob"}, "eu2", "p", "Bob"};
}

AppSettings mmolSettings() { return {.measurementUnit = "mmol/L"}; }

/// Documents that are none, each in another way.
const std::vector<std::string>& damagedDocuments()
{
    static const std::vector<std::string> documents{
        "",
        " ",
        "[]",
        "null",
        "{}",
        "\xff\xfe",
        R"({"account":{"provider":"dexcom","username":"alice","password":"","region":"us"})",
        R"({"account":{"provider":"dexcom","username":"alice","password":"","region":"us"},"app":{}})",
        R"({"account":{"provider":"none","username":"a","password":"","region":"us"},"app":)"
        R"({"measurementUnit":"mg/dL","lowGlucoseThreshold":72,"highGlucoseThreshold":270}})",
        R"({"dexcom":{"username":"a","password":"","region":"us"},"app":)"
        R"({"measurementUnit":"mg/dL","lowGlucoseThreshold":"72","highGlucoseThreshold":270}})",
        std::string(2 << 20, '['),
    };
    return documents;
}

class ConfigurationManagerTest : public testing::Test {
protected:
    enum Loaded { loaded };
    /// What a process sees: a manager of its own over the same folder and secret store.
    struct Process {
        explicit Process(ConfigurationManagerTest& test)
            : manager{test.io.get_executor(),
                      test.io.get_executor(),
                      {.document = test.file, .keychain = test.keychain}}
        {
            token = manager.observe([this](ConfigurationChange change) { changes.push_back(change); });
        }
        Process(ConfigurationManagerTest& test, Loaded) : Process{test}
        {
            EXPECT_TRUE(test.run(manager.load()));
        }
        ConfigurationManager manager;
        std::vector<ConfigurationChange> changes;
        std::shared_ptr<void> token;
    };

    /// Runs one load or save to its end.
    Result run(asio::awaitable<Result> work)
    {
        std::optional<Result> result;
        asio::co_spawn(io, std::move(work), [&result](std::exception_ptr error, Result value) {
            if (error)
                std::rethrow_exception(error);
            result = std::move(value);
        });
        io.restart();
        io.run();
        return result.value();
    }

    /// A first start: nothing is stored but this account and default settings.
    void store(const Account& account)
    {
        Process process{*this};
        ASSERT_TRUE(run(process.manager.saveAccount(account)));
    }

    std::optional<SecretText> secret(std::string_view name)
    {
        const auto lookup = keychain->items.read(service, name);
        const auto* const found = std::get_if<SecretText>(&lookup);
        return found ? std::optional{*found} : std::nullopt;
    }

    /// A new process reads exactly this, and no password lies in any file.
    void expectStored(const std::optional<Account>& account, const AppSettings& settings,
                      std::source_location at = std::source_location::current())
    {
        const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
        Process process{*this};
        const auto result = run(process.manager.load());
        EXPECT_TRUE(result) << result.error().message;
        EXPECT_EQ(process.manager.account(), account);
        EXPECT_EQ(process.manager.settings(), settings);
        for (const auto& [name, bytes] : contentOf(folder))
            EXPECT_EQ(bytes.find("pass-of-"), std::string::npos) << name;
    }

    asio::io_context io;
    TemporaryFolder folder;
    std::filesystem::path file = folder / "tidewell/configuration.json";
    std::shared_ptr<FaultyKeychain> keychain = std::make_shared<FaultyKeychain>();
};

TEST_F(ConfigurationManagerTest, theFirstStartHasNoAccountAndNoProblem)
{
    Process process{*this};
    EXPECT_FALSE(process.manager.loaded());
    EXPECT_TRUE(run(process.manager.load()));
    EXPECT_TRUE(process.manager.loaded());
    EXPECT_EQ(process.manager.account(), std::nullopt);
    EXPECT_EQ(process.manager.settings(), AppSettings{});
    EXPECT_EQ(process.manager.problem(), std::nullopt);
    EXPECT_TRUE(process.changes.empty());
    EXPECT_TRUE(contentOf(folder).empty()) << "loading writes nothing";
}

TEST_F(ConfigurationManagerTest, whatIsSavedIsThereInTheNextProcessAndAnnouncedInThisOne)
{
    using enum ConfigurationChange;
    Process process{*this, loaded};
    ASSERT_TRUE(run(process.manager.saveAccount(alice())));
    EXPECT_EQ(process.changes, (std::vector{configuration}));
    EXPECT_EQ(process.manager.account(), alice());
    EXPECT_EQ(secret("dexcom:alice"), SecretText{"pass-of-alice"});
    expectStored(alice(), AppSettings{});

    ASSERT_TRUE(run(saveSettings(process.manager, mmolSettings())));
    EXPECT_EQ(process.changes, (std::vector{configuration, appSettings}));
    expectStored(alice(), mmolSettings());

    // The same again is no change.
    ASSERT_TRUE(run(saveSettings(process.manager, mmolSettings())));
    ASSERT_TRUE(run(process.manager.saveAccount(alice())));
    ASSERT_TRUE(run(process.manager.load()));
    EXPECT_EQ(process.changes.size(), 2U);

    // An account without a password leaves the stored one.
    auto elsewhere = alice();
    elsewhere.region = "ous";
    auto withoutPassword = elsewhere;
    withoutPassword.password = SecretText{};
    ASSERT_TRUE(run(process.manager.saveAccount(withoutPassword)));
    EXPECT_EQ(process.manager.account(), elsewhere);
    expectStored(elsewhere, mmolSettings());

    ASSERT_TRUE(run(process.manager.saveAccount(bob())));
    expectStored(bob(), mmolSettings());
    EXPECT_EQ(secret("dexcom:alice"), std::nullopt);

    process.token.reset();
    ASSERT_TRUE(run(process.manager.saveAccount(Account{.region = "us"})));
    EXPECT_EQ(process.manager.account(), std::nullopt);
    expectStored(std::nullopt, mmolSettings());
    EXPECT_EQ(secret("libreLinkUp:bob@example.org"), std::nullopt);
    EXPECT_EQ(process.changes.size(), 4U) << "nobody observes any more";
}

TEST_F(ConfigurationManagerTest, savesRunInTheOrderOfTheirCallsEvenWhenNobodyWaits)
{
    Process process{*this};
    AppSettings last = mmolSettings();
    last.lowAlertRepeatMinutes = 30;
    {
        const auto unwaited = process.manager.saveAccount(alice());
        const auto first = saveSettings(process.manager, mmolSettings());
        const auto second = process.manager.saveAccount(bob());
        const auto third = saveSettings(process.manager, last);
    }
    ASSERT_TRUE(run(process.manager.load()));
    EXPECT_EQ(process.manager.account(), bob());
    EXPECT_EQ(process.manager.settings(), last);
    using enum ConfigurationChange;
    EXPECT_EQ(process.changes, (std::vector{configuration, appSettings, configuration, appSettings}));
    EXPECT_EQ(secret("dexcom:alice"), std::nullopt);
    expectStored(bob(), last);
}

TEST_F(ConfigurationManagerTest, aSaveBeginsOnlyWhenTheOneBeforeHasEnded)
{
    asio::io_context workers;
    ConfigurationManager manager{
        io.get_executor(), workers.get_executor(), {.document = file, .keychain = keychain}};
    const auto first = manager.saveAccount(alice());
    const auto second = manager.saveAccount(bob());
    const auto third = saveSettings(manager, mmolSettings());
    for (int save = 0; save < 3; ++save) {
        io.restart();
        io.poll();
        workers.restart();
        EXPECT_EQ(workers.poll(), 1U) << "one job at a time";
    }
    io.restart();
    io.poll();
    EXPECT_EQ(manager.settings(), mmolSettings());
    expectStored(bob(), mmolSettings());
}

TEST_F(ConfigurationManagerTest, anotherProcessesChangeIsKeptAndAnnounced)
{
    using enum ConfigurationChange;
    store(alice());
    Process one{*this, loaded};
    Process two{*this, loaded};

    ASSERT_TRUE(run(two.manager.saveAccount(bob())));
    ASSERT_TRUE(run(saveSettings(one.manager, mmolSettings())));
    EXPECT_EQ(one.manager.account(), bob());
    EXPECT_EQ(one.changes, (std::vector{configuration, appSettings}));
    expectStored(bob(), mmolSettings());

    ASSERT_TRUE(run(two.manager.load()));
    EXPECT_EQ(two.changes, (std::vector{configuration, appSettings}));
    std::filesystem::remove(file);
    ASSERT_TRUE(run(two.manager.load()));
    EXPECT_EQ(two.manager.account(), std::nullopt);
}

TEST_F(ConfigurationManagerTest, aChangeOfSettingsLeavesWhatOthersChangedMeanwhile)
{
    store(alice());
    Process one{*this, loaded};
    Process two{*this, loaded};
    AppSettings wanted;
    wanted.lowGlucoseThreshold = 80;
    {
        const auto first = one.manager.changeSettings({}, wanted);
        const auto menu = one.manager.changeSettings({}, {.graphTimeWindowHours = 12});
    }
    ASSERT_TRUE(run(one.manager.load())) << "both are stored, although nobody waited";
    ASSERT_TRUE(run(two.manager.changeSettings({}, mmolSettings())));
    wanted.graphTimeWindowHours = 12;
    wanted.measurementUnit = "mmol/L";
    EXPECT_EQ(two.manager.settings(), wanted);
    expectStored(alice(), wanted);

    // Back to the default, which is what the other process held all the time.
    ASSERT_TRUE(run(two.manager.changeSettings(wanted, {})));
    ASSERT_TRUE(run(one.manager.load()));
    EXPECT_EQ(one.manager.settings(), AppSettings{});
}

TEST_F(ConfigurationManagerTest, aDamagedDocumentIsKeptReportedAndReplacedOnlyBesideItsCopy)
{
    for (const std::string& bytes : damagedDocuments()) {
        std::filesystem::remove_all(file.parent_path());
        store(alice());
        Process process{*this};
        ASSERT_TRUE(run(process.manager.load()));
        writeBytes(file, bytes);
        const auto shown = bytes.substr(0, 40);

        const auto result = run(process.manager.load());
        ASSERT_FALSE(result) << shown;
        EXPECT_EQ(result.error().error.kind, ConfigurationError::Kind::invalidConfiguration);
        EXPECT_NE(result.error().message.find(file.string()), std::string::npos) << result.error().message;
        EXPECT_EQ(process.manager.problem(), result.error());
        EXPECT_EQ(process.manager.account(), alice()) << "what was held stays";
        EXPECT_TRUE(process.changes.empty());
        EXPECT_EQ(contentOf(folder),
                  (std::map<std::string, std::string>{{"tidewell/configuration.json", bytes}}));

        {
            const FullDisk full;
            EXPECT_FALSE(run(saveSettings(process.manager, mmolSettings())));
        }
        EXPECT_EQ(contentOf(folder),
                  (std::map<std::string, std::string>{{"tidewell/configuration.json", bytes}}));
        EXPECT_EQ(process.manager.settings(), AppSettings{});

        ASSERT_TRUE(run(saveSettings(process.manager, mmolSettings()))) << shown;
        EXPECT_EQ(process.manager.problem(), std::nullopt);
        expectStored(alice(), mmolSettings());
        const auto files = contentOf(folder);
        ASSERT_EQ(files.size(), 2U) << shown;
        EXPECT_EQ(files.rbegin()->second, bytes);
        EXPECT_TRUE(files.rbegin()->first.starts_with("tidewell/configuration.unreadable-2"))
            << files.rbegin()->first;
        EXPECT_TRUE(files.rbegin()->first.ends_with("Z.json")) << files.rbegin()->first;
    }
}

TEST_F(ConfigurationManagerTest, whatCannotBeReadIsNeitherReplacedNorForgotten)
{
    std::filesystem::create_directories(file);  // A folder in the place of the document.
    Process process{*this};
    EXPECT_FALSE(run(process.manager.load()));
    EXPECT_TRUE(process.manager.loaded());
    EXPECT_FALSE(run(process.manager.saveAccount(alice())));
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_EQ(secret("dexcom:alice"), std::nullopt);

    std::filesystem::remove_all(file.parent_path());
    writeBytes(file.parent_path(), "a file in the place of the folder");
    EXPECT_FALSE(run(process.manager.saveAccount(alice())));
    EXPECT_EQ(process.manager.account(), std::nullopt);
    EXPECT_EQ(secret("dexcom:alice"), std::nullopt);
    EXPECT_EQ(bytesOf(file.parent_path()), "a file in the place of the folder");
}

/// Each operation is repeated with a fault at its first, second ... call of the secret store, and with a full
/// disk, until it meets none. A failure changes nothing; a success is what a new process reads.
TEST_F(ConfigurationManagerTest, aFaultAtAnyStepChangesNothingOrNothingThatMatters)
{
    auto newPassword = alice();
    newPassword.password = SecretText{"pass-of-alice-2"};
    const std::optional<Account> edits[] = {bob(), newPassword, std::nullopt};
    for (const auto& edit : edits) {
        for (int failAt = 0;; ++failAt) {
            std::filesystem::remove_all(file.parent_path());
            std::ignore = keychain->items.remove(service, "libreLinkUp:bob@example.org");
            keychain->failAt = 0;
            store(alice());
            Process process{*this, loaded};
            const auto before = contentOf(folder);

            keychain->calls = 0;
            keychain->failAt = failAt;
            const auto result = [&] {
                std::optional<FullDisk> full;
                if (failAt == 0)
                    full.emplace();
                return run(process.manager.saveAccount(edit));
            }();
            const bool faultMet = failAt == 0 || keychain->calls >= failAt;
            keychain->failAt = 0;

            if (!result) {
                EXPECT_EQ(contentOf(folder), before);
                EXPECT_EQ(process.manager.account(), alice());
                EXPECT_EQ(process.manager.problem(), result.error());
                EXPECT_TRUE(process.changes.empty());
                EXPECT_EQ(secret("libreLinkUp:bob@example.org"), std::nullopt);
                expectStored(alice(), AppSettings{});
            } else {
                EXPECT_EQ(process.manager.account(), edit);
                EXPECT_EQ(process.manager.problem().has_value(), faultMet)
                    << "what was left behind is reported";
                expectStored(edit, AppSettings{});
            }
            if (!faultMet) {
                EXPECT_TRUE(result);
                break;
            }
            if (failAt == 0) {
                EXPECT_FALSE(result);
                EXPECT_EQ(result.error().error.kind, ConfigurationError::Kind::invalidConfiguration);
            }
        }
    }
}

TEST_F(ConfigurationManagerTest, settingsAreSavedWithoutTheSecretStore)
{
    store(alice());
    Process process{*this, loaded};
    keychain->failAlways = true;
    EXPECT_TRUE(run(saveSettings(process.manager, mmolSettings())));
    EXPECT_EQ(process.manager.account(), alice());
    keychain->failAlways = false;
    expectStored(alice(), mmolSettings());
}

TEST_F(ConfigurationManagerTest, aLockedStoreLeavesTheAccountAndTheHeldPassword)
{
    store(alice());
    auto withoutPassword = alice();
    withoutPassword.password = SecretText{};
    Process early{*this};
    Process late{*this, loaded};

    keychain->failAlways = true;
    const auto result = run(early.manager.load());
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().error, (ConfigurationError{.kind = ConfigurationError::Kind::keychainError,
                                                        .status = keychainStatus::interactionNotAllowed}));
    EXPECT_EQ(result.error().message, "The password could not be read: the secret store is locked.");
    EXPECT_EQ(early.manager.account(), withoutPassword);
    EXPECT_FALSE(run(late.manager.load()));
    EXPECT_EQ(late.manager.account(), alice());

    keychain->failAlways = false;
    ASSERT_TRUE(run(early.manager.load()));
    EXPECT_EQ(early.manager.account(), alice());
    EXPECT_EQ(early.changes, (std::vector{ConfigurationChange::configuration}));
    EXPECT_EQ(early.manager.problem(), std::nullopt);

    EXPECT_EQ(keychain->items.remove(service, "dexcom:alice"), keychainStatus::success);
    EXPECT_FALSE(run(late.manager.load()));
    EXPECT_EQ(late.manager.account(), withoutPassword);
    EXPECT_EQ(late.manager.problem()->error.status, keychainStatus::itemNotFound);
}

TEST_F(ConfigurationManagerTest, aPasswordWrittenByHandMovesToTheSecretStore)
{
    const std::string byHand =
        R"({"dexcom":{"username":"alice","password":"pass-of-alice","region":"us"},"app":)"
        R"({"measurementUnit":"mmol/L","lowGlucoseThreshold":72,"highGlucoseThreshold":270}})";
    writeBytes(file, byHand);

    // Without a secret store it serves from where it stands, and that is said.
    {
        Process process{*this};
        keychain->failAlways = true;
        const auto result = run(process.manager.load());
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().error.kind, ConfigurationError::Kind::keychainError);
        EXPECT_EQ(result.error().message.find("pass-of"), std::string::npos);
        EXPECT_EQ(process.manager.account(), alice());
        EXPECT_FALSE(run(saveSettings(process.manager, AppSettings{})));
        keychain->failAlways = false;
        EXPECT_EQ(bytesOf(file), byHand);
        const FullDisk full;
        EXPECT_FALSE(run(process.manager.load()));
        EXPECT_EQ(process.manager.account(), alice());
    }
    EXPECT_EQ(bytesOf(file), byHand);
    EXPECT_EQ(secret("dexcom:alice"), SecretText{"pass-of-alice"});

    EXPECT_EQ(keychain->items.remove(service, "dexcom:alice"), keychainStatus::success);
    Process process{*this};
    EXPECT_TRUE(run(process.manager.load()));
    expectStored(alice(), mmolSettings());

    // Saving the settings moves it as well, without a load before.
    writeBytes(file, byHand);
    EXPECT_EQ(keychain->items.remove(service, "dexcom:alice"), keychainStatus::success);
    EXPECT_TRUE(run(saveSettings(process.manager, AppSettings{})));
    expectStored(alice(), AppSettings{});
}

TEST_F(ConfigurationManagerTest, whatWouldNotReadBackIsNotWritten)
{
    store(alice());
    Process process{*this, loaded};
    const auto before = contentOf(folder);
    auto invalid = bob();
    invalid.username = "b\xff";
    EXPECT_FALSE(run(process.manager.saveAccount(invalid)));
    AppSettings settings;
    settings.lowGlucoseThreshold = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(run(saveSettings(process.manager, settings)));
    EXPECT_EQ(contentOf(folder), before);
    expectStored(alice(), AppSettings{});
}

TEST_F(ConfigurationManagerTest, observersMayComeAndGoWhileTheyAreTold)
{
    Process process{*this};
    std::shared_ptr<void> other;
    int told = 0;
    const auto token = process.manager.observe([&](ConfigurationChange) {
        ++told;
        process.token.reset();
        other = process.manager.observe([&](ConfigurationChange) { told += 100; });
    });
    ASSERT_TRUE(run(process.manager.saveAccount(alice())));
    EXPECT_EQ(told, 1);
    ASSERT_TRUE(run(process.manager.saveAccount(std::nullopt)));
    EXPECT_EQ(told, 2) << "replaced before its turn";
    EXPECT_EQ(process.changes.size(), 1U);
}

}  // namespace
}  // namespace tidewell

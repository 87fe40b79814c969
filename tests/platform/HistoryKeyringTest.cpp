#include <map>

#include "KeychainFixture.h"
#include "history/GlucoseHistoryAccount.h"
#include "history/GlucoseHistoryStore.h"
#include "platform/linux/KeychainItemStore.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using enum GlucoseHistoryError;

constexpr Date now = dateFromUnix(20771 * 86400.0 + 36000);

/// Saved history with its keys in a real secret store.
class KeyringHistory {
public:
    explicit KeyringHistory(KeychainItemStoring& secrets)
        : store{
              {.root = folder.path() / "SavedHistory", .files = files, .keychain = secrets, .random = random}}
    {
    }

    std::optional<GlucoseHistoryError> save(Seconds later)
    {
        const auto token = store.collectionToken();
        if (!token)
            return invalidConfiguration;
        const auto saved = store.save(
            *token, {makeReading(100, "Flat", now + later, Seconds{300}, GlucoseProvider::dexcom)}, now);
        return saved ? std::nullopt : std::optional{saved.error()};
    }
    std::optional<GlucoseHistoryError> enable()
    {
        const auto enabled = store.enable(90, 1, now);
        return enabled ? std::nullopt : std::optional{enabled.error()};
    }
    /// How many readings there are, or why not.
    std::expected<std::size_t, GlucoseHistoryError> count()
    {
        const auto all = store.snapshot(dateFromUnix(0), dateFromUnix(4e9));
        if (!all)
            return std::unexpected{all.error()};
        return all->readings.size();
    }

    static inline TemporaryFolder folder{};
    SystemFileSystem files{};
    SystemRandom random{};
    GlucoseHistoryStore store;
};

/// Every file of the history, with its bytes.
std::map<std::string, std::string> filesOf(const std::filesystem::path& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{folder}) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream stream{entry.path(), std::ios::binary};
        files[entry.path()] = {std::istreambuf_iterator<char>{stream}, {}};
    }
    return files;
}

TEST_F(KeychainItemStoreTest, savedHistoryOutlivesWhateverBecomesOfItsKeys)
{
    auto keyring = startKeyring(true);
    if (!keyring)
        GTEST_SKIP() << "gnome-keyring is not installed";
    KeychainItemStore secrets;
    KeychainItemStore hasty{{.answer = 100ms, .prompt = 100ms}};
    const auto scope = *HistoryScopeID::of({.provider = GlucoseProvider::dexcom, .username = "anna"});
    const auto other = HistoryScopeID::of({.provider = GlucoseProvider::dexcom, .username = "bert"});
    KeyringHistory history{secrets};
    KeyringHistory impatient{hasty};
    ASSERT_TRUE(history.store.attach(scope));
    ASSERT_EQ(history.enable(), std::nullopt);
    ASSERT_EQ(history.save(0s), std::nullopt);
    ASSERT_TRUE(impatient.store.attach(scope));
    const auto files = filesOf(KeyringHistory::folder.path());
    const KeychainLookup key = secrets.read(historyKeychainService, historyKeyAccount(scope));
    ASSERT_TRUE(std::holds_alternative<SecretText>(key));

    const auto expectOutage = [&](KeyringHistory& from, GlucoseHistoryError error, std::string_view when) {
        EXPECT_EQ(from.save(1s), error) << when;
        EXPECT_EQ(from.enable(), error) << when;
        EXPECT_EQ(from.count(), (std::expected<std::size_t, GlucoseHistoryError>{std::unexpected{error}}))
            << when;
        EXPECT_EQ(from.store.status().problem, error) << when;
        EXPECT_EQ(filesOf(KeyringHistory::folder.path()), files) << when;
    };
    keyring.reset();
    expectOutage(impatient, keychainFailure, "absent");
    {
        // Its objects live on this thread, which is busy waiting for them.
        QDBusConnection hung = bus->connect();
        QObject object;
        hung.registerObject("/org/freedesktop/secrets", &object);
        hung.registerService("org.freedesktop.secrets");
        expectOutage(impatient, keychainFailure, "hanging");
        hung.unregisterService("org.freedesktop.secrets");
    }
    keyring = startKeyring(false);
    expectOutage(history, keychainFailure, "locked");
    keyring.reset();
    keyring = startKeyring(true);

    const auto lose = [&](const std::optional<std::string>& content) {
        const std::string account = historyKeyAccount(scope);
        EXPECT_EQ(content ? secrets.write(historyKeychainService, account, SecretText{*content})
                          : secrets.remove(historyKeychainService, account),
                  keychainStatus::success);
        const KeychainLookup before = secrets.read(historyKeychainService, account);
        expectOutage(history, unavailableKey, content.value_or("emptied"));
        EXPECT_EQ(secrets.read(historyKeychainService, account), before) << "made again";
    };
    lose(std::nullopt);
    lose(std::string(16, 'k'));
    lose(std::string(33, 'k'));

    EXPECT_EQ(secrets.write(historyKeychainService, historyKeyAccount(scope), std::get<SecretText>(key)),
              keychainStatus::success);
    EXPECT_EQ(history.save(1s), std::nullopt);
    EXPECT_EQ(history.count().value_or(0), 2U);
    EXPECT_EQ(history.store.status().problem, std::nullopt);
    ASSERT_TRUE(history.store.attach(other));
    EXPECT_EQ(history.enable(), std::nullopt) << "an account of its own, with a key of its own";
    ASSERT_TRUE(history.store.attach(scope));
    EXPECT_TRUE(history.store.deleteAttached(now));
    EXPECT_EQ(secrets.read(historyKeychainService, historyKeyAccount(scope)),
              KeychainLookup{KeychainItemNotFound{}});
    EXPECT_TRUE(history.store.deleteAll(now));
}

}  // namespace
}  // namespace tidewell

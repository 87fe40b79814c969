#include "platform/linux/KeychainItemStore.h"

#include <thread>

#include "FakeSecretService.h"
#include "KeychainFixture.h"
#include "testing/LogCatcher.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view service = "Tidewell.test";

void expectContent(KeychainItemStore& store, std::string_view account, std::string_view expected)
{
    const KeychainLookup lookup = store.read(service, account);
    ASSERT_TRUE(std::holds_alternative<SecretText>(lookup)) << account;
    EXPECT_EQ(std::get<SecretText>(lookup).reveal(), expected) << account;
}

TEST_F(KeychainItemStoreTest, keepsEveryByteReplacesAndRemoves)
{
    const auto keyring = startKeyring(true);
    if (!keyring)
        GTEST_SKIP() << "gnome-keyring is not installed";
    KeychainItemStore store;
    EXPECT_EQ(store.read(service, "absent"), KeychainLookup{KeychainItemNotFound{}});
    EXPECT_EQ(store.remove(service, "absent"), keychainStatus::itemNotFound);

    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (const std::string& content :
         {bytes, std::string{}, std::string{"short"}, std::string(200'000, '\xee')}) {
        EXPECT_EQ(store.write(service, "one", SecretText{content}), keychainStatus::success);
        expectContent(store, "one", content);
    }
    EXPECT_EQ(store.write(service, "other \"name' \xC3\xA4", SecretText{"two"}), keychainStatus::success);
    expectContent(store, "one", std::string(200'000, '\xee'));

    std::vector<std::thread> threads;
    std::atomic<int> good = 0;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            const std::string account = "thread " + std::to_string(i);
            good += store.write(service, account, SecretText{account}) == keychainStatus::success &&
                    store.read(service, account) == KeychainLookup{SecretText{account}};
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 4);

    EXPECT_EQ(store.remove(service, "one"), keychainStatus::success);
    EXPECT_EQ(store.remove(service, "one"), keychainStatus::itemNotFound) << "writing twice left two items";
    EXPECT_EQ(store.read(service, "one"), KeychainLookup{KeychainItemNotFound{}});
}

TEST_F(KeychainItemStoreTest, whatIsLockedIsNotTakenForAbsent)
{
    auto keyring = startKeyring(true);
    if (!keyring)
        GTEST_SKIP() << "gnome-keyring is not installed";
    KeychainItemStore store;
    EXPECT_EQ(store.write(service, "kept", SecretText{"content"}), keychainStatus::success);
    keyring.reset();
    keyring = startKeyring(false);
    const KeychainLookup locked{KeychainFailure{keychainStatus::interactionNotAllowed}};
    EXPECT_EQ(store.read(service, "kept"), locked);
    EXPECT_EQ(store.read(service, "never written"), locked);
    EXPECT_EQ(store.write(service, "kept", SecretText{"new"}), keychainStatus::interactionNotAllowed);
    EXPECT_EQ(store.remove(service, "kept"), keychainStatus::interactionNotAllowed);
    keyring.reset();
    keyring = startKeyring(true);
    expectContent(store, "kept", "content");
}

TEST_F(KeychainItemStoreTest, anAbsentOrHangingServiceEndsAtTheDeadlineAndIsUsedAgainOnceItWorks)
{
    const LogCatcher log;
    KeychainItemStore store{{.answer = 100ms, .prompt = 100ms}};
    const SecretText secret{"do not log me"};
    EXPECT_EQ(store.read(service, "a"), KeychainLookup{KeychainFailure{keychainStatus::notAvailable}});
    EXPECT_EQ(store.write(service, "a", secret), keychainStatus::notAvailable);
    {
        // Its objects live on this thread, which is busy waiting for them.
        QDBusConnection hung = bus->connect();
        QObject object;
        hung.registerObject("/org/freedesktop/secrets", &object);
        hung.registerService("org.freedesktop.secrets");
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(store.write(service, "a", secret), keychainStatus::notAvailable);
        EXPECT_EQ(store.remove(service, "a"), keychainStatus::notAvailable);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        hung.unregisterService("org.freedesktop.secrets");
    }
    EXPECT_EQ(log.text().find(secret.reveal()), std::string::npos);

    FakeSecretService works{*bus, "Y29udGVudA=="};
    works.answerPrompt(true);
    KeychainItemStore patient;
    expectContent(patient, "a", "content");
}

TEST_F(KeychainItemStoreTest, oneDialogServesAllCallsAndIsNeverTakenAway)
{
    FakeSecretService fake{*bus, "Y29udGVudA=="};
    KeychainItemStore store{{.answer = 10s, .prompt = 60s}};
    std::vector<std::thread> readers;
    std::atomic<int> found = 0;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] { found += store.read("s", "a") == KeychainLookup{SecretText{"content"}}; });
    EXPECT_TRUE(runUntil([&] { return fake.counts().prompts == 1; }));
    fake.answerPrompt(true);
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(found, 3);
    EXPECT_EQ(fake.counts().prompts, 1);
    EXPECT_EQ(fake.counts().dismissals, 0);
    EXPECT_TRUE(runUntil([&] { return fake.counts().sessionsOpen == 0; }));
}

TEST_F(KeychainItemStoreTest, aDialogThatNobodyAnswersFailsTheCallsUntilItIsAnswered)
{
    FakeSecretService fake{*bus, "Y29udGVudA=="};
    KeychainItemStore store{{.answer = 10s, .prompt = 100ms}};
    const KeychainLookup locked{KeychainFailure{keychainStatus::interactionNotAllowed}};
    EXPECT_EQ(store.read("s", "a"), locked);
    const int searches = fake.counts().searches;
    EXPECT_EQ(store.read("s", "a"), locked);
    EXPECT_EQ(store.write("s", "a", SecretText{"x"}), keychainStatus::interactionNotAllowed);
    EXPECT_EQ(fake.counts().searches, searches) << "the service was bothered while its dialog was open";
    EXPECT_EQ(fake.counts().prompts, 1);
    EXPECT_EQ(fake.counts().dismissals, 0);
    fake.answerPrompt(true);
    EXPECT_TRUE(runUntil([&] { return store.read("s", "a") == KeychainLookup{SecretText{"content"}}; }));
    EXPECT_EQ(fake.counts().prompts, 1);
}

TEST_F(KeychainItemStoreTest, aDialogThatIsClosedHasItsStatus)
{
    {
        FakeSecretService fake{*bus, "Y29udGVudA=="};
        const auto closeDialog = [&] {
            const int asked = fake.counts().prompts;
            return std::thread{[&, asked] {
                while (fake.counts().prompts == asked)
                    std::this_thread::sleep_for(1ms);
                fake.answerPrompt(false);
            }};
        };
        for (const auto& [seen, status] : {std::pair{0ms, keychainStatus::userCanceled},
                                           std::pair{60'000ms, keychainStatus::interactionNotAllowed}}) {
            KeychainItemStore store{{.seen = seen}};
            std::thread person = closeDialog();
            EXPECT_EQ(store.read("s", "a"), KeychainLookup{KeychainFailure{status}});
            person.join();
            if (status != keychainStatus::userCanceled)
                continue;
            const int asked = fake.counts().prompts;
            EXPECT_EQ(store.read("s", "a"), KeychainLookup{KeychainFailure{status}});
            EXPECT_EQ(fake.counts().prompts, asked) << "who closed the dialog is not asked again";
            std::thread again = closeDialog();
            EXPECT_EQ(store.write("s", "a", SecretText{"new"}), status) << "but by what they want to store";
            again.join();
        }
    }
}

TEST_F(KeychainItemStoreTest, onlyAServiceThatAnswersCanSayThatNothingIsThere)
{
    FakeSecretService empty{*bus, ""};
    empty.findNothing(false);
    EXPECT_EQ(KeychainItemStore{}.read("s", "a"), KeychainLookup{KeychainItemNotFound{}});
    empty.findNothing(true);
    EXPECT_EQ(KeychainItemStore{}.read("s", "a"),
              KeychainLookup{KeychainFailure{keychainStatus::notAvailable}})
        << "what may be locked counts as absent";
}

TEST_F(KeychainItemStoreTest, contentOfOthersIsNoContent)
{
    for (const char* content : {"plain text", "Y29udGVudA", "Y29u dGVudA=="}) {
        FakeSecretService fake{*bus, content};
        fake.answerPrompt(true);
        KeychainItemStore store;
        EXPECT_EQ(store.read("s", "a"), KeychainLookup{KeychainFailure{keychainStatus::decode}}) << content;
    }
}

}  // namespace
}  // namespace tidewell

#include <gtest/gtest.h>

#include "config/MemoryKeychainItemStore.h"
#include "history/HistoryCoordinator.h"
#include "polling/PollingFixture.h"
#include "support/FileSystem.h"
#include "testing/TemporaryFolder.h"

namespace tidewell {

namespace {

/// Polling with saved history in a folder of its own.
class PollingHistoryTest : public testing::Test, public PollingFixture {
protected:
    PollingHistoryTest() { follow("ada"); }
    ~PollingHistoryTest() override
    {
        coordinator.reset();
        history.reset();
        clock.runReady();
    }

    static HistoryScopeID scopeOf(std::string user)
    {
        return *HistoryScopeID::of({.username = std::move(user)});
    }

    /// As a start does it, for an account that saves.
    void follow(const std::string& user)
    {
        EXPECT_TRUE(storage.attach(scopeOf(user)));
        EXPECT_TRUE(storage.enable(90, currentConsentVersion, start - Seconds{86400}));
        coordinator.reset();
        history.emplace(HistoryCoordinator::Parts{.engine = io.get_executor(),
                                                  .main = io.get_executor(),
                                                  .workers = io.get_executor(),
                                                  .clock = clock,
                                                  .store = std::make_shared<GlucoseHistoryStore>(store())});
        viewModel.clear();
        history->follow(scopeOf(user));
        auto withHistory = parts();
        withHistory.history = &*history;
        coordinator.emplace(std::move(withHistory));
    }

    GlucoseHistoryStore::Parts store()
    {
        return {.root = folder / "SavedHistory", .files = files, .keychain = keychain, .random = secrets};
    }

    std::vector<Date> saved()
    {
        EXPECT_TRUE(storage.reload());
        std::vector<Date> dates;
        for (const auto& stored : storage.snapshot(Date{}, clock.now() + Seconds{86400})->readings)
            dates.push_back(stored.reading.date);
        return dates;
    }

    TemporaryFolder folder;
    SystemFileSystem files;
    MemoryKeychainItemStore keychain;
    SystemRandom secrets;
    GlucoseHistoryStore storage{store()};
    std::optional<HistoryCoordinator> history;
};

}  // namespace

TEST_F(PollingHistoryTest, everyAnswerIsSavedAndAGapIsFilledByTheNext)
{
    runToFirstReading();
    EXPECT_EQ(saved().size(), 2U);
    failWith(Kind::transport);
    clock.advance(Seconds{3 * 3600});
    EXPECT_EQ(saved().size(), 2U);
    // The service still has what came meanwhile, and something that was never shown.
    service->onFetch = [] {
        std::vector<GlucoseReading> day;
        for (int i = 0; i < 100; ++i)
            day.push_back(reading(start + Seconds{3 * 3600 - 300.0 * i}));
        return Fetched{std::move(day)};
    };
    (void)untilNextFetch();
    clock.runReady();
    EXPECT_GE(saved().size(), 100U);
    EXPECT_EQ(saved().size(), state().glucoseHistory.size());
}

TEST_F(PollingHistoryTest, whatWasSavedIsShownBeforeTheFirstAnswer)
{
    const auto imported =
        storage.import({reading(start - Seconds{600}, 111), reading(start - Seconds{7200}, 112),
                        reading(start - Seconds{25.0 * 3600}, 113), reading(start + Seconds{3600}, 999)},
                       start, false);
    ASSERT_TRUE(imported);
    failWith(Kind::noReadings);
    run();
    clock.advance(Seconds{1});
    EXPECT_TRUE(service->fetches.empty());
    EXPECT_EQ(state().glucoseHistory.size(), 2U) << "24 hours, and nothing of a time to come";
    EXPECT_EQ(state().statusTitle, "111 →");
    clock.advance(Seconds{5});
    EXPECT_EQ(errorTitle(), "No data available") << "what was saved is no answer of the service";
    clock.advance(Seconds{400});
    EXPECT_EQ(state().statusTitle, "111 ?") << "old is never shown as new";

    // The newest reading of the service is new, although it is the saved one.
    service->onFetch = [] { return Fetched{std::vector{reading(start - Seconds{600}, 115)}}; };
    (void)untilNextFetch();
    clock.runReady();
    EXPECT_EQ(state().glucoseHistory.back().mgdL, 115);

    // Another person finds none of it.
    follow("bob");
    run();
    clock.advance(Seconds{1});
    EXPECT_TRUE(state().glucoseHistory.empty());
}

}  // namespace tidewell

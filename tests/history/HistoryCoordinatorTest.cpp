#include "history/HistoryCoordinator.h"

#include <gtest/gtest.h>

#include "HistoryWorld.h"
#include "testing/FakeClock.h"
#include "testing/Running.h"

namespace tidewell {

namespace {

/// A coordinator over a disk in memory. The workers work only when they are run, as if something hung.
class HistoryCoordinatorTest : public testing::Test {
protected:
    HistoryCoordinatorTest() { make(); }
    ~HistoryCoordinatorTest() override
    {
        coordinator.reset();
        settle();
    }

    void make()
    {
        coordinator = std::make_unique<HistoryCoordinator>(
            HistoryCoordinator::Parts{.engine = io.get_executor(),
                                      .main = io.get_executor(),
                                      .workers = workers.get_executor(),
                                      .clock = clock,
                                      .store = std::make_shared<GlucoseHistoryStore>(world.parts())});
    }

    /// Lets engine and workers do all that they can without time passing.
    void settle()
    {
        for (int round = 0; round < 20; ++round) {
            clock.runReady();
            workers.restart();
            workers.poll();
        }
        clock.runReady();
    }

    void follow(std::string_view user)
    {
        coordinator->follow(scopeOf(user));
        settle();
    }
    void save(std::vector<GlucoseReading> readings)
    {
        coordinator->save(coordinator->mark(), std::move(readings), clock.now());
        settle();
    }
    std::vector<GlucoseReading> restored()
    {
        Running<std::vector<GlucoseReading>> restoring{io.get_executor(),
                                                       coordinator->restore(coordinator->mark())};
        settle();
        return restoring.ended() ? restoring.result() : std::vector<GlucoseReading>{};
    }

    /// Another process on the same disk.
    void elsewhere(std::string_view user, const std::function<bool(GlucoseHistoryStore&)>& work)
    {
        GlucoseHistoryStore other{world.parts()};
        ASSERT_TRUE(other.attach(scopeOf(user)));
        ASSERT_TRUE(work(other));
    }
    void enable(std::string_view user)
    {
        elsewhere(user, [this](auto& store) {
            return store.enable(90, currentConsentVersion, clock.now()).has_value();
        });
    }
    Values onDisk(std::string_view user)
    {
        GlucoseHistoryStore other{world.parts()};
        EXPECT_TRUE(other.attach(scopeOf(user)));
        const auto all = other.snapshot(dateFromUnix(0), dateFromUnix(4e9));
        return all ? valuesOf(all->readings) : Values{};
    }
    void fail(bool fails)
    {
        world.plan.kind = fails ? FaultPlan::Kind::error : FaultPlan::Kind::none;
        world.plan.at = world.plan.calls + 1;
        world.plan.forEver = true;
        world.plan.error = std::make_error_code(std::errc::no_space_on_device);
    }

    /// The secret store alone.
    void failSecrets()
    {
        fail(true);
        world.plan.error = {};
        world.plan.status = keychainStatus::notAvailable;
    }

    asio::io_context io{1};
    asio::io_context workers{1};
    FakeClock clock{io, storyNow};
    HistoryWorld world;
    std::unique_ptr<HistoryCoordinator> coordinator;
};

}  // namespace

TEST_F(HistoryCoordinatorTest, savesWhatIsNewAndWritesNothingForTheRest)
{
    enable("ada");
    follow("ada");
    EXPECT_TRUE(coordinator->status().configuration.isEnabled);
    // The answer of a service reaches back to before the person said yes.
    std::vector<GlucoseReading> known{readingAt(storyNow - oneHour), readingAt(storyNow, 101)};
    save(known);
    EXPECT_EQ(onDisk("ada").size(), 1u);
    const int calls = world.plan.calls;
    save(known);
    EXPECT_EQ(world.plan.calls, calls) << "nothing is new";
    known.back().mgdL = 102;
    known.push_back(readingAt(storyNow + Seconds{300}, 103));
    save(known);
    EXPECT_EQ(onDisk("ada"), valuesOf({{known[1], {}}, {known[2], {}}}));

    // What was saved is there at the next start, and need not be saved again.
    make();
    coordinator->follow(scopeOf("ada"));
    EXPECT_EQ(restored(), (std::vector<GlucoseReading>{known[1], known[2]}));
    const int restarted = world.plan.calls;
    save({known[1], known[2]});
    EXPECT_EQ(world.plan.calls, restarted);
}

TEST_F(HistoryCoordinatorTest, whatCouldNotBeSavedIsSavedWithTheNextReadings)
{
    enable("ada");
    follow("ada");
    std::vector<std::optional<GlucoseHistoryError>> problems;
    const auto observing =
        coordinator->observe([&](const GlucoseHistoryStatus& status) { problems.push_back(status.problem); });
    fail(true);
    save({readingAt(storyNow, 101)});
    save({readingAt(storyNow, 111), readingAt(storyNow + Seconds{300}, 102)});
    EXPECT_EQ(coordinator->status().problem, GlucoseHistoryError::storageFailure);
    fail(false);
    EXPECT_TRUE(onDisk("ada").empty());
    save({readingAt(storyNow + Seconds{600}, 103)});
    EXPECT_EQ(onDisk("ada"), valuesOf({{readingAt(storyNow, 111), {}},
                                       {readingAt(storyNow + Seconds{300}, 102), {}},
                                       {readingAt(storyNow + Seconds{600}, 103), {}}}));
    EXPECT_EQ(problems.front(), GlucoseHistoryError::storageFailure);
    EXPECT_EQ(problems.back(), std::nullopt);
}

TEST_F(HistoryCoordinatorTest, whatWaitsIsKeptWhenTheSameAccountIsFollowedAgain)
{
    enable("ada");
    follow("ada");
    fail(true);
    save({readingAt(storyNow, 101)});
    const Date fetched = clock.now();
    clock.advance(oneHour);
    save({readingAt(storyNow, 101)});
    coordinator->save(coordinator->mark(), {readingAt(storyNow + Seconds{300}, 102)}, clock.now());
    clock.runReady();  // Its worker has not had its turn when the account is followed again.
    follow("ada");
    fail(false);
    follow("ada");
    EXPECT_EQ(onDisk("ada"),
              valuesOf({{readingAt(storyNow, 101), {}}, {readingAt(storyNow + Seconds{300}, 102), {}}}));
    GlucoseHistoryStore other{world.parts()};
    ASSERT_TRUE(other.attach(scopeOf("ada")));
    EXPECT_EQ(other.snapshot(storyNow, storyNow + Seconds{1})->readings.front().fetchedAt, fetched)
        << "the first fetch that gave it";
}

TEST_F(HistoryCoordinatorTest, aDiskThatIsAwayAtTheStartIsFoundLater)
{
    enable("ada");
    fail(true);
    follow("ada");
    save({readingAt(storyNow, 101)});
    EXPECT_TRUE(coordinator->status().problem);
    fail(false);
    save({readingAt(storyNow + Seconds{300}, 102)});
    EXPECT_FALSE(coordinator->status().problem);
    EXPECT_EQ(onDisk("ada").size(), 2u);
}

TEST_F(HistoryCoordinatorTest, nothingLandsWithAnotherAccountOrAfterADeletion)
{
    enable("ada");
    enable("bob");
    follow("ada");
    const auto mark = coordinator->mark();
    // Readings of the former account that come late, also while the change is under way.
    coordinator->save(mark, {readingAt(storyNow, 101)}, clock.now());
    coordinator->follow(scopeOf("bob"));
    coordinator->save(mark, {readingAt(storyNow, 102)}, clock.now());
    coordinator->save(coordinator->mark(), {readingAt(storyNow, 201)}, clock.now());
    settle();
    coordinator->save(mark, {readingAt(storyNow, 103)}, clock.now());
    settle();
    EXPECT_EQ(onDisk("bob"), valuesOf({{readingAt(storyNow, 201), {}}}));
    EXPECT_TRUE(onDisk("ada").empty()) << "a save that waited is dropped whole";

    elsewhere("bob", [this](auto& store) { return store.deleteAttached(clock.now()).has_value(); });
    save({readingAt(storyNow + Seconds{300}, 202)});
    EXPECT_TRUE(onDisk("bob").empty());
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);
    // Saving that is switched on again elsewhere begins with the next readings.
    clock.advance(oneHour);
    enable("bob");
    save({readingAt(storyNow + Seconds{300}, 202), readingAt(clock.now(), 203)});
    EXPECT_EQ(onDisk("bob"), valuesOf({{readingAt(clock.now(), 203), {}}}));
    coordinator->follow({});
    settle();
    EXPECT_FALSE(coordinator->status().scope);
    save({readingAt(clock.now(), 204)});
    EXPECT_TRUE(restored().empty());
}

TEST_F(HistoryCoordinatorTest, aSecretStoreThatHangsHoldsUpNothing)
{
    enable("ada");
    follow("ada");
    save({readingAt(storyNow, 101)});
    // From here on the workers do not come back.
    Running<std::vector<GlucoseReading>> restoring{io.get_executor(),
                                                   coordinator->restore(coordinator->mark())};
    clock.advance(Seconds{2.9});
    EXPECT_FALSE(restoring.ended());
    clock.advance(Seconds{0.2});
    EXPECT_FALSE(restoring.ended());
    // A week of readings waits, then all of them are saved, in one go.
    std::vector<GlucoseReading> week;
    for (int i = 0; i < 2016; ++i) {
        week.push_back(readingAt(storyNow + Seconds{300.0 * i}, 100 + i % 100));
        coordinator->save(coordinator->mark(), {week.back()}, week.back().date);
        clock.advance(Seconds{300});
    }
    EXPECT_EQ(onDisk("ada").size(), 1u);
    settle();
    EXPECT_EQ(onDisk("ada").size(), week.size());
    clock.advance(Seconds{60});
    settle();
    ASSERT_TRUE(restoring.ended()) << "saving works again";
    EXPECT_EQ(restoring.result().size(), 287u) << "of the last 24 hours";
    // The end: what waits is dropped, nothing is touched any more.
    save({readingAt(clock.now(), 110)});
    coordinator->save(coordinator->mark(), {readingAt(clock.now() + Seconds{300}, 111)}, clock.now());
    clock.runReady();
    coordinator.reset();
    settle();
    EXPECT_EQ(onDisk("ada").size(), week.size() + 1);
}

TEST_F(HistoryCoordinatorTest, oldReadingsGoOnceADayAndABrokenOffDeletionIsEnded)
{
    enable("ada");
    elsewhere("ada", [this](auto& store) {
        return store.setRetention(30, clock.now()).has_value() &&
               store
                   .import({readingAt(storyNow - 30 * dayLength + oneHour), readingAt(storyNow + dayLength)},
                           clock.now(), false)
                   .has_value();
    });
    follow("ada");
    EXPECT_EQ(onDisk("ada").size(), 2u);
    clock.advance(dayLength - oneHour);
    settle();
    EXPECT_EQ(onDisk("ada").size(), 2u);
    clock.advance(oneHour);
    settle();
    EXPECT_EQ(onDisk("ada").size(), 1u);

    // The program ended within a deletion of everything.
    enable("bob");
    GlucoseHistoryStore other{world.parts()};
    ASSERT_TRUE(other.attach(scopeOf("bob")));
    failSecrets();
    EXPECT_EQ(other.deleteAll(clock.now()).error(), GlucoseHistoryError::deletionIncomplete);
    make();
    follow("ada");
    EXPECT_EQ(coordinator->status().problem, GlucoseHistoryError::deletionIncomplete);
    fail(false);
    save({readingAt(clock.now())});
    EXPECT_FALSE(coordinator->status().problem);
    EXPECT_TRUE(world.keychain.items.empty());
}

TEST_F(HistoryCoordinatorTest, aDeletionThatAStartCouldNotEndIsToldAndEndedLater)
{
    enable("bob");
    GlucoseHistoryStore other{world.parts()};
    ASSERT_TRUE(other.attach(scopeOf("bob")));
    failSecrets();
    EXPECT_EQ(other.deleteAll(clock.now()).error(), GlucoseHistoryError::deletionIncomplete);
    make();
    fail(true);
    follow("ada");
    fail(false);
    GlucoseHistoryStore later{world.parts()};
    ASSERT_TRUE(later.attach(scopeOf("bob")));
    EXPECT_EQ(later.status().problem, GlucoseHistoryError::deletionIncomplete) << "without another try";
    EXPECT_FALSE(world.keychain.items.empty());
    save({readingAt(clock.now())});
    EXPECT_TRUE(world.keychain.items.empty());
    EXPECT_FALSE(coordinator->status().problem);
    EXPECT_TRUE(later.reload());
    EXPECT_EQ(later.status().problem, std::nullopt);
}

TEST_F(HistoryCoordinatorTest, handsOutWhatIsSavedWithoutWaitingAndTellsThatTheReportOpened)
{
    using Snapshot = std::expected<GlucoseHistorySnapshot, GlucoseHistoryError>;
    const auto ask = [this] {
        return std::make_unique<Running<Snapshot>>(
            io.get_executor(), coordinator->snapshot(storyNow - oneHour, storyNow + oneHour));
    };
    auto nobody = ask();
    settle();
    EXPECT_EQ(nobody->result().error(), GlucoseHistoryError::accountRequired);

    enable("ada");
    follow("ada");
    save({readingAt(storyNow)});
    auto asked = ask();
    clock.runReady();
    EXPECT_FALSE(asked->ended()) << "the worker has not had its turn";
    settle();
    EXPECT_EQ(valuesOf(asked->result()->readings), onDisk("ada"));

    int told = 0;
    const auto observing = coordinator->observe([&](const GlucoseHistoryStatus&) { ++told; });
    using Opening = Running<std::expected<void, GlucoseHistoryError>>;
    const Opening late{io.get_executor(), coordinator->setInsightsUnlocked(scopeOf("bob"))};
    settle();
    EXPECT_TRUE(late.result());
    EXPECT_FALSE(coordinator->status().configuration.insightsUnlockedAt) << "it was another account's";
    const Opening opening{io.get_executor(), coordinator->setInsightsUnlocked(scopeOf("ada"))};
    settle();
    EXPECT_TRUE(opening.result());
    EXPECT_EQ(coordinator->status().configuration.insightsUnlockedAt, clock.now());
    EXPECT_EQ(told, 1);

    auto left = ask();
    coordinator.reset();
    settle();
    EXPECT_TRUE(left->ended()) << "who asked may outlive who answers";
}

}  // namespace tidewell

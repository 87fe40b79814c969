#include "history/HistoryCoordinator.h"

#include <gtest/gtest.h>

#include <random>

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

    using Changed = HistoryCoordinator::Changed;
    /// What a change came to.
    Changed changed(asio::awaitable<Changed> change)
    {
        const Running<Changed> changing{io.get_executor(), std::move(change)};
        settle();
        return changing.ended() ? changing.result() : std::unexpected{GlucoseHistoryError::storageFailure};
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

    asio::io_context workers{1};  ///< Outlives what waits in the other one.
    asio::io_context io{1};
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

TEST_F(HistoryCoordinatorTest, whatThePersonChangesIsInForceAtOnce)
{
    using enum GlucoseHistoryError;
    EXPECT_EQ(changed(coordinator->enable(90, 1)).error(), accountRequired);
    EXPECT_EQ(changed(coordinator->pause()).error(), accountRequired);
    coordinator->follow(scopeOf("ada"));  // It has not been attached when saving is switched on.
    EXPECT_EQ(changed(coordinator->enable(60, 1)).error(), invalidRetention);
    EXPECT_EQ(coordinator->status(), GlucoseHistoryStatus{.scope = scopeOf("ada")}) << "whoever asked knows";
    coordinator->follow(scopeOf("ada"));
    const auto enabled = changed(coordinator->enable(30, currentConsentVersion));
    ASSERT_TRUE(enabled);
    EXPECT_TRUE(enabled->configuration.isEnabled);
    EXPECT_EQ(*enabled, coordinator->status());

    // The next readings are saved, those of before are not.
    save({readingAt(storyNow - oneHour), readingAt(storyNow, 101)});
    EXPECT_EQ(onDisk("ada"), valuesOf({{readingAt(storyNow, 101), {}}}));
    // One that waits for its worker when saving is switched off, and on again: it was fetched before.
    coordinator->save(coordinator->mark(), {readingAt(storyNow + Seconds{1}, 102)}, clock.now());
    const auto pausing = coordinator->pause();
    settle();
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);
    clock.advance(oneHour);
    save({readingAt(clock.now(), 103)});
    ASSERT_TRUE(changed(coordinator->enable(90, currentConsentVersion)));
    save({readingAt(storyNow + Seconds{2}, 104), readingAt(clock.now(), 105)});
    EXPECT_EQ(onDisk("ada"), valuesOf({{readingAt(storyNow, 101), {}}, {readingAt(clock.now(), 105), {}}}));

    clock.advance(31 * dayLength);
    save({readingAt(clock.now(), 106)});
    EXPECT_EQ(changed(coordinator->setRetention(31)).error(), invalidRetention);
    EXPECT_EQ(onDisk("ada").size(), 3U);
    EXPECT_EQ(changed(coordinator->setRetention(30))->configuration.retentionDays, 30);
    EXPECT_EQ(onDisk("ada").size(), 1U);

    enable("bob");
    ASSERT_TRUE(changed(coordinator->deleteHistory(false)));
    EXPECT_TRUE(onDisk("ada").empty());
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);
    EXPECT_EQ(world.keychain.items.size(), 1U) << "the other account's";
    coordinator->follow({});
    EXPECT_EQ(changed(coordinator->deleteHistory(false)).error(), accountRequired);
    ASSERT_TRUE(changed(coordinator->deleteHistory(true))) << "needs nobody to be signed in";
    EXPECT_TRUE(world.keychain.items.empty());
}

TEST_F(HistoryCoordinatorTest, aChangeThatFailsSaysWhyAndMayBeTriedAgain)
{
    using enum GlucoseHistoryError;
    follow("ada");
    failSecrets();
    EXPECT_EQ(changed(coordinator->enable(90, currentConsentVersion)).error(), keychainFailure);
    EXPECT_EQ(coordinator->status(), GlucoseHistoryStatus{.scope = scopeOf("ada")});
    fail(true);
    EXPECT_EQ(changed(coordinator->enable(90, currentConsentVersion)).error(), storageFailure);
    fail(false);
    ASSERT_TRUE(changed(coordinator->enable(90, currentConsentVersion)));
    save({readingAt(storyNow)});
    fail(true);
    EXPECT_EQ(changed(coordinator->deleteHistory(false)).error(), storageFailure);
    fail(false);
    EXPECT_EQ(onDisk("ada").size(), 1U) << "nothing was begun";
    save({readingAt(storyNow + Seconds{300})});
    EXPECT_EQ(onDisk("ada").size(), 2U) << "and saving is on";
    failSecrets();
    EXPECT_EQ(changed(coordinator->deleteHistory(false)).error(), deletionIncomplete);
    EXPECT_EQ(coordinator->status().problem, deletionIncomplete);
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);
    fail(false);
    ASSERT_TRUE(changed(coordinator->deleteHistory(false)));
    EXPECT_EQ(coordinator->status().problem, std::nullopt);

    // A manifest that is damaged: deleting everything is the way out, and saving works from there on.
    world.files.put(world.root / "manifest.json", "{");
    follow("bob");
    EXPECT_EQ(changed(coordinator->enable(90, currentConsentVersion)).error(), invalidConfiguration);
    EXPECT_EQ(changed(coordinator->deleteHistory(false)).error(), invalidConfiguration);
    EXPECT_EQ(coordinator->status().problem, invalidConfiguration);
    ASSERT_TRUE(changed(coordinator->deleteHistory(true)));
    EXPECT_EQ(coordinator->status(), GlucoseHistoryStatus{.scope = scopeOf("bob")});
    ASSERT_TRUE(changed(coordinator->enable(90, currentConsentVersion)));
    save({readingAt(storyNow)});
    EXPECT_EQ(onDisk("bob").size(), 1U);
}

TEST_F(HistoryCoordinatorTest, aChangeThatNobodyWaitsForEndsAllTheSame)
{
    follow("ada");
    Running<Changed> enabling{io.get_executor(), coordinator->enable(90, currentConsentVersion)};
    clock.runReady();
    EXPECT_FALSE(enabling.ended()) << "the worker has not had its turn";
    enabling.cancel();
    clock.runReady();
    EXPECT_TRUE(enabling.cancelled());
    settle();
    EXPECT_TRUE(coordinator->status().configuration.isEnabled);

    // What was read before a change may come after it.
    const Running<std::vector<GlucoseReading>> restoring{io.get_executor(),
                                                         coordinator->restore(coordinator->mark())};
    clock.runReady();
    const auto pausing = coordinator->pause();
    settle();
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);
    ASSERT_TRUE(changed(coordinator->enable(90, currentConsentVersion)));

    // Another account is followed before the worker had its turn: the change was meant for the first one.
    const auto never = coordinator->pause();
    coordinator->follow(scopeOf("bob"));
    const Running<Changed> other{io.get_executor(), coordinator->enable(30, currentConsentVersion)};
    settle();
    EXPECT_EQ(other.result()->scope, scopeOf("bob"));
    EXPECT_EQ(*other.result(), coordinator->status());
    follow("ada");
    EXPECT_FALSE(coordinator->status().configuration.isEnabled);

    const Running<Changed> last{io.get_executor(), coordinator->deleteHistory(true)};
    coordinator.reset();
    settle();
    EXPECT_TRUE(last.result()) << "whoever asked may outlive who answers";
    EXPECT_TRUE(world.keychain.items.empty());
}

TEST_F(HistoryCoordinatorTest, changesReadingsAndAccountsInAnyOrderLeaveWhatWasAskedForLast)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random{seed};
        std::map<std::string, bool> isEnabled{{"ada", false}, {"bob", false}};
        std::string user = "ada";
        follow(user);
        ASSERT_TRUE(changed(coordinator->deleteHistory(true)));
        std::vector<Running<Changed>> changes;
        std::vector<Running<std::vector<GlucoseReading>>> restores;
        const auto begin = [&](asio::awaitable<Changed> change, bool enables) {
            changes.emplace_back(io.get_executor(), std::move(change));
            isEnabled[user] = enables;
        };
        for (int step = 0; step < 40; ++step) {
            switch (random() % 9) {
            case 0: user = user == "ada" ? "bob" : "ada"; [[fallthrough]];
            case 1: coordinator->follow(scopeOf(user)); break;
            case 2: begin(coordinator->enable(90, currentConsentVersion), true); break;
            case 3: begin(coordinator->pause(), false); break;
            case 4: begin(coordinator->deleteHistory(false), false); break;
            case 5:
                coordinator->save(coordinator->mark(), {readingAt(clock.now())}, clock.now());
                clock.advance(Seconds{1});
                break;
            case 6:
                restores.emplace_back(io.get_executor(), coordinator->restore(coordinator->mark()));
                break;
            case 7:
                io.restart();
                io.poll_one();
                break;
            case 8:
                workers.restart();
                workers.poll_one();
                break;
            }
        }
        settle();
        for (const auto& change : changes)
            ASSERT_TRUE(change.ended() && change.result());
        EXPECT_EQ(coordinator->status().scope, scopeOf(user));
        EXPECT_EQ(coordinator->status().configuration.isEnabled, isEnabled[user]);
        EXPECT_EQ(coordinator->status().problem, std::nullopt);
        save({readingAt(clock.now())});
        EXPECT_EQ(onDisk(user).contains(static_cast<std::int64_t>(unixSeconds(clock.now()))),
                  isEnabled[user]);
        user = user == "ada" ? "bob" : "ada";
        follow(user);
        EXPECT_EQ(coordinator->status().configuration.isEnabled, isEnabled[user]);
    }
}

}  // namespace tidewell

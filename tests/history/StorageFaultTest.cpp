#include <functional>
#include <iterator>

#include "HistoryWorld.h"

namespace tidewell {

// Makes each single call to files and secrets fail, in each operation, in each way, and looks at what is
// left.

namespace {

using enum GlucoseHistoryError;
using Outcome = std::expected<void, GlucoseHistoryError>;
using Errors = std::set<GlucoseHistoryError>;

const HistoryScopeID anna = scopeOf("anna");
const HistoryScopeID bert = scopeOf("bert");
const std::vector<HistoryScopeID> everybody{anna, bert};

/// An operation on a disk that was filled before.
struct Scenario {
    std::string name;
    std::function<void(HistoryWorld&)> prepare;
    std::function<Outcome(GlucoseHistoryStore&)> operate;
    /// Makes what is there before into what has to be there afterwards.
    std::function<void(HistoryState&)> change;
    Errors ofFiles{storageFailure};
    Errors ofSecrets{keychainFailure};
    bool startsUp = false;  ///< The operation includes recover() and attach().
    /// Readings of a scope go together or not at all, by the time of the next start.
    bool deletes = false;
};

template <class T>
Outcome outcomeOf(const std::expected<T, GlucoseHistoryError>& result)
{
    if (!result)
        return std::unexpected{result.error()};
    return {};
}

/// An operation that worked, while something beside it did not: the person is told that.
Outcome told(const GlucoseHistoryStore& store, Outcome outcome)
{
    if (outcome && store.status().problem)
        return std::unexpected{*store.status().problem};
    return outcome;
}

void fill(GlucoseHistoryStore& store, const HistoryScopeID& scope, std::initializer_list<double> daysAgo)
{
    ASSERT_TRUE(store.attach(scope));
    ASSERT_TRUE(store.enable(90, 1, storyNow - 80 * dayLength));
    for (const double days : daysAgo) {
        const Date date = storyNow - days * dayLength;
        ASSERT_TRUE(store.save(*store.collectionToken(), {readingAt(date - oneHour), readingAt(date)}, date));
    }
    ASSERT_TRUE(store.setInsightsUnlocked(storyNow - dayLength));
}

/// Two accounts with some days each, and what a killed write leaves. Of 30 days ago, one reading is just
/// within the shorter retention, and one is not.
void fillTwo(HistoryWorld& world)
{
    GlucoseHistoryStore store{world.parts()};
    fill(store, anna, {40, 30, 1, 0});
    fill(store, bert, {40, 2, 0});
    ASSERT_TRUE(store.attach(anna));
    constexpr std::string_view stray = ".tidewell-history-6c2d1b9e-5f0a-4d3c-8b1e-0123456789ab.tmp";
    world.files.put(world.root / stray, "half a mani");
    world.files.put(world.root / "accounts" / anna.text() / stray, "half a day");
}

/// What a change of the retention leaves when it ends before it has removed anything.
void shortenRetention(HistoryWorld& world, const HistoryScopeID& scope)
{
    const auto path = world.root / "accounts" / scope.text() / "configuration.json";
    auto configuration = decodeHistoryConfiguration(world.files.files().at(path.string()));
    ASSERT_TRUE(configuration);
    configuration->retentionDays = 30;
    world.files.put(path, encode(*configuration));
}

void fillLegacy(HistoryWorld& world)
{
    const std::string keyBytes(32, 'k');
    world.keychain.items[{std::string{historyKeychainService}, std::string{legacyHistoryKeyAccount}}] =
        keyBytes;
    for (const double daysAgo : {20.0, 1.0}) {
        const Date date = storyNow - daysAgo * dayLength - 2 * oneHour;
        HistoryDay day{.accountScope = anna};
        day.readings.push_back({readingAt(date, 70), date});
        std::string json = encode(day);
        json.replace(json.find(anna.text()), anna.text().size(), "");
        const std::string name = historyDayFileName(historyDayIndex(date));
        world.files.put(world.root / name, *sealHistoryFile(SecretText{keyBytes}, name, json, world.random));
    }
    GlucoseHistoryConfiguration configuration{
        .isEnabled = true, .retentionDays = 30, .consentVersion = 1, .hasPreviouslyEnabled = true};
    configuration.collectionStartedAt = storyNow - 20 * dayLength;
    world.files.put(world.root / "configuration.json", encode(configuration));
}

Outcome saveThree(GlucoseHistoryStore& store)
{
    const auto token = store.collectionToken();
    if (!token)
        return std::unexpected{invalidConfiguration};
    return outcomeOf(store.save(*token,
                                {readingAt(storyNow - 25 * oneHour, 111), readingAt(storyNow, 112),
                                 readingAt(storyNow + 24 * oneHour, 113)},
                                storyNow));
}

Outcome startUp(GlucoseHistoryStore& store)
{
    Outcome outcome = store.recover(storyNow);
    const auto attached = store.attach(anna);
    if (outcome)
        outcome = outcomeOf(attached);
    const auto all = store.snapshot(dateFromUnix(0), dateFromUnix(4e9));
    if (outcome)
        outcome = outcomeOf(all);
    return outcome;
}

void addThree(Values& values)
{
    values[static_cast<std::int64_t>(unixSeconds(storyNow - 25 * oneHour))] = 111;
    values[static_cast<std::int64_t>(unixSeconds(storyNow))] = 112;
    values[static_cast<std::int64_t>(unixSeconds(storyNow + 24 * oneHour))] = 113;
}

void removeBefore(Values& values, Date date)
{
    std::erase_if(values,
                  [&](const auto& value) { return static_cast<double>(value.first) < unixSeconds(date); });
}

void makeDeleted(ScopeState& scope)
{
    scope.values.clear();
    scope.hasKey = false;
    scope.configuration.isEnabled = false;
    scope.configuration.collectionStartedAt.reset();
    scope.configuration.insightsUnlockedAt.reset();
    scope.configuration.collectionIntervalStart.reset();
    scope.configuration.collectionCutoff = storyNow;
}

void makeInherited(HistoryState& state)
{
    state.manifest =
        GlucoseHistoryManifest{.scopes = {anna}, .attachedScopeID = anna, .legacyMigrationScope = anna};
    state.hasLegacy = false;
}

void makeMerged(ScopeState& scope)
{
    scope.hasKey = true;
    scope.configuration.isEnabled = true;
    scope.configuration.retentionDays = 30;
    scope.configuration.consentVersion = 1;
    scope.configuration.hasPreviouslyEnabled = true;
    scope.configuration.collectionStartedAt = storyNow - 20 * dayLength;
    for (const double daysAgo : {20.0, 1.0})
        scope.values[static_cast<std::int64_t>(unixSeconds(storyNow - daysAgo * dayLength - 2 * oneHour))] =
            70;
}

std::vector<Scenario> scenarios()
{
    const Errors deletion{storageFailure, deletionIncomplete};
    const Errors reading{storageFailure, unreadableHistory};  // The latter of one day among others.
    std::vector<Scenario> all;
    all.push_back(
        {.name = "save", .prepare = fillTwo, .operate = saveThree, .change = [](HistoryState& state) {
             addThree(state.scopes[anna].values);
         }});
    all.push_back({.name = "first save",
                   .prepare =
                       [](HistoryWorld& world) {
                           GlucoseHistoryStore store{world.parts()};
                           ASSERT_TRUE(store.attach(anna));
                           ASSERT_TRUE(store.enable(30, 1, storyNow - 30 * dayLength));
                       },
                   .operate = saveThree,
                   .change =
                       [](HistoryState& state) {
                           addThree(state.scopes[anna].values);
                           state.scopes[anna].configuration.collectionStartedAt = storyNow;
                       }});
    all.push_back(
        {.name = "first enabling",
         .prepare = [](HistoryWorld&) {},
         .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.enable(30, 1, storyNow)); },
         .change =
             [](HistoryState& state) {
                 state.manifest = GlucoseHistoryManifest{.scopes = {anna}, .attachedScopeID = anna};
                 state.scopes[anna].hasKey = true;
                 state.scopes[anna].configuration = {.isEnabled = true,
                                                     .retentionDays = 30,
                                                     .consentVersion = 1,
                                                     .collectionCutoff = storyNow,
                                                     .hasPreviouslyEnabled = true,
                                                     .collectionIntervalStart = storyNow};
             }});
    all.push_back(
        {.name = "resume with a shorter retention",
         .prepare =
             [](HistoryWorld& world) {
                 fillTwo(world);
                 GlucoseHistoryStore store{world.parts()};
                 ASSERT_TRUE(store.attach(anna));
                 ASSERT_TRUE(store.pause());
             },
         .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.enable(30, 2, storyNow)); },
         .change =
             [](HistoryState& state) {
                 auto& scope = state.scopes[anna];
                 removeBefore(scope.values, storyNow - 30 * dayLength);
                 scope.configuration.isEnabled = true;
                 scope.configuration.retentionDays = 30;
                 scope.configuration.consentVersion = 2;
                 scope.configuration.collectionCutoff = storyNow;
                 scope.configuration.collectionIntervalStart = storyNow;
             }});
    all.push_back({.name = "pause",
                   .prepare = fillTwo,
                   .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.pause()); },
                   .change =
                       [](HistoryState& state) {
                           state.scopes[anna].configuration.isEnabled = false;
                           state.scopes[anna].configuration.collectionIntervalStart.reset();
                       }});
    all.push_back(
        {.name = "shorter retention",
         .prepare = fillTwo,
         .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.setRetention(30, storyNow)); },
         .change =
             [](HistoryState& state) {
                 removeBefore(state.scopes[anna].values, storyNow - 30 * dayLength);
                 state.scopes[anna].configuration.retentionDays = 30;
             }});
    all.push_back({.name = "daily trim",
                   .prepare =
                       [](HistoryWorld& world) {
                           fillTwo(world);
                           shortenRetention(world, bert);
                           shortenRetention(world, anna);  // As if killed before anything was removed.
                       },
                   .operate = [](GlucoseHistoryStore& store) { return store.trim(storyNow); },
                   .change =
                       [](HistoryState& state) {
                           removeBefore(state.scopes[anna].values, storyNow - 30 * dayLength);
                           removeBefore(state.scopes[bert].values, storyNow - 30 * dayLength);
                       }});
    all.push_back({.name = "load",
                   .prepare = fillTwo,
                   .operate =
                       [](GlucoseHistoryStore& store) {
                           return outcomeOf(store.snapshot(dateFromUnix(0), dateFromUnix(4e9)));
                       },
                   .change = [](HistoryState&) {},
                   .ofFiles = reading});
    all.push_back({.name = "start",
                   .prepare = fillTwo,
                   .operate = startUp,
                   .change = [](HistoryState& state) { state.manifest->attachedScopeID = anna; },
                   .ofFiles = reading,
                   .startsUp = true});
    all.push_back({.name = "another account",
                   .prepare = fillTwo,
                   .operate =
                       [](GlucoseHistoryStore& store) {
                           const auto attached = outcomeOf(store.attach(scopeOf("carla")));
                           return attached;
                       },
                   .change =
                       [](HistoryState& state) {
                           state.manifest->scopes.push_back(scopeOf("carla"));
                           state.manifest->attachedScopeID = scopeOf("carla");
                       }});
    all.push_back({.name = "import",
                   .prepare = fillTwo,
                   .operate =
                       [](GlucoseHistoryStore& store) {
                           return outcomeOf(store.import(
                               {readingAt(storyNow - 85 * dayLength, 70),
                                readingAt(storyNow - 200 * dayLength, 70), readingAt(storyNow, 70)},
                               storyNow, false));
                       },
                   .change =
                       [](HistoryState& state) {
                           const Date oldest = storyNow - 85 * dayLength;
                           state.scopes[anna].values[static_cast<std::int64_t>(unixSeconds(oldest))] = 70;
                           state.scopes[anna].configuration.collectionStartedAt = oldest;
                       }});
    all.push_back(
        {.name = "deletion",
         .prepare = fillTwo,
         .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.deleteAttached(storyNow)); },
         .change = [](HistoryState& state) { makeDeleted(state.scopes[anna]); },
         .ofFiles = deletion,
         .ofSecrets = {deletionIncomplete},
         .deletes = true});
    all.push_back({.name = "deletion of all",
                   .prepare =
                       [](HistoryWorld& world) {
                           fillTwo(world);
                           fillLegacy(world);
                       },
                   .operate = [](GlucoseHistoryStore& store) { return outcomeOf(store.deleteAll(storyNow)); },
                   .change =
                       [](HistoryState& state) {
                           makeDeleted(state.scopes[anna]);
                           makeDeleted(state.scopes[bert]);
                           state.hasLegacy = false;
                           state.manifest->legacyMigrationScope = anna;
                       },
                   .ofFiles = deletion,
                   .ofSecrets = {deletionIncomplete},
                   .deletes = true});
    all.push_back({.name = "deletion that was interrupted",
                   .prepare =
                       [](HistoryWorld& world) {
                           fillTwo(world);
                           world.plan = {.kind = FaultPlan::Kind::error,
                                         .at = 1,
                                         .forEver = true,
                                         .status = keychainStatus::notAvailable};
                           GlucoseHistoryStore store{world.parts()};
                           ASSERT_TRUE(store.attach(anna));
                           ASSERT_EQ(outcomeOf(store.deleteAttached(storyNow)),
                                     Outcome{std::unexpected{deletionIncomplete}});
                           world.plan = {};
                       },
                   .operate = startUp,
                   .change = [](HistoryState&) {},
                   .ofFiles = {storageFailure, deletionIncomplete, unreadableHistory},
                   .ofSecrets = {deletionIncomplete},
                   .startsUp = true,
                   .deletes = true});
    all.push_back({.name = "migration",
                   .prepare = fillLegacy,
                   .operate = startUp,
                   .change =
                       [](HistoryState& state) {
                           makeInherited(state);
                           makeMerged(state.scopes[anna]);
                       },
                   .ofFiles = reading,
                   .startsUp = true});
    return all;
}

/// A copy of the prepared world with a process in it that has started, and the faults to come.
struct Run {
    Run(const HistoryWorld& prepared, const Scenario& scenario, const FaultPlan& plan)
        : world{prepared, Survival::everything, 7}
    {
        store.emplace(world.parts());
        if (!scenario.startsUp)
            EXPECT_TRUE(store->attach(anna));
        world.plan = plan;
    }
    /// Empty when the power went.
    std::optional<Outcome> operate(const Scenario& scenario)
    {
        try {
            return told(*store, scenario.operate(*store));
        } catch (const PowerCut&) {
            return std::nullopt;
        }
    }

    HistoryWorld world;
    std::optional<GlucoseHistoryStore> store{};
};

/// One scenario with what it starts from and what it comes to without faults.
struct Sweep {
    explicit Sweep(Scenario swept) : scenario{std::move(swept)}
    {
        scenario.prepare(prepared);
        // What was acknowledged so far has to survive whatever comes, so only that is there.
        disk.emplace(prepared, Survival::synced, 2);
        filesBefore = disk->files.files();
        before = stateOf(*disk, Survival::everything, storyNow, everybody);
        after = before;
        scenario.change(after);
        good.emplace(*disk, scenario, FaultPlan{});
        EXPECT_EQ(good->operate(scenario), Outcome{});
        expectState(good->world, after, "without a fault");
    }

    /// A success is there after a power cut too.
    void expectState(const HistoryWorld& world, const HistoryState& expected, std::string_view when) const
    {
        const HistoryState found = stateOf(world, Survival::synced, storyNow, everybody);
        for (const HistoryScopeID& scope : everybody) {
            const auto& is = found.scopes.at(scope);
            const auto& shouldBe = expected.scopes.at(scope);
            EXPECT_EQ(is.values, shouldBe.values) << when;
            EXPECT_EQ(encode(is.configuration), encode(shouldBe.configuration)) << when;
            EXPECT_EQ(is.hasKey, shouldBe.hasKey) << when;
        }
        EXPECT_EQ(encode(found.manifest.value_or(GlucoseHistoryManifest{})),
                  encode(expected.manifest.value_or(GlucoseHistoryManifest{})))
            << when;
        EXPECT_EQ(found.hasLegacy, expected.hasLegacy) << when;
    }

    /// After a fault: no reading is lost that the operation was not asked to remove.
    void expectNothingLost(const HistoryWorld& world, Survival survival) const
    {
        const HistoryState found = stateOf(world, survival, storyNow, everybody);
        for (const HistoryScopeID& scope : everybody) {
            const Values& values = found.scopes.at(scope).values;
            const Values& old = before.scopes.at(scope).values;
            const Values& wanted = after.scopes.at(scope).values;
            if (scenario.deletes) {
                EXPECT_TRUE(values == old || values == wanted) << "half a deletion";
                continue;
            }
            for (const auto& value : old)
                EXPECT_TRUE(values.contains(value.first) || !wanted.contains(value.first)) << "lost";
            for (const auto& value : values)
                EXPECT_TRUE(old.contains(value.first) || wanted.contains(value.first)) << "from nowhere";
        }
    }

    /// What a file says: a day file's text, since two runs seal the same text differently.
    std::string meaning(const HistoryWorld& world, const std::string& path, const std::string& bytes) const
    {
        const std::filesystem::path file{path};
        const auto scope = HistoryScopeID::parse(file.parent_path().filename().string());
        if (file.extension() != ".history" || !scope)
            return bytes;
        const std::string old = disk->key(historyKeyAccount(*scope));
        const SecretText key{std::string_view{old.empty() ? world.key(historyKeyAccount(*scope)) : old}};
        return openHistoryFile(key, file.filename().string(), bytes).value_or("cannot be opened");
    }

    /// After a fault: each file is as it was, or as the operation was to make it.
    void expectOldBytes(const Run& run) const
    {
        const auto files = run.world.files.files();
        const auto goodFiles = good->world.files.files();
        for (const auto& [path, bytes] : filesBefore)
            EXPECT_TRUE(files.contains(path) || !goodFiles.contains(path)) << path << " is gone";
        for (const auto& [path, bytes] : files) {
            const auto old = filesBefore.find(path);
            if (path.ends_with(".tmp") || (old != filesBefore.end() && old->second == bytes))
                continue;
            const auto [first, last] = good->world.files.renamed().equal_range(path);
            const std::string is = meaning(run.world, path, bytes);
            EXPECT_TRUE(std::any_of(
                first, last, [&](const auto& one) { return meaning(good->world, path, one.second) == is; }))
                << path << " was destroyed: " << is;
        }
        for (const auto& [name, secret] : disk->keychain.items) {
            const auto found = run.world.keychain.items.find(name);
            EXPECT_TRUE(found == run.world.keychain.items.end() ? !good->world.keychain.items.contains(name)
                                                                : found->second == secret)
                << "a key was destroyed";
        }
        for (const HistoryScopeID& scope : everybody)
            for (const auto& [path, bytes] : files)
                EXPECT_FALSE(path.ends_with(".history") && path.contains(scope.text()) &&
                             run.world.key(historyKeyAccount(scope)).empty())
                    << "the key went before the days";
        EXPECT_EQ(run.world.files.openHandles(), 0U);
    }

    /// How many faults there were until a run ended without one.
    int fail(const FaultPlan& kind, const Errors& allowed) const
    {
        int faults = 0;
        for (FaultPlan plan = kind;; ++plan.at) {
            Run run{*disk, scenario, plan};
            const auto outcome = run.operate(scenario);
            if (run.world.plan.calls < plan.at)
                return faults;
            if (!run.world.plan.hit)
                continue;  // That call was of the other kind.
            ++faults;
            const testing::ScopedTrace trace{__FILE__, __LINE__,
                                             scenario.name + ", call " + std::to_string(plan.at) +
                                                 (plan.forEver ? " and all later" : "") + ": " +
                                                 plan.error.message() + std::to_string(plan.status)};
            EXPECT_TRUE(*outcome || allowed.contains(outcome->error()))
                << "told: " << (*outcome ? "" : description(outcome->error()));
            run.world.plan = {};
            expectOldBytes(run);
            if (*outcome)
                expectState(run.world, after, "after a success");
            else
                expectNothingLost(run.world, Survival::synced);
            EXPECT_EQ(run.operate(scenario), Outcome{}) << "tried again";
            expectState(run.world, after, "tried again");
            if (testing::Test::HasFailure())
                return faults;
        }
    }

    /// How many times the power went until a run ended.
    int cutPower() const
    {
        FaultPlan plan{.kind = FaultPlan::Kind::powerCut, .at = 1};
        for (;; ++plan.at) {
            Run run{*disk, scenario, plan};
            if (run.operate(scenario))
                return plan.at - 1;
            const testing::ScopedTrace trace{__FILE__, __LINE__,
                                             scenario.name + ", off before call " + std::to_string(plan.at)};
            for (const Survival survival : {Survival::everything, Survival::synced, Survival::names}) {
                expectNothingLost(run.world, survival);
                HistoryWorld next{run.world, survival, 11};
                GlucoseHistoryStore store{next.parts()};
                EXPECT_TRUE(store.recover(storyNow));
                EXPECT_TRUE(store.attach(anna));
                EXPECT_EQ(told(store, scenario.operate(store)), Outcome{});
                expectState(next, after, "after another start");
            }
            if (testing::Test::HasFailure())
                return plan.at;
        }
    }

    Scenario scenario;
    HistoryWorld prepared{};
    std::optional<HistoryWorld> disk{};
    std::map<std::string, std::string> filesBefore{};
    HistoryState before{};
    HistoryState after{};
    std::optional<Run> good{};
};

std::vector<FaultPlan> fileFaults()
{
    std::vector<FaultPlan> plans;
    for (const auto error : {std::errc::no_space_on_device, std::errc::io_error, std::errc::permission_denied,
                             std::errc::read_only_file_system, std::errc::too_many_files_open})
        for (const bool forEver : {false, true})
            plans.push_back({.kind = FaultPlan::Kind::error,
                             .at = 1,
                             .forEver = forEver,
                             .error = std::make_error_code(error)});
    return plans;
}

std::vector<FaultPlan> secretFaults()
{
    using namespace keychainStatus;
    std::vector<FaultPlan> plans;
    for (const auto status : {interactionNotAllowed, notAvailable, userCanceled, decode, io, invalidStore})
        for (const bool forEver : {false, true})
            plans.push_back({.kind = FaultPlan::Kind::error, .at = 1, .forEver = forEver, .status = status});
    return plans;
}

TEST(StorageFault, everyFaultEndsInTheRightErrorLosesNothingAndIsMendedByTryingAgain)
{
    int faults = 0;
    for (Scenario& scenario : scenarios()) {
        const Sweep sweep{std::move(scenario)};
        ASSERT_FALSE(HasFailure()) << sweep.scenario.name;
        for (const FaultPlan& plan : fileFaults())
            faults += sweep.fail(plan, sweep.scenario.ofFiles);
        for (const FaultPlan& plan : secretFaults())
            faults += sweep.fail(plan, sweep.scenario.ofSecrets);
        faults += sweep.fail({.kind = FaultPlan::Kind::shortWrite, .at = 1}, {});
        faults += sweep.fail({.kind = FaultPlan::Kind::shortWrite, .at = 1, .forEver = true}, {});
        ASSERT_FALSE(HasFailure()) << sweep.scenario.name;
    }
    EXPECT_GE(faults, 5000);
    RecordProperty("faults", faults);
}

TEST(StorageFault, powerMayGoBeforeAnyCall)
{
    int cuts = 0;
    for (Scenario& scenario : scenarios()) {
        const Sweep sweep{std::move(scenario)};
        cuts += sweep.cutPower();
        ASSERT_FALSE(HasFailure()) << sweep.scenario.name;
    }
    EXPECT_GE(cuts, 400);
    RecordProperty("cuts", cuts);
}

}  // namespace
}  // namespace tidewell

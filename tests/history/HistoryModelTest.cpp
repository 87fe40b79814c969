#include "HistoryWorld.h"

namespace tidewell {

// Random lives of two accounts over weeks, compared with a model that is a map and a few flags.

namespace {

struct ModelScope {
    GlucoseHistoryConfiguration configuration{};
    bool exists = false;
    std::map<std::int64_t, StoredReading> readings{};  ///< By second: all are of one source.
};

class HistoryLife {
public:
    explicit HistoryLife(std::uint64_t seed) : choices_{seed} { restart(); }

    void live(int steps)
    {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            const testing::ScopedTrace trace{__FILE__, __LINE__, "step " + std::to_string(step)};
            now_ += Seconds{static_cast<double>(below(4 * 3600 * 1000)) / 1000};
            if (below(40) == 0)
                now_ += dayLength * static_cast<double>(below(20));
            act();
            compare();
        }
    }

    /// How many readings were found where they had to be.
    [[nodiscard]] std::size_t compared() const { return compared_; }

private:
    std::uint64_t below(std::uint64_t limit) { return choices_.next() % limit; }
    ModelScope* attached() { return attached_ ? &model_.at(*attached_) : nullptr; }

    void restart()
    {
        store_.emplace(world_.parts());
        EXPECT_TRUE(store_->recover(now_));
        attach(attached_);
    }

    void attach(std::optional<std::size_t> whom)
    {
        attached_ = whom;
        EXPECT_TRUE(store_->attach(whom ? std::optional{scopes_[*whom]} : std::nullopt));
        staleTokens_.push_back(store_->collectionToken());
    }

    void act()
    {
        switch (below(16)) {
        case 0: restart(); break;
        case 1:
            attach(below(5) == 0 ? std::nullopt : std::optional{static_cast<std::size_t>(below(2))});
            break;
        case 2: enable(); break;
        case 3: pause(); break;
        case 4: retention(); break;
        case 5: trim(); break;
        case 6: import(); break;
        case 7: remove(); break;
        case 8: saveLate(); break;
        default: save(); break;
        }
    }

    void enable()
    {
        const std::int64_t days = below(2) ? 30 : 90;
        const auto result = store_->enable(days, 1, now_);
        ASSERT_EQ(result.has_value(), attached() != nullptr);
        if (ModelScope* const scope = attached()) {
            auto& configuration = scope->configuration;
            if (!configuration.isEnabled)
                configuration.collectionCutoff = configuration.collectionIntervalStart = now_;
            configuration.isEnabled = configuration.hasPreviouslyEnabled = scope->exists = true;
            configuration.retentionDays = days;
            configuration.consentVersion = 1;
            dropOld(*scope);
        }
    }

    void pause()
    {
        ASSERT_EQ(store_->pause().has_value(), attached() != nullptr);
        if (ModelScope* const scope = attached()) {
            scope->configuration.isEnabled = false;
            scope->configuration.collectionIntervalStart.reset();
        }
    }

    void retention()
    {
        const std::int64_t days = below(3) ? 90 : 30;
        ASSERT_EQ(store_->setRetention(days, now_).has_value(), attached() != nullptr);
        if (ModelScope* const scope = attached()) {
            scope->configuration.retentionDays = days;
            scope->exists = true;
            dropOld(*scope);
        }
    }

    void trim()
    {
        ASSERT_TRUE(store_->trim(now_));
        for (auto& [whom, scope] : model_) {
            if (whom == attached_ && scope.exists)
                dropOld(scope);
            else
                dropOldDays(scope);
        }
    }

    /// Up to thirty hours of readings, in no order, some of them twice.
    std::vector<GlucoseReading> someReadings(double hours)
    {
        std::vector<GlucoseReading> readings;
        for (std::uint64_t count = below(12); count > 0; --count) {
            const double secondsAgo = static_cast<double>(below(static_cast<std::uint64_t>(hours * 3600)));
            Date date = dateFromUnix(std::floor(unixSeconds(now_) - secondsAgo)) +
                        Seconds{static_cast<double>(below(1000)) / 1000};
            readings.push_back(readingAt(date, static_cast<double>(40 + below(300))));
            if (below(4) == 0)
                readings.push_back(readingAt(dateFromUnix(std::floor(unixSeconds(date))), 55));
        }
        return readings;
    }

    void save()
    {
        const auto token = store_->collectionToken();
        ModelScope* const scope = attached();
        ASSERT_EQ(token.has_value(), scope && scope->configuration.isEnabled);
        if (!token)
            return;
        const auto readings = someReadings(30);
        const auto saved = store_->save(*token, readings, now_);
        ASSERT_TRUE(saved);
        bool any = false;
        const Date begin = oldest(*scope, readings);
        for (const GlucoseReading& reading : readings) {
            const GlucoseReading stored = *storable(reading);
            if (stored.date < *scope->configuration.collectionCutoff || stored.date < begin)
                continue;
            any = true;
            auto& kept = scope->readings[second(stored)];
            if (kept.reading != stored)
                kept = {stored, now_};
        }
        if (any && !scope->configuration.collectionStartedAt)
            scope->configuration.collectionStartedAt = now_;
        dropOldDays(*scope);
    }

    /// By a token of earlier: nothing happens unless it is the one in force.
    void saveLate()
    {
        const auto token = staleTokens_[below(staleTokens_.size())];
        if (!token || token == store_->collectionToken())
            return;
        const auto saved = store_->save(*token, {readingAt(now_, 39)}, now_);
        ASSERT_TRUE(saved);
        EXPECT_EQ(*saved, 0U);
    }

    void import()
    {
        const auto readings = someReadings(100 * 24);
        const bool dryRun = below(3) == 0;
        ModelScope* const scope = attached();
        const auto imported = store_->import(readings, now_, dryRun);
        ASSERT_EQ(imported.has_value(), scope && scope->configuration.hasPreviouslyEnabled);
        if (!imported)
            return;
        ModelScope after = *scope;
        HistoryImportResult expected;
        const Date begin = oldest(*scope);
        for (const GlucoseReading& reading : readings) {
            const GlucoseReading stored = *storable(reading);
            if (stored.date < begin) {
                ++expected.beyondRetention;
                continue;
            }
            const bool added = after.readings.try_emplace(second(stored), StoredReading{stored, now_}).second;
            ++(added ? expected.added : expected.alreadyThere);
            auto& started = after.configuration.collectionStartedAt;
            started = std::min(started.value_or(stored.date), stored.date);
        }
        EXPECT_EQ(imported->added, expected.added);
        EXPECT_EQ(imported->alreadyThere, expected.alreadyThere);
        EXPECT_EQ(imported->beyondRetention, expected.beyondRetention);
        if (!dryRun)
            *scope = after;
    }

    void remove()
    {
        if (below(3) != 0)
            return;
        const bool all = below(3) == 0;
        const auto result = all ? store_->deleteAll(now_) : store_->deleteAttached(now_);
        ASSERT_EQ(result.has_value(), all || attached() != nullptr);
        for (std::size_t i = 0; i < scopes_.size(); ++i) {
            ModelScope& scope = model_[i];
            if ((!all && i != attached_) || !scope.exists)
                continue;
            scope.readings.clear();
            scope.configuration.isEnabled = false;
            scope.configuration.collectionStartedAt.reset();
            scope.configuration.insightsUnlockedAt.reset();
            scope.configuration.collectionIntervalStart.reset();
            scope.configuration.collectionCutoff = now_;
            EXPECT_TRUE(world_.key(historyKeyAccount(scopes_[i])).empty());
        }
    }

    void compare()
    {
        const auto* const scope = attached();
        const auto all = store_->snapshot(dateFromUnix(0), dateFromUnix(4e9));
        ASSERT_EQ(all.has_value(), scope != nullptr);
        EXPECT_EQ(store_->status().problem, std::nullopt);
        if (!scope)
            return;
        EXPECT_EQ(encode(all->configuration), encode(scope->configuration));
        ASSERT_EQ(all->readings.size(), scope->readings.size());
        auto found = all->readings.begin();
        for (const auto& [key, stored] : scope->readings) {
            EXPECT_EQ(found->reading, stored.reading);
            EXPECT_NEAR(unixSeconds(found->fetchedAt), unixSeconds(stored.fetchedAt), 0.001);
            ++found;
            ++compared_;
        }
        // A part of it, from a random moment on.
        const Date begin = now_ - Seconds{static_cast<double>(below(40 * 86400))};
        const auto part = store_->snapshot(begin, begin + dayLength);
        ASSERT_TRUE(part);
        EXPECT_EQ(part->readings.size(),
                  static_cast<std::size_t>(std::ranges::count_if(scope->readings, [&](const auto& one) {
                      const Date date = one.second.reading.date;
                      return date >= begin && date < begin + dayLength;
                  })));
    }

    /// To the millisecond, as a service gives it.
    static std::optional<GlucoseReading> storable(GlucoseReading reading)
    {
        reading.date = dateFromUnix(std::round(unixSeconds(reading.date) * 1000) / 1000);
        return reading;
    }
    static std::int64_t second(const GlucoseReading& reading)
    {
        return static_cast<std::int64_t>(unixSeconds(reading.date));
    }
    /// Back from now, or from the end of the newest day that is saved, or in `coming`.
    Date oldest(const ModelScope& scope, const std::vector<GlucoseReading>& coming = {}) const
    {
        std::int64_t newest = scope.readings.empty() ? 0 : scope.readings.rbegin()->first;
        for (const GlucoseReading& reading : coming)
            newest = std::max(newest, second(*storable(reading)));
        const Date end = dateFromUnix(static_cast<double>(newest / 86400 + 1) * 86400);
        return (newest ? std::min(now_, end) : now_) -
               dayLength * static_cast<double>(scope.configuration.retentionDays);
    }
    void dropOldDays(ModelScope& scope) const
    {
        const auto firstDay = static_cast<std::int64_t>(unixSeconds(oldest(scope))) / 86400;
        std::erase_if(scope.readings, [&](const auto& one) { return one.first / 86400 < firstDay; });
    }
    void dropOld(ModelScope& scope) const
    {
        const Date begin = oldest(scope);
        std::erase_if(scope.readings, [&](const auto& one) { return one.second.reading.date < begin; });
    }

    SeededRandom choices_;
    HistoryWorld world_{};
    Date now_ = storyNow;
    const std::vector<HistoryScopeID> scopes_{scopeOf("anna"), scopeOf("bert")};
    std::map<std::size_t, ModelScope> model_{{0, {}}, {1, {}}};
    std::optional<std::size_t> attached_{};
    std::vector<std::optional<GlucoseHistoryCollectionToken>> staleTokens_{};
    std::optional<GlucoseHistoryStore> store_{};
    std::size_t compared_ = 0;
};

TEST(HistoryModel, weeksOfRandomOperationsAgreeWithTheModel)
{
    std::size_t compared = 0;
    for (std::uint64_t seed = 1; seed <= 30; ++seed) {
        const testing::ScopedTrace trace{__FILE__, __LINE__, "seed " + std::to_string(seed)};
        HistoryLife life{seed};
        life.live(400);
        ASSERT_FALSE(HasFailure());
        compared += life.compared();
    }
    EXPECT_GT(compared, 100'000U) << "lives in which nothing happened";
}

}  // namespace
}  // namespace tidewell

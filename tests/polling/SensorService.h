#pragma once

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/TraceCurve.h"
#include "simulator/TraceReplay.h"
#include "sources/GlucoseReading.h"
#include "support/Random.h"

namespace tidewell {

/// True time: what the sensor and the service go by. The computer's own clock may be off.
using True = Seconds;

/// Numbers out of one seed.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : source_{seed} {}
    double uniform(double from, double to) { return from + (to - from) * (source_.unit() + 1) / 2; }
    /// Each order of magnitude equally often.
    double spread(double from, double to) { return std::exp(uniform(std::log(from), std::log(to))); }
    bool once(double share) { return uniform(0, 1) < share; }
    std::size_t pick(std::size_t count) { return static_cast<std::size_t>(source_.next() % count); }
    template <class T>
    T of(std::initializer_list<T> values)
    {
        return values.begin()[pick(values.size())];
    }
    std::uint64_t seed() { return source_.next(); }

private:
    SeededRandom source_;
};

/// What one account's sensor measures, when the service has it, and what it then answers. Out of a real
/// trace: readings five minutes apart, or a current value each minute and a graph far behind. Now and then
/// the phone is away or slow: what is measured meanwhile comes in later, all at once, or never. A few values
/// are corrected afterwards.
class SensorService {
public:
    static constexpr Date zero = dateFromUnix(1'772'409'600);  ///< True time 0: 2026-03-02.

    SensorService(GlucoseProvider provider, True from, True to, Chance& chance) : provider_{provider}
    {
        provider == GlucoseProvider::dexcom ? measureDexcom(from, to, chance)
                                            : measureLibre(from, to, chance);
        for (True away = from + True{chance.spread(3600, 200'000)}; away < to;
             away += True{chance.spread(3600, 200'000)}) {
            const True back = away + True{chance.spread(60, 15'000)};
            switch (chance.pick(3)) {
            case 0: delay(away, back, [](const Sample&) { return True{1e12}; }); break;
            case 1: delay(away, back, [back](const Sample&) { return back; }); break;
            default:
                delay(away, back, [lag = True{chance.spread(60, 1500)}](const Sample& sample) {
                    return sample.visible + lag;
                });
            }
            away = back;
        }
    }

    [[nodiscard]] GlucoseProvider provider() const { return provider_; }

    struct Sample {
        True measured;
        True visible;  ///< When the service has it.
        double mgdL;
        std::string_view trend;
        True corrected = True{1e12};  ///< From then on it is one more.
    };

    /// The newest that the service has then.
    [[nodiscard]] const Sample* newest(True now)
    {
        while (end_ < samples_.size() && samples_[end_].measured <= now)
            ++end_;
        for (std::size_t i = end_; i > 0 && samples_[i - 1].measured > now - True{30'000}; --i) {
            if (samples_[i - 1].visible <= now)
                return &samples_[i - 1];
        }
        return nullptr;
    }

    [[nodiscard]] std::vector<GlucoseReading> answer(True now)
    {
        std::vector<GlucoseReading> readings;
        const Sample* const last = newest(now);
        if (!last)
            return readings;
        if (provider_ == GlucoseProvider::dexcom) {
            for (const Sample* sample = last;; --sample) {
                if (sample->visible <= now)
                    readings.push_back(reading(*sample, now, True{300}));
                if (sample == samples_.data() || last->measured - sample->measured > True{3600})
                    return readings;
            }
        }
        readings.push_back(reading(*last, now, True{60}));
        constexpr True lag{1140};
        for (const Sample* sample = last; sample != samples_.data(); --sample) {
            if (last->measured - sample->measured > True{5400})
                break;
            if (now - sample->visible >= lag && std::fmod(sample->measured.count(), 300) < 60)
                readings.push_back(reading(*sample, now, True{300}));
        }
        return readings;
    }

private:
    GlucoseReading reading(const Sample& sample, True now, True duration) const
    {
        return makeReading(sample.mgdL + (sample.corrected <= now), std::string{sample.trend},
                           zero + sample.measured, duration, provider_);
    }

    void measureDexcom(True from, True to, Chance& chance)
    {
        const TraceReplay replay{GlucoseTrace::builtIn()};
        auto position = static_cast<std::int64_t>(chance.pick(2000));
        for (True at = from - True{3600}; at < to; at += True{replay.spacing(position)}) {
            const True published = at + True{chance.uniform(1, 20)};
            samples_.push_back({.measured = at,
                                .visible = published,
                                .mgdL = static_cast<double>(replay.mgdL(position)),
                                .trend = trendWord(replay.trend(position))});
            if (chance.once(0.05))
                samples_.back().corrected = published + True{chance.uniform(20, 600)};
            ++position;
        }
    }

    void measureLibre(True from, True to, Chance& chance)
    {
        const TraceCurve curve{GlucoseTrace::libre()};
        const double start = chance.uniform(0, 600'000);
        const True first{std::floor(from.count() / 60) * 60 - 7200};
        for (True at = first; at < to; at += True{60}) {
            const double mgdL = curve.mgdL(start + at.count());
            const double perMinute = (mgdL - curve.mgdL(start + at.count() - 900)) / 15;
            const std::string_view trend = perMinute > 2    ? "SingleUp"
                                           : perMinute > 1  ? "FortyFiveUp"
                                           : perMinute < -2 ? "SingleDown"
                                           : perMinute < -1 ? "FortyFiveDown"
                                                            : "Flat";
            samples_.push_back(
                {.measured = at, .visible = at + True{5}, .mgdL = std::round(mgdL), .trend = trend});
        }
    }

    template <class Visible>
    void delay(True from, True to, Visible visible)
    {
        for (Sample& sample : samples_)
            if (sample.measured >= from && sample.measured < to)
                sample.visible = visible(sample);
    }

    GlucoseProvider provider_;
    std::vector<Sample> samples_{};  ///< By time, oldest first.
    std::size_t end_ = 0;            ///< Behind those measured by now.
};

}  // namespace tidewell

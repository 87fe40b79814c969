#include "polling/AlertModel.h"

#include <array>
#include <ranges>

#include "sources/GlucoseUnits.h"
#include "statusbar/ReadingPresentation.h"

namespace tidewell {
namespace {

constexpr std::array<std::string_view, 4> titles{"Low glucose alert", "Rapid glucose drop",
                                                 "High glucose alert", "Rapid glucose rise"};

GlucoseUnits unit(const AppSettings& settings)
{
    return settings.measurementUnit == "mg/dL" ? GlucoseUnits::mgdL : GlucoseUnits::mmolL;
}

}  // namespace

void AlertModel::begin(Date now)
{
    events_.clear();
    newest_.reset();
    began_ = trusted_ = now;
    toldMissing_ = false;
    ++gap_;
}

void AlertModel::forgetTold() { events_.push_back({.what = Event::What::forgotten}); }

bool AlertModel::receive(const GlucoseReading& newest, Date now)
{
    if (newest.date > now + Seconds{300})
        return false;
    if (!newest_ || newest.date >= newest_->date)
        newest_ = newest;
    if (newest_->date > now + Seconds{60})
        return true;  // Shown, but no good for alerts: the clock is wrong.
    trusted_ = newest_->date;
    if (now - trusted_ < Seconds{900}) {
        toldMissing_ = false;
        ++gap_;
    }
    return true;
}

void AlertModel::pass(const AppSettings& settings, Date now)
{
    if (snoozedUntil_ && *snoozedUntil_ <= now)
        snoozedUntil_.reset();
    else if (snoozedUntil_ && *snoozedUntil_ - now > snoozeLength_ + Seconds{30})
        snoozedUntil_ = now + snoozeLength_;  // The clock was set back.

    const bool same = !events_.empty() && events_.back().settings && *events_.back().settings == settings;
    events_.push_back(
        {.what = Event::What::pass,
         .at = now,
         .reading = *newest_,
         .settings = same ? events_.back().settings : std::make_shared<const AppSettings>(settings)});
}

void AlertModel::posted(const AlertNotice& notice, Date passedAt)
{
    const auto place = std::ranges::find(titles, notice.title) - titles.begin();
    events_.push_back({.what = Event::What::posted, .at = passedAt, .kind = static_cast<Kind>(place)});
}

void AlertModel::snooze(Seconds duration, Date now)
{
    snoozeLength_ = std::clamp(duration, Seconds{60}, Seconds{86'400});
    snoozedUntil_ = now + snoozeLength_;
}

bool AlertModel::mayFollow(std::optional<Date> shown, Date now)
{
    if (!snoozedUntil_)
        return false;
    const bool ended = *snoozedUntil_ <= now && !shown;
    const bool anew = *snoozedUntil_ - now > snoozeLength_ + Seconds{30} && shown == now + snoozeLength_;
    if (ended || anew)
        snoozedUntil_ = shown;
    return ended || anew;
}

void AlertModel::resume() { snoozedUntil_.reset(); }

void AlertModel::loadSnooze(std::optional<Date> stored, Date now)
{
    if (stored && *stored - now > Seconds{86'400})
        stored.reset();
    if (stored && stored != snoozedUntil_)
        snoozeLength_ = *stored - now;
    snoozedUntil_ = stored;
}

void AlertModel::toldMissing(std::uint64_t gap) { toldMissing_ = toldMissing_ || gap == gap_; }

bool AlertModel::holds(Kind kind, const GlucoseReading& reading, const AppSettings& settings)
{
    const std::string& trend = reading.trendString;
    switch (kind) {
    case Kind::low: return settings.alertOnLowThreshold && reading.mgdL <= settings.lowGlucoseThreshold;
    case Kind::high: return settings.alertOnHighThreshold && reading.mgdL >= settings.highGlucoseThreshold;
    case Kind::fall: return settings.alertOnRapidFall && (trend == "SingleDown" || trend == "DoubleDown");
    case Kind::rise: return settings.alertOnRapidRise && (trend == "SingleUp" || trend == "DoubleUp");
    }
    std::unreachable();
}

bool AlertModel::isFresh(const GlucoseReading& reading, Date now)
{
    const double age = (now - reading.date).count();
    return age >= -60 && age < 900;
}

/// Lets a hand go round from the start to the end, and looks whether it meets the time of day.
bool AlertModel::isQuiet(const AppSettings& settings, Date now) const
{
    if (!settings.quietHoursEnabled)
        return false;
    if (settings.quietHoursStartMinutes == settings.quietHoursEndMinutes)
        return true;
    const std::string shown = localTimeOfDay(now, zone_);
    const int minute = std::stoi(shown.substr(0, 2)) * 60 + std::stoi(shown.substr(3));
    for (auto hand = settings.quietHoursStartMinutes; hand != settings.quietHoursEndMinutes;
         hand = (hand + 1) % 1440) {
        if (hand == minute)
            return true;
    }
    return false;
}

bool AlertModel::isHeard(Kind kind, const AppSettings& settings, Date now) const
{
    if (isQuiet(settings, now) && !(kind == Kind::low && settings.allowLowAlertsDuringQuietHours))
        return false;
    if (!snoozedUntil_ || *snoozedUntil_ <= now)
        return true;
    switch (kind) {
    case Kind::low: return !settings.snoozeLowAlerts;
    case Kind::high: return !settings.snoozeHighAlerts;
    case Kind::fall:
    case Kind::rise: return !settings.snoozeRapidChangeAlerts;
    }
    std::unreachable();
}

/// When that kind was last told in the episode that goes on. Going back in time, the episode began behind the
/// first look that found it over.
std::optional<Date> AlertModel::lastTold(Kind kind) const
{
    for (const Event& event : std::views::reverse(events_)) {
        switch (event.what) {
        case Event::What::posted:
            if (event.kind == kind)
                return event.at;
            break;
        case Event::What::forgotten: return std::nullopt;
        case Event::What::pass:
            if (!event.settings->alertsEnabled)
                return std::nullopt;
            if (isFresh(event.reading, event.at) && !holds(kind, event.reading, *event.settings))
                return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<AlertNotice> AlertModel::due(Date now) const
{
    const auto backwards = std::views::reverse(events_);
    const auto last = std::ranges::find(backwards, Event::What::pass, &Event::what);
    if (last == backwards.end())
        return std::nullopt;
    const GlucoseReading& reading = last->reading;
    const AppSettings& settings = *last->settings;
    if (!settings.alertsEnabled || !isFresh(reading, now))
        return std::nullopt;

    const auto present = [&](Kind kind) {
        return holds(kind, reading, settings) && isHeard(kind, settings, now);
    };
    const auto isNews = [&](Kind kind) { return present(kind) && !lastTold(kind); };
    const auto repeats = [&] {
        const auto told = lastTold(Kind::low);
        const Seconds interval{60.0 * static_cast<double>(settings.lowAlertRepeatMinutes)};
        return present(Kind::low) && told && interval > Seconds{0} && now - *told >= interval;
    };
    if (isNews(Kind::low) || repeats())
        return notice(Kind::low, reading, settings);
    if (present(Kind::fall))
        return notice(Kind::fall, reading, settings);
    if (isNews(Kind::high) && !present(Kind::low))
        return notice(Kind::high, reading, settings);
    if (isNews(Kind::rise) && !present(Kind::low) && !present(Kind::high))
        return notice(Kind::rise, reading, settings);
    return std::nullopt;
}

AlertNotice AlertModel::notice(Kind kind, const GlucoseReading& reading, const AppSettings& settings)
{
    const std::string name = " " + settings.measurementUnit;
    const auto number = [&](double mgdL) { return formatGlucose(mgdL, unit(settings)); };
    std::string body = number(reading.mgdL) + name + " " + reading.trendArrow;
    switch (kind) {
    case Kind::low: body += " (low threshold " + number(settings.lowGlucoseThreshold) + name + ")"; break;
    case Kind::high: body += " (high threshold " + number(settings.highGlucoseThreshold) + name + ")"; break;
    case Kind::fall: body += ". Glucose is falling quickly."; break;
    case Kind::rise: body += ". Glucose is rising quickly."; break;
    }
    return {.title = std::string{titles.at(static_cast<std::size_t>(kind))},
            .body = std::move(body),
            .urgent = kind == Kind::low || kind == Kind::fall};
}

std::optional<bool> AlertModel::isMissing(Date now) const
{
    if (trusted_ > now + Seconds{300})
        return std::nullopt;
    return now - trusted_ >= Seconds{900};
}

bool AlertModel::mayTellMissing(const AppSettings& settings, Date now) const
{
    return settings.alertsEnabled && settings.alertOnMissingData && isHeard(Kind::low, settings, now);
}

AlertNotice AlertModel::missingNotice(const std::optional<ErrorInfo>& problem, Date now) const
{
    std::string body = "No new reading has come. ";
    if (problem) {
        body.clear();
        for (const std::string& part : {problem->title, problem->message})
            if (!part.empty())
                body += part + (part.ends_with('.') ? " " : ". ");
    }
    if (newest_)
        body += "Last reading at " + localTimeOfDay(newest_->date, zone_) + ", " +
                elapsedPhrase(now - newest_->date) + " ago.";
    else
        body += "No reading since Tidewell started at " + localTimeOfDay(began_, zone_) + ".";
    return {.title = "No glucose data", .body = std::move(body), .urgent = true};
}

}  // namespace tidewell

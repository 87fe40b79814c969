#include "polling/MissingDataAlert.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "statusbar/ReadingPresentation.h"

namespace tidewell {

namespace {

/// A reading that is dated further ahead says nothing of its age: our clock has been set back.
constexpr Seconds setBackTolerance{300};

void append(std::string& text, std::string_view sentence)
{
    if (sentence.empty())
        return;
    text += sentence;
    text += sentence.ends_with('.') ? " " : ". ";
}

}  // namespace

void MissingDataAlert::beginRun(Date now, std::uint64_t pollsBegun)
{
    since_ = began_ = now;
    // While nothing ran, nothing was missed.
    hold(now, pollsBegun);
}

void MissingDataAlert::recordReading(Date newest, Date now)
{
    ahead_ = newest - now > futureTolerance;
    if (ahead_)
        return;
    newest_ = newest;
    if (now - newest >= patience)
        return;
    since_ = now;
    told_ = false;
    ++gap_;
}

void MissingDataAlert::hold(Date now, std::uint64_t pollsBegun)
{
    heldUntil_ = now + lookInterval;
    heldBehind_ = pollsBegun;
}

void MissingDataAlert::pollEnded(std::uint64_t number)
{
    if (number > heldBehind_)
        heldUntil_.reset();
}

bool MissingDataAlert::knowsAge(Date now) const { return newest_ && *newest_ <= now + setBackTolerance; }

MissingDataAlert::Look MissingDataAlert::look(const GlucoseAlertSettings& settings,
                                              const GlucoseAlertEvaluator::Pass& pass)
{
    const Date now = pass.now;
    since_ = std::min(since_, now);  // Else a clock that was set back would make us wait for hours.
    if (!settings.alertsEnabled || !settings.alertOnMissingData || told_)
        return {};
    const Date due = (knowsAge(now) ? *newest_ : since_) + patience;
    if (now < due)
        return {.again = due};
    if (heldUntil_ && now < *heldUntil_ && *heldUntil_ <= now + lookInterval)
        return {.again = heldUntil_};
    if (holdsBackLow(settings, pass))
        return {.again = now + lookInterval};
    return {.post = true};
}

void MissingDataAlert::recordTold(std::uint64_t gap)
{
    if (gap == gap_)
        told_ = true;
}

GlucoseAlertContent MissingDataAlert::content(const std::optional<ErrorInfo>& problem, Date now,
                                              TimeZone zone) const
{
    std::string body;
    if (problem) {
        append(body, problem->title);
        append(body, problem->message);
    } else {
        append(body, "No new reading has come.");
    }
    if (ahead_)
        body += fmt::format("No reading that alerts can go by since {}.",
                            localTimeOfDay(newest_ && knowsAge(now) ? *newest_ : since_, zone));
    else if (!newest_)
        body += fmt::format("No reading since Tidewell started at {}.", localTimeOfDay(began_, zone));
    else if (knowsAge(now))
        body += fmt::format("Last reading at {}, {} ago.", localTimeOfDay(*newest_, zone),
                            elapsedPhrase(now - *newest_));
    else
        body += fmt::format("No reading since {}.", localTimeOfDay(since_, zone));
    return {.title = "No glucose data", .body = std::move(body)};
}

}  // namespace tidewell

#include <fmt/format.h>

#include <cmath>

#include "program/CommandSession.h"
#include "program/Commands.h"
#include "program/SnoozeLength.h"
#include "statusbar/StatusBarMenu.h"

namespace tidewell {

namespace {

/// Days since 1970, where the person is.
double localDay(Date date, TimeZone zone)
{
    return std::floor((date + zone.offset(date)).time_since_epoch() / Seconds{24 * 3600});
}

/// Writes the bookkeeping and lets a running program know. The snooze is in force when it has been written.
std::expected<SingleInstance::SendResult, CommandError> store(CommandSession& session)
{
    if (const auto error = session.defaults().save())
        return std::unexpected(CommandError{
            ExitCode::failure, fmt::format("Nothing was changed: {} cannot be written: {}.",
                                           session.environment().defaults().string(), error.message())});
    return session.announceChange(InstanceWord::snoozeChanged);
}

void sayWhoKeepsToIt(SingleInstance::SendResult told)
{
    switch (told) {
    case SingleInstance::SendResult::delivered: break;
    case SingleInstance::SendResult::notRunning:
        fmt::print("Tidewell is not running on this desktop, so no alert comes in any case.\n");
        break;
    case SingleInstance::SendResult::noAnswer:
        fmt::print("Tidewell is running but does not answer; it notices as soon as it can.\n");
        break;
    }
}

/// The preferences are read only to say what a snooze silences: defaults do when they cannot be read.
AppSettings storedSettings(CommandSession& session)
{
    (void)session.run(session.configuration().load());
    return session.configuration().settings();
}

}  // namespace

ExitCode runSnooze(const std::string& length)
{
    const auto seconds = snoozeLength(length);
    if (!seconds)
        return report({ExitCode::usage, seconds.error()});
    const auto session = CommandSession::make();
    if (!session)
        return report(session.error());
    const Date now = (*session)->clock().now();
    const Date until = now + *seconds;
    (*session)->defaults().set(alertsSnoozedUntilKey, until);
    const auto told = store(**session);
    if (!told)
        return report(told.error());

    const AppSettings settings = storedSettings(**session);
    const auto zone = TimeZone::current();
    fmt::print("{}{}.\n", snoozeLine(until, settings, zone),
               localDay(until, zone) > localDay(now, zone) ? " tomorrow" : "");
    if (settings.snoozeLowAlerts && settings.alertOnMissingData)
        fmt::print("Missing data counts as low.\n");
    if (!settings.snoozeLowAlerts && !settings.snoozeHighAlerts && !settings.snoozeRapidChangeAlerts)
        fmt::print(
            "Select what a snooze silences, for example with:\n"
            "tidewell settings set snoozeLowAlerts true\n");
    if (!settings.alertsEnabled)
        fmt::print(
            "Alerts are switched off altogether. Switch them on with:\n"
            "tidewell settings set alertsEnabled true\n");
    sayWhoKeepsToIt(*told);
    return ExitCode::good;
}

ExitCode runResume()
{
    const auto session = CommandSession::make();
    if (!session)
        return report(session.error());
    const auto until = (*session)->defaults().date(alertsSnoozedUntilKey);
    const bool snoozed = until && *until > (*session)->clock().now();
    (*session)->defaults().remove(alertsSnoozedUntilKey);
    const auto told = store(**session);
    if (!told)
        return report(told.error());
    fmt::print("{}\n", snoozed ? "Alerts are no longer snoozed." : "Alerts were not snoozed.");
    if (!storedSettings(**session).alertsEnabled)
        fmt::print(
            "Alerts are switched off altogether. Switch them on with:\n"
            "tidewell settings set alertsEnabled true\n");
    sayWhoKeepsToIt(*told);
    return ExitCode::good;
}

}  // namespace tidewell

#pragma once

#include "config/AppConfiguration.h"

namespace tidewell {

/// Calls `visit(key, pointer to member)` for each preference, in the order that documents and lists show.
/// The one place that knows the keys: reading, writing and the command line all go through it.
template <class Visit>
void forEachAppSetting(Visit&& visit)
{
    visit("measurementUnit", &AppSettings::measurementUnit);
    visit("lowGlucoseThreshold", &AppSettings::lowGlucoseThreshold);
    visit("highGlucoseThreshold", &AppSettings::highGlucoseThreshold);
    visit("graphTimeWindowHours", &AppSettings::graphTimeWindowHours);
    visit("startAtLogin", &AppSettings::startAtLogin);
    visit("alertsEnabled", &AppSettings::alertsEnabled);
    visit("alertOnLowThreshold", &AppSettings::alertOnLowThreshold);
    visit("alertOnHighThreshold", &AppSettings::alertOnHighThreshold);
    visit("alertOnRapidFall", &AppSettings::alertOnRapidFall);
    visit("alertOnRapidRise", &AppSettings::alertOnRapidRise);
    visit("quietHoursEnabled", &AppSettings::quietHoursEnabled);
    visit("quietHoursStartMinutes", &AppSettings::quietHoursStartMinutes);
    visit("quietHoursEndMinutes", &AppSettings::quietHoursEndMinutes);
    visit("allowLowAlertsDuringQuietHours", &AppSettings::allowLowAlertsDuringQuietHours);
    visit("lowAlertRepeatMinutes", &AppSettings::lowAlertRepeatMinutes);
    visit("snoozeLowAlerts", &AppSettings::snoozeLowAlerts);
    visit("snoozeHighAlerts", &AppSettings::snoozeHighAlerts);
    visit("snoozeRapidChangeAlerts", &AppSettings::snoozeRapidChangeAlerts);
    visit("alertOnMissingData", &AppSettings::alertOnMissingData);
}

}  // namespace tidewell

#pragma once

#include <string>

#include "Diagnostics/Status/Report.h"

/// The report's parts in words for a person, each one clause without a line end. They quote names
/// and so need escaping.
namespace status {

std::string SettingText(const SettingStatus& setting);

/// "unknown: DISPLAY is not set; ...", "org.example runs on display ':0' as process 12 and holds 5 keys".
std::string ApplicationText(const Report& report);

/// All of them are held: not worth a line each.
bool AreInOrder(const std::vector<ToolKey>& keys);

std::string ToolKeyText(const ToolKey& key);

/// The program that a tool key starts, or why there is none.
std::string LaunchText(const LaunchStatus& launch);

/// Those of the failed keys that are no tool keys: "X, Y".
std::string OtherFailedKeys(const ApplicationStatus& application);

std::string PopupsText(const PopupStatus& popups);

/// "/a/constants.xml; names 'schedule.xml'"
std::string ConstantsText(const readiness::Constants& constants);

/// "/a/schedule.xml; expiration 2030-12-31"
std::string ScheduleText(const Report& report);

/// "2 of 3 contents there"
std::string ContentsText(const readiness::Contents& contents);

/// "2026-11-21 09:30:00 CET (UTC+01:00)"
std::string ClockText(const Report& report);

/// "09:00:00 to 18:30:00: intro.mp4, logo.jpg"
std::string PeriodText(const schedule::ActivePeriod& period);

/// "18:30:00" or "tomorrow 09:00:00", and what plays then.
std::string ChangeText(const schedule::Change& change, const schedule::Programme& then);

} // namespace status

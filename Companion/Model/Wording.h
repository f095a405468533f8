#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Companion/Model/Screen.h"

// The companion's sentences about a screen, in the language of the process. Main thread.
namespace companion {

/// What the top of the screen says: the obstacle, or that the TV is ready.
std::string Headline(const Screen& screen);

/// What all of it comes to.
std::string SummaryText(const Screen& screen);

/// "intro.mp4, logo.jpg", "logo.jpg, a.jpg, b.jpg and 4 more", or that nothing plays.
std::string ProgrammeText(const Programme& programme);

/// When the present programme ends: "until 18:30", "all day".
std::string UntilText(const Screen& screen);

/// When the next one starts: "at 18:30", "at 09:00 tomorrow".
std::string WhenText(const Screen& screen);

/// "2 of 3 complete"
std::string CompleteText(const Screen& screen);

/// What stands below the files that are shown, where there are more: "and 4 more".
std::string MoreFilesText(const Screen& screen);

/// What stands below a file's name: its size, or what is wrong with it.
std::string DetailText(const FileLine& file);

/// A span of the day: "09:00–18:30".
std::string SpanText(const schedule::Span& span);

/// Labels and values of the group and the network, in the order to show them. What the schedule leaves empty
/// has a dash.
std::vector<std::pair<std::string, std::string>> GroupLines(const Screen& screen);

/// What the switch does: one sentence for on and one for off.
std::string SettingText(bool enabled);

} // namespace companion

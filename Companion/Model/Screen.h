#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Common/VQMDataObject.h"
#include "Diagnostics/Calendar/Clock.h"
#include "Diagnostics/Programme/Programme.h"
#include "Diagnostics/Readiness/Readiness.h"

/// What the companion shows of one check: facts and the diagnostics' own sentences, in no language and in no
/// place of a screen. Texts are safe to show: control and invisible characters are spelled out.
namespace companion {

/// A file that the schedule names.
struct FileLine {
    std::string name;
    uVQMINT64 size = 0;    ///< in bytes, as announced
    bool complete = false; ///< the library takes it
    std::string reason{};  ///< why not, or what is odd about it, with its name; empty for nothing
};

/// What plays at one time.
struct Programme {
    std::vector<std::string> files{};           ///< in play order, the first of them
    std::size_t fileCount = 0;                  ///< of all
    std::optional<schedule::IdleReason> idle{}; ///< set when no file plays
};

/// The next time at which something else plays.
struct Change {
    int second = 0; ///< of the day
    bool tomorrow = false;
    Programme then{};
};

/// How this TV stands to the TVs around it, as the schedule says.
struct Group {
    bool isMaster = false;
    int players = 0;
    std::string masterAddress{};
    std::string address{};
    std::string subnetMask{};
    std::string gateway{};
    std::string wirelessGroup{};
};

struct Screen {
    readiness::Outcome outcome = readiness::Outcome::kNotChecked;
    std::string obstacle{};                ///< what stands in the way first; empty when nothing does
    std::string summary{};                 ///< what all of it comes to
    bool haveSchedule = false;             ///< what follows is its content; without one it is empty
    std::vector<schedule::Span> periods{}; ///< of the day, as far as they can be told apart on a screen
    Programme now{};
    std::optional<Change> next{};  ///< none when the same plays all day
    std::vector<FileLine> files{}; ///< the first of them, each once: those with a reason, then by the document
    std::size_t fileCount = 0;     ///< of all
    std::size_t completeFiles = 0; ///< of all
    Group group{};
};

/// What there is to show of `report` at `moment`. Takes long for a long schedule; any thread.
Screen ScreenOf(const readiness::Report& report, const schedule::Moment& moment);

} // namespace companion

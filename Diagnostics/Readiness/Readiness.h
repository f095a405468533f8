#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Common/VQMDataObject.h"
#include "Data/VQMScheduleRecords.h"
#include "Diagnostics/Lint/Report.h"
#include "Diagnostics/Programme/Programme.h"
#include "Diagnostics/Readiness/Places.h"
#include "Diagnostics/Text/Diagnostic.h"

/// Can this TV play what is on its disk, and if not, why?
///
/// The verdict is the library's content check and nothing else. What stands beside it explains: the
/// check says little, and stops at the first file that is wrong.
///
/// Threads: one at a time; the constants and the monitor are the process's.
namespace readiness {

/// What became of a document that is needed.
enum class DocumentState {
    kMissing,
    kUnreadable,    ///< something is there, but it is not a file, or cannot be read
    kNotWellFormed, ///< read, and no XML document
    kLoaded,
    kNotNeeded, ///< the schedule was given: nobody asks the constants for its name
};

/// The constant that names the schedule's file.
inline constexpr char kScheduleFile[] = "ScheduleFile";

struct Constants {
    std::string path; ///< as it is called from here; "<stdin>" for "-"
    DocumentState state = DocumentState::kMissing;
    std::string problem{}; ///< for a person, one clause; empty when loaded
    std::map<std::string, std::string>
        values{};          ///< what the library took; of a broken file, what stands before the error
    std::string newText{}; ///< what to write into it where it is missing, whole lines

    /// The file name of the schedule; null when no such constant was loaded.
    const std::string* ScheduleFile() const;
};

struct Schedule {
    std::string directory; ///< with "/" at its end
    std::string path;      ///< what the TV looks for; without the constant it is the directory
    std::string place{};   ///< where that leads: differs where links of another TV's tree were followed
    DocumentState state = DocumentState::kMissing;
    std::string problem{};
    _VQMPolicy policy{};     ///< as the library reads it; whether or not it is the TV's current one
    std::string lookAlike{}; ///< where it is missing: what is there instead, as a clause
    schedule::Expiry expiry = schedule::Expiry::kNone;
};

enum class FileKind {
    kMissing,
    kNotExamined, ///< it may be there; `problem` says what keeps it from being looked at
    kFile,
    kDirectory,
    kOther, ///< a pipe, a device, a socket
};

/// A file that the schedule names.
struct ContentFile {
    std::string name;
    FileKind kind = FileKind::kMissing;
    uVQMINT64 size = 0;    ///< as the library measures it; 0 when it cannot be examined
    bool readable = false; ///< by this user: it could be opened and its first byte read
    std::string problem{}; ///< why it could not be examined or read
};

/// One item of the schedule. A file may belong to several.
struct ContentItem {
    std::size_t period = 0; ///< index of the period in the policy's list
    std::size_t file = 0;   ///< index of its file in the contents' list
    uVQMINT64 announced = 0;
};

struct Contents {
    std::string directory; ///< with "/" at its end
    bool directoryPresent = false;
    std::string closedFolder{};           ///< on the way to the files, and this user may not enter it; empty: none
    std::string directoryProblem{};       ///< a clause to follow its name when it is missing
    std::vector<ContentFile> files{};     ///< each once, in the order in which the items name them
    std::vector<ContentItem> items{};     ///< in the document's order
    std::size_t complete = 0;             ///< how many of the items the library takes
    uVQMINT64 announcedBytes = 0;         ///< of all items; the largest number when they add up to more
    uVQMINT64 missingBytes = 0;           ///< to be copied still; a file that several items name counts once
    std::optional<uVQMINT64> freeBytes{}; ///< of the disk the directory is, or would be, on; null when not known
    std::map<std::string, std::string> lookAlikes{}; ///< by missing name: what is there instead, as a clause

    const ContentFile& FileOf(const ContentItem& item) const { return files[item.file]; }
    std::string PathOf(const ContentItem& item) const { return directory + FileOf(item).name; }

    /// How the library decides: the sizes are equal. An absent file measures 0.
    bool SizeMatches(const ContentItem& item) const { return FileOf(item).size == item.announced; }
};

/// What the library's content check said.
struct Verdict {
    bool ran = false;
    std::string problem{}; ///< why it did not run to its end
    bool haveSchedule = false;
    bool haveContents = false;

    bool Ready() const { return ran && haveSchedule && haveContents; }
};

struct Report {
    Constants constants;
    Verdict verdict{};
    Schedule schedule{};
    Contents contents{};     ///< without items unless the schedule is loaded
    lint::Report findings{}; ///< the linter's, of a schedule that is loaded; only the first errors are kept
    std::vector<std::string> closedToOthers{}; ///< what the application reads and only root and the owner may
    bool compiledIn = true;                    ///< the places are the application's own
};

/// Called with how many files have been examined, and of how many, on the thread that called the check.
using Progress = std::function<void(std::size_t done, std::size_t total)>;

/// Replaces the constants of the process by those of the file in its place. A missing or broken file is
/// not an error here: the result says so. Throws `std::runtime_error` when the root cannot be entered.
Constants LoadConstants(const Places& places);

/// Where the TV's schedule lies: only `directory`, `path` and `place` are filled. `constants` are those of the
/// same places.
Schedule FindSchedule(const Places& places, const Constants& constants);

/// Loads the constants, runs the library's content check afresh, and examines everything that it looks
/// at. In other places than the application's own, which the library has compiled in, the check's steps
/// are done one by one, each by the library. Throws `std::runtime_error` when the root cannot be entered.
Report Check(const Places& places, const schedule::Day& today, const Progress& progress = nullptr);

/// What the report means, in the order in which the TV comes across it. What keeps the TV from playing blocks.
/// Other errors are the linter's: the TV plays something else than what is written. The rest are notes.
std::vector<Diagnostic> Explain(const Report& report);

/// What all of it comes to.
enum class Outcome {
    kNotChecked,
    kPlaysNothing,
    kNotAsMeant,      ///< it plays, but the schedule has errors
    kPerhapsNotMeant, ///< it plays, and the schedule has warnings
    kAsMeant,
};

/// `diagnostics`: the report's own.
Outcome OutcomeOf(const Report& report, const std::vector<Diagnostic>& diagnostics);

} // namespace readiness

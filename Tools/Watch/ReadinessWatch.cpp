#include "Tools/Watch/ReadinessWatch.h"

#include <chrono>
#include <utility>

#include "Diagnostics/Readiness/Render.h"
#include "Diagnostics/Watch/WatchedDirectories.h"
#include "Tools/Terminal/Terminal.h"

namespace {

constexpr std::chrono::minutes kMinute{1};

/// What decides whether a report is printed. It leaves out sizes, which change all the time while a file is
/// copied.
std::string Gist(const readiness::Report& report, const std::vector<Diagnostic>& diagnostics)
{
    std::string gist = readiness::VerdictLine(report) + SummaryLine(report, diagnostics);
    for (const Diagnostic& diagnostic : diagnostics) {
        gist += "\n" + diagnostic.id + " " + diagnostic.path;
    }
    return gist;
}

} // namespace

ReadinessWatch::ReadinessWatch(Checker check, Printer print)
    : check_(std::move(check)),
      print_(std::move(print)),
      settling_(loop_, [this] { CheckAndPrint(); }),
      minute_(loop_, [this] { OnMinute(); })
{
    loop_.OnReadable(files_.Descriptor(), [this] {
        if (files_.TakeChanges()) {
            OnChange();
        }
    });
}

readiness::Outcome ReadinessWatch::Run()
{
    loop_.EndWithReader();
    OnMinute();
    loop_.Run();
    return outcome_;
}

void ReadinessWatch::OnChange()
{
    settling_.StartAt(changes_.OnChange(MainLoop::Clock::now()));
}

void ReadinessWatch::OnMinute()
{
    CheckAndPrint();
    minute_.StartAt(MainLoop::Clock::now() + kMinute);
}

void ReadinessWatch::CheckAndPrint()
{
    // The check of the minute leaves changes that still settle to their own check.
    if (!settling_.IsRunning()) {
        changes_.Done();
    }
    readiness::Report report = check_();
    // What happened in a new place before it was watched has not been noticed.
    if (WatchWhatDecides(report)) {
        report = check_();
    }
    const std::vector<Diagnostic> diagnostics = Explain(report);
    outcome_ = OutcomeOf(report, diagnostics);
    std::string gist = Gist(report, diagnostics);
    if (gist != last_) {
        last_ = std::move(gist);
        if (!print_(report)) {
            loop_.End();
        }
    }
}

/// Whether something is watched from now on that was not.
bool ReadinessWatch::WatchWhatDecides(const readiness::Report& report)
{
    const bool isNew = files_.Watch(WatchedDirectories(report));
    for (const std::string& refusal : files_.TakeRefusals()) {
        PrintError("note: " + refusal);
    }
    return isNew;
}

#include "Tools/Watch/ReadinessWatch.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>
#include <utility>

#include "Diagnostics/Readiness/Render.h"

namespace {

/// Copying a file makes many changes: a check waits until they pause, but not for ever.
constexpr std::chrono::milliseconds kSettleTime{100};
constexpr std::chrono::seconds kLongestSettling{1};
constexpr std::chrono::minutes kMinute{1};

/// While a file is copied its size changes all the time; what is said about it does not.
std::string Gist(const readiness::Report& report, const std::vector<Diagnostic>& diagnostics)
{
    std::string gist = readiness::VerdictLine(report) + SummaryLine(report, diagnostics);
    for (const Diagnostic& diagnostic : diagnostics) {
        gist += "\n" + diagnostic.id + " " + diagnostic.path;
    }
    return gist;
}

std::string DirectoryOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path().string();
}

} // namespace

ReadinessWatch::ReadinessWatch(Checker check, Printer print)
    : check_(std::move(check)),
      print_(std::move(print)),
      files_(loop_, [this] { OnChange(); }),
      settling_(loop_, [this] { CheckAndPrint(); }),
      minute_(loop_, [this] { OnMinute(); })
{
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
    const MainLoop::Clock::time_point now = MainLoop::Clock::now();
    if (!settling_.IsRunning()) {
        firstChange_ = now;
    }
    settling_.StartAt(std::min(now + kSettleTime, firstChange_ + kLongestSettling));
}

void ReadinessWatch::OnMinute()
{
    CheckAndPrint();
    minute_.StartAt(MainLoop::Clock::now() + kMinute);
}

void ReadinessWatch::CheckAndPrint()
{
    readiness::Report report = check_();
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
    std::set<std::string> directories = {DirectoryOf(report.constants.path), DirectoryOf(report.schedule.path),
                                         DirectoryOf(report.contents.directory)};
    for (const readiness::ContentFile& file : report.contents.files) {
        if (file.name.find('/') != std::string::npos) {
            directories.insert(DirectoryOf(file.path));
        }
    }
    return files_.Watch(directories);
}

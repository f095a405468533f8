#include "Tools/Watch/ReadinessWatch.h"

#include <filesystem>
#include <set>
#include <utility>

#include "Diagnostics/Readiness/Remarks.h"
#include "Diagnostics/Readiness/Render.h"

namespace {

/// Copying a file makes many changes. They are let settle, but not for ever.
constexpr double kSettleSeconds = 0.1;
constexpr double kLongestSeconds = 1.0;
constexpr double kMinute = 60.0;

/// While a file is copied its size changes all the time; what is said about it does not.
std::string Gist(const readiness::Report& report)
{
    std::string gist = readiness::VerdictLine(report);
    for (const readiness::Remark& remark : readiness::Explain(report)) {
        gist += "\n" + remark.rule + " " + remark.path;
    }
    return gist;
}

std::string DirectoryOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path().string();
}

} // namespace

ReadinessWatch::ReadinessWatch(Checker check, Printer print)
    : check_(std::move(check)), print_(std::move(print)), files_([this] { OnChange(); })
{
}

ReadinessWatch::~ReadinessWatch()
{
    StopSettling();
    if (minute_ != nullptr) {
        ecore_timer_del(minute_);
    }
}

readiness::Verdict ReadinessWatch::Run()
{
    loop_.EndWithReader();
    CheckAndPrint();
    minute_ = ecore_timer_add(kMinute, OnMinute, this);
    loop_.Run();
    if (thrown_) {
        std::rethrow_exception(thrown_);
    }
    return verdict_;
}

void ReadinessWatch::OnChange()
{
    if (settling_ == nullptr) {
        firstChange_ = ecore_loop_time_get();
        settling_ = ecore_timer_add(kSettleSeconds, OnSettled, this);
    } else if (ecore_loop_time_get() - firstChange_ < kLongestSeconds) {
        ecore_timer_reset(settling_);
    }
}

void ReadinessWatch::StopSettling()
{
    if (settling_ != nullptr) {
        ecore_timer_del(settling_);
        settling_ = nullptr;
    }
}

Eina_Bool ReadinessWatch::OnSettled(void* data)
{
    auto* const watch = static_cast<ReadinessWatch*>(data);
    watch->settling_ = nullptr;
    watch->CheckOrEnd();
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool ReadinessWatch::OnMinute(void* data)
{
    static_cast<ReadinessWatch*>(data)->CheckOrEnd();
    return ECORE_CALLBACK_RENEW;
}

void ReadinessWatch::CheckOrEnd()
{
    try {
        CheckAndPrint();
    } catch (...) {
        thrown_ = std::current_exception();
        loop_.End();
    }
}

void ReadinessWatch::CheckAndPrint()
{
    readiness::Report report = check_();
    if (WatchWhatDecides(report)) {
        report = check_();
    }
    verdict_ = report.verdict;
    std::string gist = Gist(report);
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
    bool added = false;
    for (const std::string& directory : directories) {
        added = files_.Add(directory) || added;
    }
    return added;
}

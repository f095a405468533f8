#pragma once

#include <functional>
#include <string>

#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Watch/FileWatch.h"
#include "Diagnostics/Watch/Settling.h"
#include "Tools/Watch/MainLoop.h"

/// Checks again whenever the files change that decide, until a signal, or until the reader of
/// stdout goes.
///
/// Notices what happens in the directories of constants, schedule and media. What it cannot notice,
/// as a file behind a link or on a network disk, and midnight, it sees within a minute.
class ReadinessWatch {
public:
    using Checker = std::function<readiness::Report()>;
    using Printer = std::function<bool(const readiness::Report& report)>; ///< false: the reader has gone

    ReadinessWatch(Checker check, Printer print);

    ReadinessWatch(const ReadinessWatch&) = delete;
    ReadinessWatch& operator=(const ReadinessWatch&) = delete;

    /// Prints the first report and each that says something else than the one before it. Returns the
    /// last outcome. What a check throws passes through.
    readiness::Outcome Run();

private:
    void OnChange();
    void OnMinute();
    void CheckAndPrint();
    bool WatchWhatDecides(const readiness::Report& report);

    Checker check_;
    Printer print_;
    MainLoop loop_;
    FileWatch files_;
    LoopTimer settling_;
    LoopTimer minute_;
    Settling changes_;
    std::string last_; ///< what the report printed last came to
    readiness::Outcome outcome_ = readiness::Outcome::kNotChecked;
};

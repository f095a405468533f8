#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>

#include "Diagnostics/Readiness/Readiness.h"
#include "Tools/Watch/FileWatch.h"
#include "Tools/Watch/MainLoop.h"

/// Checks again whenever the files change that decide, until a signal, or until the reader of
/// stdout goes.
///
/// Notices what happens in the directories of constants, schedule and media. What it cannot notice,
/// as behind a link or on a network disk, and midnight, it sees within a minute.
class ReadinessWatch {
public:
    using Checker = std::function<readiness::Report()>;
    using Printer = std::function<bool(const readiness::Report& report)>; ///< false: nobody reads any more

    ReadinessWatch(Checker check, Printer print);
    ~ReadinessWatch();

    ReadinessWatch(const ReadinessWatch&) = delete;
    ReadinessWatch& operator=(const ReadinessWatch&) = delete;

    /// Prints the first report and each that says something else than the one before it. Gives the
    /// last verdict.
    readiness::Verdict Run();

private:
    static Eina_Bool OnSettled(void* data);
    static Eina_Bool OnMinute(void* data);

    void OnChange();
    void StopSettling();
    void CheckAndPrint();
    void CheckOrEnd();
    bool WatchWhatDecides(const readiness::Report& report);

    Checker check_;
    Printer print_;
    MainLoop loop_;
    FileWatch files_;
    Ecore_Timer* settling_ = nullptr;
    Ecore_Timer* minute_ = nullptr;
    double firstChange_ = 0.0; ///< of those that were not checked yet
    std::string last_;         ///< what the report printed last came to
    readiness::Verdict verdict_;
    std::exception_ptr thrown_; ///< kept over the loop, whose C code no exception may cross
};

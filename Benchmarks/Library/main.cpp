// Does one work a number of times and prints what it cost, as one line of JSON.
//
//   LibraryWork NAME SIZE REPETITIONS
//
// "ns" is the median of the repetitions, "cpu" that of the process's own processor time in ns,
// "instructions" the mean, null where the processor's counter cannot be read; all for one unit of
// the work. "peak" is the process's most memory, in bytes.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <time.h>
#include <vector>

#include "Benchmarks/Library/InstructionCounter.h"
#include "Benchmarks/Library/Work.h"

namespace {

struct NamedWork {
    const char* name;
    MakeWork make;
};

template <Work (*parse)(std::size_t, Layout), Layout layout>
Work InLayout(std::size_t size)
{
    return parse(size, layout);
}

constexpr NamedWork kWorks[] = {
    {"parse/product", InLayout<ParseWithProduct, Layout::LineForItem>},
    {"parse-lines/product", InLayout<ParseWithProduct, Layout::LineForElement>},
    {"parse/taken-over", InLayout<ParseAndTakeOver, Layout::LineForItem>},
    {"parse-lines/taken-over", InLayout<ParseAndTakeOver, Layout::LineForElement>},
    {"parse/expat", InLayout<ParseWithExpat, Layout::LineForItem>},
    {"parse-lines/expat", InLayout<ParseWithExpat, Layout::LineForElement>},
    {"parse/pugixml", InLayout<ParseWithPugixml, Layout::LineForItem>},
    {"parse-lines/pugixml", InLayout<ParseWithPugixml, Layout::LineForElement>},
    {"parse/libxml2", InLayout<ParseWithLibxml2, Layout::LineForItem>},
    {"parse-lines/libxml2", InLayout<ParseWithLibxml2, Layout::LineForElement>},
    {"lint/linter", LintPeriods},
    {"lint/product", ParsePeriods},
    {"lint-one-period/linter", LintOnePeriod},
    {"lint-one-period/product", ParseOnePeriod},
    {"growth/attributes", LintAttributes},
    {"growth/cell", ShowLongCell},
    {"growth/name", SuggestForLongName},
    {"growth/names", SuggestAmongMany},
    {"growth/check-json", RenderCheckAsJson},
    {"read/product", ReadWithProduct},
    {"read/system", ReadWithSystemCalls},
    {"read/stream", ReadWithStream},
    {"read/bare-stream", ReadWithBareStream},
    {"read/at-once", ReadAtOnce},
    {"check/product", CheckFiles},
    {"check/all", CheckAll},
    {"check/repeated", CheckRepeated},
    {"check/stat", CheckWithStat},
    {"check/find", CheckWithFind},
    {"int/product", ScanInts},
    {"int/from_chars", ScanIntsFromChars},
    {"size/product", ScanSizes},
    {"size/from_chars", ScanSizesFromChars},
    {"double/product", ScanDoubles},
    {"double/from_chars", ScanDoublesFromChars},
    {"log/lines", LogLines},
};

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The most memory that the process has had resident.
unsigned long long PeakBytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::strtoull(line.c_str() + sizeof "VmHWM:", nullptr, 10) * 1024;
        }
    }
    return 0;
}

struct Cost {
    double nanoseconds;
    double cpu;
    std::optional<double> instructions;
};

double Now(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

Cost CostOf(const std::function<void()>& work)
{
    const InstructionCounter counter;
    const double start = Now(CLOCK_MONOTONIC);
    const double cpuStart = Now(CLOCK_PROCESS_CPUTIME_ID);
    work();
    const double cpu = Now(CLOCK_PROCESS_CPUTIME_ID) - cpuStart;
    return {Now(CLOCK_MONOTONIC) - start, cpu, counter.Read()};
}

void Measure(const Work& work, int repetitions)
{
    std::vector<double> times;
    std::vector<double> cpuTimes;
    double instructions = 0;
    bool counted = true;
    for (int i = 0; i < repetitions; ++i) {
        const Cost whole = CostOf(work.run);
        const Cost without = work.without ? CostOf(work.without) : Cost{0, 0, 0};
        times.push_back(whole.nanoseconds - without.nanoseconds);
        cpuTimes.push_back(whole.cpu - without.cpu);
        counted = counted && whole.instructions && without.instructions;
        instructions += whole.instructions.value_or(0) - without.instructions.value_or(0);
    }
    std::printf("{\"ns\": %.3f, \"cpu\": %.3f, \"instructions\": ", Median(times) / work.units,
                Median(cpuTimes) / work.units);
    if (counted) {
        std::printf("%.1f", instructions / repetitions / work.units);
    } else {
        std::printf("null");
    }
    std::printf(", \"peak\": %llu}\n", PeakBytes());
}

} // namespace

int main(int argc, char** argv)
{
    const int repetitions = argc == 4 ? std::atoi(argv[3]) : 0;
    if (repetitions < 1) {
        std::fputs("usage: LibraryWork NAME SIZE REPETITIONS\n", stderr);
        return 2;
    }
    for (const NamedWork& candidate : kWorks) {
        if (std::string(candidate.name) == argv[1]) {
            try {
                Measure(candidate.make(std::strtoull(argv[2], nullptr, 10)), repetitions);
                return 0;
            } catch (const std::exception& error) {
                std::fprintf(stderr, "LibraryWork: %s: %s\n", argv[1], error.what());
                return 3;
            }
        }
    }
    std::fprintf(stderr, "LibraryWork: there is no %s\n", argv[1]);
    return 2;
}

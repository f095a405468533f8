// Measures the linter against the library's own parse of the same document, which it may take twice
// as long as.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <sstream>
#include <string>

#include "Data/VQMScheduleContainer.h"
#include "Tools/Lint/Lint.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

constexpr int kItems = 500000;
constexpr int kRounds = 5;
constexpr double kMostTimes = 2.0;

std::string Document(int periods)
{
    std::ostringstream text;
    text << "<rsp state='ok'>\n";
    for (int period = 0; period < periods; ++period) {
        char times[80];
        std::snprintf(times, sizeof times, "  <schedule start_time='%02d:%02d:00' end_time='%02d:%02d:59'>\n",
                      period / 60, period % 60, period / 60, period % 60);
        text << times;
        for (int item = 0; item < kItems / periods; ++item) {
            text << "    <item id='A" << item << "' order='" << item << "'><name>clip" << item
                 << "</name><size>1048576</size><format>mp4</format></item>\n";
        }
        text << "  </schedule>\n";
    }
    text << "</rsp>\n";
    return text.str();
}

/// Seconds of processor time: other programs hardly change them.
template <typename Work>
double Seconds(Work work)
{
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

bool Measure(int periods)
{
    const std::string document = Document(periods);
    double library = 1e9;
    double linter = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        library = std::min(library, Seconds([&] {
                               CVQMScheduleContainer container;
                               CVQMXMLSerialize serializer;
                               serializer.Create();
                               serializer.Deserialize(document.c_str(), &container);
                           }));
        linter = std::min(linter, Seconds([&] { lint::Lint(document, lint::Options()); }));
    }
    std::printf("%d items in %d periods: library %.3f s, linter %.3f s, %.2f times\n", kItems, periods, library, linter,
                linter / library);
    return linter <= kMostTimes * library;
}

} // namespace

int main()
{
    const bool manyPeriods = Measure(1000);
    const bool onePeriod = Measure(1);
    return manyPeriods && onePeriod ? 0 : 1;
}

#include "Diagnostics/Group/Places.h"

#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Diagnostics/Programme/PolicyFile.h"

namespace group {

namespace {

std::size_t Compared(const std::string& path)
{
    lint::DocumentWindow window;
    schedule::PolicyFile file;
    try {
        file = schedule::ReadPolicyFile(path, &window.Bytes());
    } catch (const std::runtime_error&) {
        return 0;
    }
    const Places places = FindPlaces(window);
    EXPECT_EQ(places.periods.size(), file.policy.listSchedule.size()) << path;
    std::size_t index = 0;
    for (const _VQMSchdule& period : file.policy.listSchedule) {
        EXPECT_EQ(places.periods.at(index++).items.size(), period.listContents.size()) << path;
    }
    return 1;
}

/// Odd nesting, entities, other encodings and the like are in what the fuzz targets start from.
TEST(GroupPlaces, EachPeriodAndItemThatTheLibraryReadsHasOne)
{
    std::size_t compared = 0;
    for (const char* corpus : {"ScheduleCorpus", "LintCorpus"}) {
        for (const auto& entry : std::filesystem::directory_iterator(std::string(VQM_CORPORA) + "/" + corpus)) {
            compared += Compared(entry.path());
        }
    }
    EXPECT_GE(compared, 20U);
}

TEST(GroupPlaces, AValueHasItsOwnPlaceAndAMissingOneThatOfItsTag)
{
    lint::DocumentWindow window;
    window.Bytes() = "<rsp>\n<project version='\u00e4' id='7'/>\n<x/><rech_info\n IPAddr='b' IsMaster='1'/></rsp>";
    const Places places = FindPlaces(window);
    const auto place = [&places](Field field) {
        const Place& found = places.fields[static_cast<std::size_t>(field)];
        return std::to_string(found.position.line) + ":" + std::to_string(found.position.column) + "+" +
               std::to_string(found.size);
    };
    EXPECT_EQ(place(Field::kVersion), "2:19+2");
    EXPECT_EQ(place(Field::kProjectId), "2:26+1");
    EXPECT_EQ(place(Field::kAddress), "4:10+1");
    EXPECT_EQ(place(Field::kPlayers), "3:5+37");
    lint::DocumentWindow empty;
    empty.Bytes() = "\n<rsp/>";
    EXPECT_EQ(FindPlaces(empty).fields[0].position.line, 2U);
}

} // namespace

} // namespace group

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <type_traits>
#include <unistd.h>
#include <vector>

#include <expat.h>

#include "Common/VQMConfig.h"
#include "Diagnostics/Status/LaunchStatus.h"
#include "Diagnostics/Text/Words.h"

namespace status {

namespace {

namespace fs = std::filesystem;

/// Where the TV's package manager keeps the manifests of what is installed.
constexpr char kManifests[] = "/usr/share/packages";
constexpr std::streamsize kMostRead = 1 << 20;

struct Search {
    std::string id;
    std::string program; ///< found: what the manifest names for it
    bool found = false;
};

void XMLCALL OnElement(void* data, const XML_Char* /*name*/, const XML_Char** attributes)
{
    auto& search = *static_cast<Search*>(data);
    const char* id = "";
    const char* program = "";
    for (; *attributes != nullptr; attributes += 2) {
        id = std::strcmp(attributes[0], "appid") == 0 ? attributes[1] : id;
        program = std::strcmp(attributes[0], "exec") == 0 ? attributes[1] : program;
    }
    if (search.id == id) {
        search.found = true;
        search.program = program;
    }
}

/// Whether a manifest names the application that is searched for.
bool Names(const fs::path& manifest, Search& search)
{
    std::ifstream stream(manifest, std::ios::binary);
    std::string text(static_cast<std::size_t>(kMostRead), '\0');
    stream.read(text.data(), kMostRead);
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    XML_SetUserData(parser.get(), &search);
    XML_SetStartElementHandler(parser.get(), OnElement);
    // The part of a broken manifest before its error counts.
    XML_Parse(parser.get(), text.data(), static_cast<int>(stream.gcount()), XML_TRUE);
    return search.found;
}

std::vector<fs::path> Manifests()
{
    std::vector<fs::path> files;
    std::error_code error;
    fs::directory_iterator entry(kManifests, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (entry->path().extension() == ".xml" && entry->is_regular_file(error)) {
            files.push_back(entry->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

LaunchStatus CollectLaunch()
{
    using State = LaunchStatus::State;
    LaunchStatus launch;
    launch.companion = VQM_APP_ID ".gui";
    Search search{launch.companion};
    const std::vector<fs::path> manifests = Manifests();
    const auto manifest = std::find_if(manifests.begin(), manifests.end(),
                                       [&search](const fs::path& file) { return Names(file, search); });
    if (manifest == manifests.end()) {
        launch.state = State::kNoEntry;
        launch.problem = std::string("no manifest in ") + kManifests + " names " + Quoted(launch.companion);
        return launch;
    }
    launch.entry = manifest->string();
    launch.program = search.program;
    launch.state = access(launch.program.c_str(), X_OK) == 0 ? State::kReady : State::kNoProgram;
    if (launch.state == State::kNoProgram) {
        launch.problem = Quoted(launch.entry) + " names the program " + Quoted(launch.program) +
                         ", which is missing or may not be run";
    }
    return launch;
}

} // namespace status

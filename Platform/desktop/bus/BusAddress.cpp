#include "Platform/desktop/bus/BusAddress.h"

#include <cstdlib>
#include <sys/stat.h>

#include "Platform/desktop/bus/CappedText.h"

namespace desktop {

namespace {

/// With such a place, libdbus starts a bus if there is none.
constexpr std::string_view kLaunchesOne = "autolaunch:";
constexpr std::size_t kMostPlaces = 8;
constexpr std::size_t kLongestShown = 300;

std::string_view FromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool LaunchesOne(std::string_view place)
{
    return place.substr(0, kLaunchesOne.size()) == kLaunchesOne;
}

} // namespace

std::vector<std::string> PlacesOf(std::string_view address)
{
    std::vector<std::string> places;
    while (!address.empty() && places.size() < kMostPlaces) {
        const std::string_view place = address.substr(0, address.find(';'));
        address.remove_prefix(place.size() < address.size() ? place.size() + 1 : place.size());
        if (!place.empty()) {
            places.emplace_back(place);
        }
    }
    return places;
}

std::string SessionBusAddress()
{
    const std::string_view address = FromEnvironment("DBUS_SESSION_BUS_ADDRESS");
    if (!address.empty()) {
        std::string known;
        for (const std::string& place : PlacesOf(address)) {
            if (!LaunchesOne(place)) {
                known += (known.empty() ? "" : ";") + place;
            }
        }
        return known;
    }
    const std::string_view folder = FromEnvironment("XDG_RUNTIME_DIR");
    const std::string path = std::string(folder) + "/bus";
    struct stat status {};
    if (folder.empty() || stat(path.c_str(), &status) == -1 || !S_ISSOCK(status.st_mode)) {
        return "";
    }
    return "unix:path=" + path;
}

std::string ShownAddress(const std::string& address)
{
    return CappedText(address, kLongestShown);
}

} // namespace desktop

#include "Platform/desktop/bus/BusProbe.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <dbus/dbus.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

#include "Platform/common/FileDescriptor.h"
#include "Platform/desktop/bus/BusAddress.h"

namespace desktop {

namespace {

using Clock = std::chrono::steady_clock;

enum class PlaceKind { kInvalid, kUnixSocket, kOther };

struct SocketAddress {
    PlaceKind kind = PlaceKind::kInvalid;
    sockaddr_un address{};
    socklen_t size = 0;
};

SocketAddress UnixSocket(std::string_view name, bool abstract)
{
    SocketAddress result;
    const std::size_t at = abstract ? 1 : 0; // an abstract name begins with a zero byte
    if (name.size() + at >= sizeof result.address.sun_path) {
        return result;
    }
    result.kind = PlaceKind::kUnixSocket;
    result.address.sun_family = AF_UNIX;
    std::memcpy(result.address.sun_path + at, name.data(), name.size());
    result.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + at + name.size());
    return result;
}

SocketAddress ParsePlace(const std::string& place)
{
    DBusAddressEntry** entries = nullptr;
    int count = 0;
    if (dbus_parse_address(place.c_str(), &entries, &count, nullptr) == FALSE) {
        return {};
    }
    const std::unique_ptr<DBusAddressEntry*, void (*)(DBusAddressEntry**)> owned(entries, dbus_address_entries_free);
    if (count == 0) {
        return {};
    }
    const char* path = dbus_address_entry_get_value(entries[0], "path");
    const char* abstract = dbus_address_entry_get_value(entries[0], "abstract");
    if (std::strcmp(dbus_address_entry_get_method(entries[0]), "unix") != 0 ||
        (path == nullptr && abstract == nullptr)) {
        SocketAddress other;
        other.kind = PlaceKind::kOther;
        return other;
    }
    return UnixSocket(path != nullptr ? path : abstract, path == nullptr);
}

/// Closed: the place does not take the connection. A Unix socket takes it at once or not at all: one with a
/// full queue refuses, because this socket does not wait.
platform::FileDescriptor Connect(const SocketAddress& place)
{
    platform::FileDescriptor bus(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!bus.IsOpen() || connect(bus.Get(), reinterpret_cast<const sockaddr*>(&place.address), place.size) == -1) {
        return platform::FileDescriptor();
    }
    return bus;
}

/// A place that has been greeted.
struct Greeted {
    enum class State { kWaiting, kAnswers, kFailed };

    std::string place;
    platform::FileDescriptor socket;
    State state = State::kFailed;
};

Greeted Greet(const std::string& place)
{
    Greeted result;
    result.place = place;
    const SocketAddress address = ParsePlace(place);
    if (address.kind == PlaceKind::kOther) {
        result.state = Greeted::State::kAnswers; // not probed: other kinds may take long to connect
    } else if (address.kind == PlaceKind::kUnixSocket) {
        result.socket = Connect(address);
        // A zero byte, then the question which ways of authentication there are.
        constexpr char kGreeting[] = "\0AUTH\r\n";
        if (result.socket.IsOpen() && send(result.socket.Get(), kGreeting, sizeof kGreeting - 1, MSG_NOSIGNAL) != -1) {
            result.state = Greeted::State::kWaiting;
        }
    }
    return result;
}

/// Waits until `end` for at least one answer, and takes all that have come. Returns false when the time
/// is over.
bool TakeAnswers(std::vector<Greeted>& all, Clock::time_point end)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left <= std::chrono::milliseconds::zero()) {
        return false;
    }
    std::vector<pollfd> sockets;
    sockets.reserve(all.size());
    for (const Greeted& one : all) {
        // A negative descriptor is left out.
        sockets.push_back({one.state == Greeted::State::kWaiting ? one.socket.Get() : -1, POLLIN, 0});
    }
    // A signal, such as the end of a child, is not the end of the time.
    if (poll(sockets.data(), sockets.size(), static_cast<int>(left.count())) == -1 && errno != EINTR) {
        return false;
    }
    for (std::size_t index = 0; index < all.size(); ++index) {
        if ((sockets[index].revents & POLLIN) != 0) {
            char byte = 0;
            const bool answers = recv(all[index].socket.Get(), &byte, 1, MSG_DONTWAIT) == 1;
            all[index].state = answers ? Greeted::State::kAnswers : Greeted::State::kFailed;
        } else if (sockets[index].revents != 0) {
            all[index].state = Greeted::State::kFailed;
        }
    }
    return true;
}

} // namespace

std::optional<std::string> AnsweringPlace(std::string_view address, std::chrono::milliseconds timeout)
{
    const Clock::time_point end = Clock::now() + timeout;
    std::vector<Greeted> all;
    for (const std::string& place : PlacesOf(address)) {
        all.push_back(Greet(place));
    }
    const auto mayBeFirst = [](const Greeted& one) { return one.state != Greeted::State::kFailed; };
    const auto answers = [](const Greeted& one) { return one.state == Greeted::State::kAnswers; };
    // The address's order decides: a place that answers waits for those before it while there is time.
    for (auto first = std::find_if(all.begin(), all.end(), mayBeFirst);
         first != all.end() && first->state == Greeted::State::kWaiting && TakeAnswers(all, end);
         first = std::find_if(all.begin(), all.end(), mayBeFirst)) {
    }
    const auto found = std::find_if(all.begin(), all.end(), answers);
    return found != all.end() ? std::optional(found->place) : std::nullopt;
}

bool BusAnswers(std::string_view address, std::chrono::milliseconds timeout)
{
    return AnsweringPlace(address, timeout).has_value();
}

bool TakesConnections(const std::string& place)
{
    const SocketAddress address = ParsePlace(place);
    return address.kind == PlaceKind::kUnixSocket && Connect(address).IsOpen();
}

} // namespace desktop

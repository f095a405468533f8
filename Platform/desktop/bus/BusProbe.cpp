#include "Platform/desktop/bus/BusProbe.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <dbus/dbus.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>

#include "Platform/desktop/base/FileDescriptor.h"

namespace desktop {

namespace {

struct SocketAddress {
    sockaddr_un address{};
    socklen_t size = 0;
};

std::optional<SocketAddress> UnixSocket(std::string_view name, bool abstract)
{
    SocketAddress result;
    const std::size_t at = abstract ? 1 : 0; // an abstract name begins with a zero byte
    if (name.size() + at >= sizeof result.address.sun_path) {
        return std::nullopt;
    }
    result.address.sun_family = AF_UNIX;
    std::memcpy(result.address.sun_path + at, name.data(), name.size());
    result.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + at + name.size());
    return result;
}

/// The socket of the first of the address's places.
std::optional<SocketAddress> ParseAddress(const std::string& address)
{
    DBusAddressEntry** places = nullptr;
    int count = 0;
    if (dbus_parse_address(address.c_str(), &places, &count, nullptr) == FALSE) {
        return std::nullopt;
    }
    const std::unique_ptr<DBusAddressEntry*, void (*)(DBusAddressEntry**)> owned(places, dbus_address_entries_free);
    if (count == 0 || std::strcmp(dbus_address_entry_get_method(places[0]), "unix") != 0) {
        return std::nullopt;
    }
    const char* path = dbus_address_entry_get_value(places[0], "path");
    const char* abstract = dbus_address_entry_get_value(places[0], "abstract");
    if (path == nullptr && abstract == nullptr) {
        return std::nullopt;
    }
    return UnixSocket(path != nullptr ? path : abstract, path == nullptr);
}

/// A signal, the end of a child for one, must not pass for silence.
bool WaitReadable(int fd, int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    pollfd answer{fd, POLLIN, 0};
    for (auto left = end - Clock::now(); left > Clock::duration::zero(); left = end - Clock::now()) {
        const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(left).count() + 1;
        const int ready = poll(&answer, 1, static_cast<int>(wait));
        if (ready != -1 || errno != EINTR) {
            return ready == 1 && (answer.revents & POLLIN) != 0;
        }
    }
    return false;
}

} // namespace

bool BusAnswers(std::string_view address, int milliseconds)
{
    const std::optional<SocketAddress> place = ParseAddress(std::string(address));
    if (!place) {
        return true;
    }
    const FileDescriptor bus(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!bus.IsOpen() || connect(bus.Get(), reinterpret_cast<const sockaddr*>(&place->address), place->size) == -1) {
        return false;
    }
    // A zero byte, then the question which ways to identify oneself there are.
    constexpr char kGreeting[] = "\0AUTH\r\n";
    if (send(bus.Get(), kGreeting, sizeof kGreeting - 1, MSG_NOSIGNAL) == -1) {
        return false;
    }
    return WaitReadable(bus.Get(), milliseconds);
}

} // namespace desktop

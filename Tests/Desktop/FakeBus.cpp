#include "Tests/Desktop/FakeBus.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace fixtures {

namespace {

/// False at the end of the connection.
bool ReadMore(int peer, std::string& input)
{
    std::array<char, 4096> part;
    const ssize_t size = read(peer, part.data(), part.size());
    input.append(part.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    return size > 0;
}

void Write(int peer, const std::string& text)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = send(peer, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (size <= 0) {
            return;
        }
        done += static_cast<std::size_t>(size);
    }
}

/// Believes any identity. What follows the last line stays in `input`.
bool Authenticate(int peer, std::string& input)
{
    for (;;) {
        for (std::size_t end = input.find("\r\n"); end != std::string::npos; end = input.find("\r\n")) {
            const std::string line = input.substr(0, end);
            input.erase(0, end + 2);
            if (line.find("AUTH EXTERNAL") != std::string::npos) {
                Write(peer, "OK 0123456789abcdef0123456789abcdef\r\n");
            } else if (line.find("AUTH") != std::string::npos) {
                Write(peer, "REJECTED EXTERNAL\r\n");
            } else if (line == "BEGIN") {
                return true;
            } else {
                Write(peer, "ERROR\r\n");
            }
        }
        if (!ReadMore(peer, input)) {
            return false;
        }
    }
}

void Reply(int peer, DBusMessage* call, const std::function<bool(DBusMessage*, DBusMessage*)>& answer)
{
    DBusMessage* reply = dbus_message_new_method_return(call);
    dbus_message_set_sender(reply, DBUS_SERVICE_DBUS);
    dbus_message_set_serial(reply, dbus_message_get_serial(call));
    if (answer(call, reply)) {
        char* bytes = nullptr;
        int size = 0;
        dbus_message_marshal(reply, &bytes, &size);
        Write(peer, std::string(bytes, static_cast<std::size_t>(size)));
        dbus_free(bytes);
    }
    dbus_message_unref(reply);
}

void Serve(int peer, const std::function<bool(DBusMessage*, DBusMessage*)>& answer)
{
    std::string input;
    if (!Authenticate(peer, input)) {
        return;
    }
    do {
        for (;;) {
            const int needed = dbus_message_demarshal_bytes_needed(input.data(), static_cast<int>(input.size()));
            if (needed <= 0 || static_cast<std::size_t>(needed) > input.size()) {
                break;
            }
            DBusMessage* call = dbus_message_demarshal(input.data(), needed, nullptr);
            input.erase(0, static_cast<std::size_t>(needed));
            if (dbus_message_get_no_reply(call) == FALSE) {
                Reply(peer, call, answer);
            }
            dbus_message_unref(call);
        }
    } while (ReadMore(peer, input));
}

} // namespace

int ListenOn(const std::string& path)
{
    const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
    const bool ready =
        bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && listen(listening, 16) == 0;
    return ready ? listening : -1;
}

void ServeFakeBus(int listening, const std::function<bool(DBusMessage*, DBusMessage*)>& answer)
{
    for (;;) {
        const int peer = accept(listening, nullptr, nullptr);
        if (peer == -1) {
            _exit(EXIT_FAILURE);
        }
        Serve(peer, answer);
        close(peer);
    }
}

} // namespace fixtures

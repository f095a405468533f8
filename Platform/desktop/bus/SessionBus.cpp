#include "Platform/desktop/bus/SessionBus.h"

#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <utility>

#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/bus/BusProbe.h"

namespace desktop {

namespace {

constexpr std::string_view kLaunchesOne = "autolaunch:";

std::string_view FromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

class BusError {
public:
    BusError() { dbus_error_init(&error_); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { dbus_error_free(&error_); }

    DBusError* Get() { return &error_; }
    bool Is(const char* name) const { return dbus_error_has_name(&error_, name) != FALSE; }

private:
    DBusError error_{};
};

BusMessage ToBus(const char* method)
{
    return BusMessage(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
}

std::string OwnerRule(const std::string& name)
{
    return "type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS
           "',member='NameOwnerChanged',arg0='" +
           name + "'";
}

} // namespace

std::string SessionBusAddress()
{
    const std::string_view address = FromEnvironment("DBUS_SESSION_BUS_ADDRESS");
    if (!address.empty()) {
        return address.find(kLaunchesOne) == std::string_view::npos ? std::string(address) : "";
    }
    const std::string_view folder = FromEnvironment("XDG_RUNTIME_DIR");
    const std::string path = std::string(folder) + "/bus";
    struct stat status {};
    if (folder.empty() || stat(path.c_str(), &status) == -1 || !S_ISSOCK(status.st_mode)) {
        return "";
    }
    return "unix:path=" + path;
}

bool SessionBus::Join()
{
    if (IsJoined()) {
        return true;
    }
    const std::string address = SessionBusAddress();
    if (address.empty()) {
        PLATFORM_LOG(DLOG_INFO, "no session bus: popups stay as they are");
        return false;
    }
    // Asked beforehand: the library waits a minute and a half for a bus that hangs.
    if (BusAnswers(address, kTimeoutMilliseconds)) {
        connection_.reset(dbus_connection_open_private(address.c_str(), nullptr));
    }
    if (IsJoined()) {
        dbus_connection_set_exit_on_disconnect(connection_.get(), FALSE);
        if (SayHello()) {
            return true;
        }
        connection_.reset();
    }
    PLATFORM_LOG(DLOG_WARN, "the session bus at %s does not answer: popups stay as they are", address.c_str());
    return false;
}

void SessionBus::Leave()
{
    StopWatching();
    connection_.reset();
}

/// What `dbus_bus_register` does, with a timeout.
bool SessionBus::SayHello()
{
    BusMessage reply;
    const char* name = nullptr;
    if (Call(ToBus("Hello").get(), reply) != BusAnswer::kDone ||
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) == FALSE) {
        return false;
    }
    return dbus_bus_set_unique_name(connection_.get(), name) != FALSE;
}

BusAnswer SessionBus::Call(DBusMessage* request, BusMessage& reply)
{
    reply.reset();
    if (!IsJoined() || request == nullptr) {
        return BusAnswer::kSilent;
    }
    dbus_message_set_auto_start(request, FALSE);
    BusError error;
    reply.reset(
        dbus_connection_send_with_reply_and_block(connection_.get(), request, kTimeoutMilliseconds, error.Get()));
    DispatchSoon();
    if (reply != nullptr) {
        return BusAnswer::kDone;
    }
    const bool nobody = error.Is(DBUS_ERROR_NO_REPLY) || error.Is(DBUS_ERROR_TIMEOUT) ||
                        error.Is(DBUS_ERROR_DISCONNECTED) || error.Is(DBUS_ERROR_SERVICE_UNKNOWN) ||
                        error.Is(DBUS_ERROR_NAME_HAS_NO_OWNER);
    return nobody ? BusAnswer::kSilent : BusAnswer::kRefused;
}

std::string SessionBus::AskBus(const char* method, const char* argument)
{
    const BusMessage request = ToBus(method);
    if (argument != nullptr) {
        dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
    }
    BusMessage reply;
    const char* text = nullptr;
    if (Call(request.get(), reply) != BusAnswer::kDone ||
        dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID) == FALSE) {
        return "";
    }
    return text;
}

std::string SessionBus::OwnerOf(const char* name)
{
    return AskBus("GetNameOwner", name);
}

std::string SessionBus::Identity()
{
    return AskBus("GetId", nullptr);
}

void SessionBus::WatchOwner(const char* name, OwnerChanged changed)
{
    StopWatching();
    int socket = -1;
    if (!IsJoined() || dbus_connection_get_unix_fd(connection_.get(), &socket) == FALSE) {
        return;
    }
    watchedName_ = name;
    changed_ = std::move(changed);
    dbus_connection_add_filter(connection_.get(), OnMessage, this, nullptr);
    dbus_bus_add_match(connection_.get(), OwnerRule(watchedName_).c_str(), nullptr);
    readable_ = ecore_main_fd_handler_add(socket, ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
}

void SessionBus::StopWatching()
{
    if (queued_ != nullptr) {
        ecore_job_del(std::exchange(queued_, nullptr));
    }
    if (readable_ != nullptr) {
        ecore_main_fd_handler_del(std::exchange(readable_, nullptr));
    }
    if (!watchedName_.empty()) {
        dbus_connection_remove_filter(connection_.get(), OnMessage, this);
        dbus_bus_remove_match(connection_.get(), OwnerRule(watchedName_).c_str(), nullptr);
        watchedName_.clear();
    }
}

DBusHandlerResult SessionBus::OnMessage(DBusConnection* /*connection*/, DBusMessage* message, void* data)
{
    auto* self = static_cast<SessionBus*>(data);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") != FALSE &&
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before, DBUS_TYPE_STRING,
                              &now, DBUS_TYPE_INVALID) != FALSE &&
        self->watchedName_ == name) {
        self->changed_(now);
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

Eina_Bool SessionBus::OnReadable(void* data, Ecore_Fd_Handler* /*handler*/)
{
    auto* self = static_cast<SessionBus*>(data);
    dbus_connection_read_write(self->connection_.get(), 0);
    self->DispatchAll();
    if (self->connection_ != nullptr && dbus_connection_get_is_connected(self->connection_.get()) == FALSE) {
        PLATFORM_LOG(DLOG_WARN, "the session bus has gone away");
        self->readable_ = nullptr; // deleted by the result
        self->changed_("");
        return ECORE_CALLBACK_CANCEL;
    }
    return ECORE_CALLBACK_RENEW;
}

/// A call that waits for its answer reads what else arrives, and then the socket shows nothing.
void SessionBus::DispatchSoon()
{
    if (readable_ != nullptr && queued_ == nullptr &&
        dbus_connection_get_dispatch_status(connection_.get()) == DBUS_DISPATCH_DATA_REMAINS) {
        queued_ = ecore_job_add(OnQueued, this);
    }
}

void SessionBus::OnQueued(void* data)
{
    auto* self = static_cast<SessionBus*>(data);
    self->queued_ = nullptr;
    self->DispatchAll();
}

void SessionBus::DispatchAll()
{
    while (dbus_connection_dispatch(connection_.get()) == DBUS_DISPATCH_DATA_REMAINS) {
    }
}

} // namespace desktop

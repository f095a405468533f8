#include "Platform/desktop/bus/BusConnection.h"

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <utility>

namespace desktop {

namespace {

using Clock = std::chrono::steady_clock;

/// The names that `poll` and libdbus have for the same conditions.
constexpr struct {
    short event;
    unsigned int watch;
} kConditions[] = {
    {POLLIN, DBUS_WATCH_READABLE},
    {POLLOUT, DBUS_WATCH_WRITABLE},
    {POLLERR, DBUS_WATCH_ERROR},
    {POLLHUP, DBUS_WATCH_HANGUP},
};

class BusError {
public:
    explicit BusError(DBusMessage* message)
    {
        dbus_error_init(&error_);
        dbus_set_error_from_message(&error_, message);
    }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { dbus_error_free(&error_); }

    bool IsSilence() const
    {
        constexpr const char* kNoAnswer[] = {DBUS_ERROR_NO_REPLY, DBUS_ERROR_TIMEOUT, DBUS_ERROR_DISCONNECTED,
                                             DBUS_ERROR_SERVICE_UNKNOWN, DBUS_ERROR_NAME_HAS_NO_OWNER};
        return std::any_of(std::begin(kNoAnswer), std::end(kNoAnswer),
                           [this](const char* name) { return dbus_error_has_name(&error_, name) != FALSE; });
    }

private:
    DBusError error_{};
};

} // namespace

std::unique_ptr<BusConnection> BusConnection::Open(const std::string& place)
{
    DBusConnection* opened = dbus_connection_open_private(place.c_str(), nullptr);
    if (opened == nullptr) {
        return nullptr;
    }
    std::unique_ptr<BusConnection> connection(new BusConnection(opened));
    return connection->Prepare() ? std::move(connection) : nullptr;
}

bool BusConnection::Prepare()
{
    DBusConnection* connection = connection_.get();
    // The process must survive the bus.
    dbus_connection_set_exit_on_disconnect(connection, FALSE);
    int socket = -1;
    if (dbus_connection_get_unix_fd(connection, &socket) == FALSE) {
        return false;
    }
    // A duplicate, because libdbus closes its descriptor when the bus goes away, and the main loop must
    // never watch a number that is closed or belongs to another file.
    socket_ = platform::FileDescriptor(fcntl(socket, F_DUPFD_CLOEXEC, 0));
    return socket_.IsOpen() &&
           dbus_connection_set_watch_functions(connection, OnWatchAdded, OnWatchRemoved, OnWatchToggled, this,
                                               nullptr) != FALSE &&
           dbus_connection_add_filter(connection, OnMessage, this, nullptr) != FALSE;
}

BusConnection::~BusConnection()
{
    if (ready_ != nullptr) {
        ecore_main_fd_handler_del(std::exchange(ready_, nullptr));
    }
    asked_.reset();
    dbus_connection_remove_filter(connection_.get(), OnMessage, this);
    dbus_connection_set_watch_functions(connection_.get(), nullptr, nullptr, nullptr, nullptr, nullptr);
}

bool BusConnection::IsConnected() const
{
    return dbus_connection_get_is_connected(connection_.get()) != FALSE;
}

bool BusConnection::TakeName(const BusReply& hello)
{
    const std::string name = UniqueNameIn(hello);
    return !name.empty() && dbus_bus_set_unique_name(connection_.get(), name.c_str()) != FALSE;
}

bool BusConnection::HasName() const
{
    return dbus_bus_get_unique_name(connection_.get()) != nullptr;
}

BusConnection::PendingCall BusConnection::Post(const BusMessage& request)
{
    DBusPendingCall* call = nullptr;
    if (request != nullptr) {
        dbus_message_set_auto_start(request.get(), FALSE);
        // Without the library's timeout, for which the main loop would have to serve its timers.
        dbus_connection_send_with_reply(connection_.get(), request.get(), &call, DBUS_TIMEOUT_INFINITE);
    }
    return PendingCall(call);
}

BusReply BusConnection::ReplyTo(DBusPendingCall* call) const
{
    BusMessage message(dbus_pending_call_steal_reply(call));
    if (message == nullptr) {
        return {};
    }
    if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_ERROR) {
        return {BusAnswer::kDone, std::move(message)};
    }
    return {BusError(message.get()).IsSilence() ? BusAnswer::kSilent : BusAnswer::kRefused, nullptr};
}

BusReply BusConnection::Call(const BusMessage& request)
{
    const PendingCall call = Post(request);
    if (call == nullptr || !ServeUntil([&call] { return dbus_pending_call_get_completed(call.get()) != FALSE; })) {
        return {};
    }
    return ReplyTo(call.get());
}

void BusConnection::Send(const BusMessage& request)
{
    if (request != nullptr) {
        dbus_message_set_auto_start(request.get(), FALSE);
        dbus_message_set_no_reply(request.get(), TRUE);
        dbus_connection_send(connection_.get(), request.get(), nullptr);
    }
}

void BusConnection::Ask(const BusMessage& request, Answered answered)
{
    asked_ = Post(request);
    answered_ = std::move(answered);
    if (asked_ != nullptr) {
        dbus_pending_call_set_notify(asked_.get(), OnAnswered, this, nullptr);
    }
}

void BusConnection::CancelAsk()
{
    asked_.reset();
}

void BusConnection::OnAnswered(DBusPendingCall* call, void* data)
{
    auto* self = static_cast<BusConnection*>(data);
    const BusReply reply = self->ReplyTo(call);
    // Moved out first: the callback may send the next request.
    const PendingCall answeredCall = std::move(self->asked_);
    const Answered answered = std::move(self->answered_);
    answered(reply);
}

bool BusConnection::WaitForAnswer()
{
    const DBusPendingCall* call = asked_.get();
    return ServeUntil([this, call] { return asked_.get() != call; });
}

DBusHandlerResult BusConnection::OnMessage(DBusConnection* /*connection*/, DBusMessage* message, void* data)
{
    const auto* self = static_cast<BusConnection*>(data);
    if (self->signalled_ && dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_SIGNAL &&
        dbus_message_has_sender(message, DBUS_SERVICE_DBUS) != FALSE) {
        self->signalled_(message);
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

void BusConnection::ServeOnLoop(std::function<void()> lost)
{
    lost_ = std::move(lost);
    if (ready_ == nullptr) {
        ready_ = ecore_main_fd_handler_add(socket_.Get(), ECORE_FD_READ, OnReady, this, nullptr, nullptr);
        UpdateInterest();
    }
}

Eina_Bool BusConnection::OnReady(void* data, Ecore_Fd_Handler* /*handler*/)
{
    auto* self = static_cast<BusConnection*>(data);
    self->Serve(std::chrono::milliseconds::zero());
    if (self->IsConnected()) {
        return ECORE_CALLBACK_RENEW;
    }
    self->ready_ = nullptr; // deleted by the result
    const std::function<void()> lost = std::move(self->lost_);
    lost();
    return ECORE_CALLBACK_CANCEL;
}

dbus_bool_t BusConnection::OnWatchAdded(DBusWatch* watch, void* data)
{
    auto* self = static_cast<BusConnection*>(data);
    self->watches_.push_back(watch);
    self->UpdateInterest();
    return TRUE;
}

void BusConnection::OnWatchRemoved(DBusWatch* watch, void* data)
{
    auto* self = static_cast<BusConnection*>(data);
    auto& watches = self->watches_;
    watches.erase(std::remove(watches.begin(), watches.end(), watch), watches.end());
    self->UpdateInterest();
}

void BusConnection::OnWatchToggled(DBusWatch* /*watch*/, void* data)
{
    static_cast<BusConnection*>(data)->UpdateInterest();
}

/// The conditions that libdbus waits for: reading, writing or both.
unsigned int BusConnection::Interest() const
{
    unsigned int interest = 0;
    for (DBusWatch* watch : watches_) {
        interest |= dbus_watch_get_enabled(watch) != FALSE ? dbus_watch_get_flags(watch) : 0;
    }
    return interest;
}

void BusConnection::UpdateInterest()
{
    if (ready_ != nullptr) {
        const bool writes = (Interest() & DBUS_WATCH_WRITABLE) != 0;
        // Always for reading, which reports the end of the connection.
        ecore_main_fd_handler_active_set(
            ready_, static_cast<Ecore_Fd_Handler_Flags>(ECORE_FD_READ | (writes ? ECORE_FD_WRITE : 0)));
    }
}

/// Lets libdbus do what it waits for. The watches may change meanwhile.
void BusConnection::Handle(unsigned int flags)
{
    for (const unsigned int way : {DBUS_WATCH_READABLE, DBUS_WATCH_WRITABLE}) {
        const auto found = std::find_if(watches_.begin(), watches_.end(), [way](DBusWatch* watch) {
            return dbus_watch_get_enabled(watch) != FALSE && (dbus_watch_get_flags(watch) & way) != 0;
        });
        const unsigned int seen = flags & (way | DBUS_WATCH_ERROR | DBUS_WATCH_HANGUP);
        if (seen != 0 && found != watches_.end()) {
            dbus_watch_handle(*found, seen);
        }
    }
}

void BusConnection::Serve(std::chrono::milliseconds longest)
{
    const unsigned int interest = Interest();
    pollfd socket{socket_.Get(), 0, 0};
    for (const auto& [event, watch] : kConditions) {
        socket.events = static_cast<short>(socket.events | ((interest & watch) != 0 ? event : 0));
    }
    if (poll(&socket, 1, static_cast<int>(longest.count())) > 0) {
        unsigned int seen = 0;
        for (const auto& [event, watch] : kConditions) {
            seen |= (socket.revents & event) != 0 ? watch : 0U;
        }
        Handle(seen);
    }
    // One read may bring many messages; `poll` does not report those that the library holds already.
    while (dbus_connection_dispatch(connection_.get()) == DBUS_DISPATCH_DATA_REMAINS) {
    }
}

/// False when the condition does not become true in time, or the bus is gone.
bool BusConnection::ServeUntil(const std::function<bool()>& condition)
{
    const Clock::time_point end = Clock::now() + kAnswerTimeout;
    while (!condition()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left <= std::chrono::milliseconds::zero() || !IsConnected()) {
            return false;
        }
        Serve(left);
    }
    return true;
}

} // namespace desktop

#include "Tests/Support/NotificationService.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <dbus/dbus.h>
#include <fstream>
#include <memory>
#include <unistd.h>
#include <utility>
#include <vector>

#include "Tests/Support/SessionConnection.h"

namespace fixtures {

namespace {

using Until = ServiceManners::Until;

constexpr char kName[] = "org.freedesktop.Notifications";
constexpr std::chrono::milliseconds kSignalPollInterval{20};

volatile std::sig_atomic_t answer = 0;
volatile std::sig_atomic_t drop = 0;

struct Release {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Release>;

class Service {
public:
    Service(const ServiceManners& manners, const std::string& log)
        : manners_(manners), until_(manners.until), log_(log, std::ios::app), bus_(ConnectToSessionBus())
    {
    }

    [[noreturn]] void Serve()
    {
        for (int change = 0; change < manners_.nameChanges; ++change) {
            dbus_bus_request_name(bus_, kName, 0, nullptr);
            dbus_bus_release_name(bus_, kName, nullptr);
        }
        dbus_bus_request_name(bus_, kName, 0, nullptr);
        Log("ready");
        while (dbus_connection_read_write(bus_, static_cast<int>(kSignalPollInterval.count())) != FALSE) {
            ObeySignals();
            while (Message message{dbus_connection_pop_message(bus_)}) {
                Take(std::move(message));
            }
        }
        std::_Exit(EXIT_SUCCESS);
    }

private:
    void Log(const std::string& line) { log_ << line << std::endl; }

    void ObeySignals()
    {
        if (std::exchange(answer, 0) != 0) {
            Log("answers");
            until_ = Until::kAnswers;
            for (const Message& message : std::exchange(kept_, {})) {
                Answer(message.get());
            }
        }
        if (std::exchange(drop, 0) != 0) {
            dbus_bus_release_name(bus_, kName, nullptr);
            Log("dropped");
        }
    }

    void Take(Message message)
    {
        if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_METHOD_CALL) {
            return;
        }
        Note(message.get());
        if (until_ == Until::kAnswers) {
            Answer(message.get());
        } else if (until_ == Until::kKeepsRequests) {
            kept_.push_back(std::move(message));
        }
    }

    void Note(DBusMessage* request)
    {
        const std::string method = dbus_message_get_member(request);
        const char* application = nullptr;
        dbus_uint32_t cookie = 0;
        if (method == "Inhibit") {
            dbus_message_get_args(request, nullptr, DBUS_TYPE_STRING, &application, DBUS_TYPE_INVALID);
            Log(method + " " + dbus_message_get_signature(request) + " " + application);
        } else if (method == "UnInhibit") {
            dbus_message_get_args(request, nullptr, DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
            Log(method + " " + std::to_string(cookie));
        } else if (method == "Set") {
            paused_ = manners_.pauses ? ValueIn(request) : paused_;
            Log(method + (ValueIn(request) ? " true" : " false"));
        } else {
            Log(method);
        }
    }

    static bool ValueIn(DBusMessage* request)
    {
        DBusMessageIter arguments;
        DBusMessageIter variant;
        dbus_bool_t value = FALSE;
        dbus_message_iter_init(request, &arguments);
        dbus_message_iter_next(&arguments);
        dbus_message_iter_next(&arguments);
        dbus_message_iter_recurse(&arguments, &variant);
        dbus_message_iter_get_basic(&variant, &value);
        return value != FALSE;
    }

    void Answer(DBusMessage* request)
    {
        const std::string method = dbus_message_get_member(request);
        const bool inhibition = method == "Inhibit" || method == "UnInhibit";
        const bool pauseSwitch = method == "Get" || method == "Set";
        Message reply(dbus_message_new_method_return(request));
        if ((inhibition && !manners_.inhibits) || (pauseSwitch && !manners_.pauses)) {
            reply.reset(dbus_message_new_error(request, DBUS_ERROR_UNKNOWN_METHOD, "not here"));
        } else if (method == "Inhibit") {
            const dbus_uint32_t cookie = 42;
            dbus_message_append_args(reply.get(), DBUS_TYPE_UINT32, &cookie, DBUS_TYPE_INVALID);
        } else if (method == "Get") {
            AppendPaused(reply.get());
        } else if (method == "GetServerInformation") {
            const std::string name(manners_.nameBytes, 'x');
            const char* text = name.c_str();
            for (int part = 0; part < 4; ++part) {
                dbus_message_append_args(reply.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
                text = "";
            }
        }
        dbus_connection_send(bus_, reply.get(), nullptr);
        dbus_connection_flush(bus_);
    }

    void AppendPaused(DBusMessage* reply) const
    {
        DBusMessageIter arguments;
        DBusMessageIter variant;
        const dbus_bool_t value = paused_ ? TRUE : FALSE;
        dbus_message_iter_init_append(reply, &arguments);
        dbus_message_iter_open_container(&arguments, DBUS_TYPE_VARIANT, DBUS_TYPE_BOOLEAN_AS_STRING, &variant);
        dbus_message_iter_append_basic(&variant, DBUS_TYPE_BOOLEAN, &value);
        dbus_message_iter_close_container(&arguments, &variant);
    }

    ServiceManners manners_;
    Until until_;
    std::ofstream log_;
    DBusConnection* bus_;
    bool paused_ = false;
    std::vector<Message> kept_;
};

} // namespace

void ServeNotifications(const ServiceManners& manners, const std::string& log)
{
    std::signal(SIGUSR1, [](int) { answer = 1; });
    std::signal(SIGUSR2, [](int) { drop = 1; });
    Service(manners, log).Serve();
}

} // namespace fixtures

#include "Tests/Desktop/PopupsFixture.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <Ecore.h>
#include <fcntl.h>
#include <tvcontext.h>
#include <unistd.h>

#include "Platform/desktop/bus/BusProbe.h"
#include "Platform/desktop/bus/PopupRecord.h"
#include "Platform/desktop/environment/ApplicationId.h"

namespace fixtures {

std::string OutputOf(const std::string& command)
{
    std::string output;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r"); // NOLINT(cert-env33-c)
    std::array<char, 256> part;
    while (pipe != nullptr && fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    pclose(pipe);
    return output;
}

std::string Paused()
{
    return OutputOf("gdbus call --session -d org.freedesktop.Notifications -o /org/freedesktop/Notifications "
                    "-m org.freedesktop.DBus.Properties.Get org.dunstproject.cmd0 paused");
}

bool LoopUntil(const std::function<bool()>& condition)
{
    return Eventually([&] {
        ecore_main_loop_iterate();
        return condition();
    });
}

void HoldBack()
{
    tvcontext_init();
    tvcontext_begin_popup_free();
}

void Popups::SetUpTestSuite()
{
    // Once for all: Ecore that is shut down still catches the end of children.
    const Variable modules("ECORE_NO_SYSTEM_MODULES", "1");
    ecore_init();
}

void Popups::TearDown()
{
    tvcontext_fini();
}

void Popups::StartBus()
{
    const std::string address = "unix:path=" + BusSocket();
    unlink(BusSocket().c_str());
    bus_.emplace(Process::Program({"dbus-daemon", "--session", "--nofork", "--address=" + address}));
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    ASSERT_TRUE(Eventually([&] { return desktop::BusAnswers(address, std::chrono::seconds(1)); }));
}

void Popups::StartDisplay()
{
    const std::string number = folder_ / "display";
    display_.emplace([number] {
        dup2(open("/dev/null", O_RDWR), STDERR_FILENO);
        dup2(open(number.c_str(), O_CREAT | O_WRONLY, 0600), 3);
        execlp("Xvfb", "Xvfb", "-displayfd", "3", "-noreset", "-nolisten", "tcp", nullptr);
        _exit(127);
    });
    ASSERT_TRUE(Eventually([&] { return ReadFile(number).find('\n') != std::string::npos; }));
    setenv("DISPLAY", (":" + ReadFile(number).substr(0, ReadFile(number).find('\n'))).c_str(), 1);
}

void Popups::StartDunst()
{
    if (!display_) {
        StartDisplay();
    }
    daemon_.emplace(Process::Program({"dunst"}));
    ASSERT_TRUE(Eventually([] { return Paused() == kNo; }));
}

void Popups::StartService(const ServiceManners& manners, const std::string& log)
{
    daemon_.emplace([&] { ServeNotifications(manners, log); });
    ASSERT_TRUE(Eventually([&] { return ReadFile(log).find("ready\n") != std::string::npos; }));
}

std::string Popups::Record()
{
    return desktop::PopupRecordFile(desktop::kApplicationId);
}

} // namespace fixtures

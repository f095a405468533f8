#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "Tests/Desktop/Fixtures.h"
#include "Tests/Support/NotificationService.h"

namespace fixtures {

/// The output of a shell command.
std::string OutputOf(const std::string& command);

/// The state of dunst's pause switch: one of the two texts below, or another one when it does not
/// answer.
std::string Paused();
constexpr char kYes[] = "(<true>,)\n";
constexpr char kNo[] = "(<false>,)\n";

/// Runs the main loop until the condition holds; false when it does not in a long time.
bool LoopUntil(const std::function<bool()>& condition);

/// Joins the bus and holds popups back, as the application does at its start.
void HoldBack();

/// A private folder, and on request a real session bus and a real dunst.
class Popups : public testing::Test {
protected:
    static void SetUpTestSuite();
    void TearDown() override;

    std::string BusSocket() const { return folder_ / "bus-socket"; }
    void StartBus(); ///< also again, at the same address
    void StartDunst();
    void StartService(const ServiceManners& manners, const std::string& log);

    static std::string Record();

    TemporaryFolder folder_;
    Variable runtime_{"XDG_RUNTIME_DIR", folder_.Path()};
    Variable address_{"DBUS_SESSION_BUS_ADDRESS"};
    Variable displayName_{"DISPLAY"};
    std::optional<Process> bus_;
    std::optional<Process> display_;
    std::optional<Process> daemon_;

private:
    void StartDisplay();
};

} // namespace fixtures

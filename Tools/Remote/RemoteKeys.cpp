#include "Tools/Remote/RemoteKeys.h"

#include <optional>
#include <string>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Platform/desktop/x11/Instance.h"
#include "Tools/CommandError.h"
#include "Tools/Terminal/Terminal.h"

ExitCode ListHeldKeys()
{
    const DisplayConnection display = OpenDisplay();
    const std::optional<desktop::InstanceFacts> instance = desktop::ReadInstance(display.get());
    if (!instance) {
        throw CommandError(ExitCode::kFindings, std::string(desktop::kApplicationId) + " does not run on display '" +
                                                    DisplayString(display.get()) + "'");
    }
    std::string lines;
    for (const std::string& key : instance->heldKeys) {
        lines += key + '\n';
    }
    const bool wanted = Print(lines);
    for (const std::string& key : instance->failedKeys) {
        PrintError(key + " is taken by another program");
    }
    return !wanted || instance->failedKeys.empty() ? ExitCode::kOk : ExitCode::kFindings;
}

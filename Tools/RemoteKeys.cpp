#include "Tools/RemoteKeys.h"

#include <optional>
#include <string>

#include "Platform/desktop/Instance.h"
#include "Tools/DisplayConnection.h"
#include "Tools/Failure.h"
#include "Tools/Terminal.h"

ExitCode ListHeldKeys()
{
    const DisplayConnection display = OpenDisplay();
    const std::optional<desktop::InstanceFacts> instance = desktop::ReadInstance(display.get());
    if (!instance) {
        throw Failure(ExitCode::kFindings, std::string(desktop::kApplicationId) + " does not run on display '" +
                                               DisplayString(display.get()) + "'");
    }
    std::string lines;
    for (const std::string& key : instance->heldKeys) {
        lines += key + '\n';
    }
    const bool wanted = Print(lines);
    for (const std::string& key : instance->failedKeys) {
        Complain(key + " is taken by another program");
    }
    return !wanted || instance->failedKeys.empty() ? ExitCode::kFine : ExitCode::kFindings;
}

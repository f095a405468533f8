#pragma once

#include "Tools/Commands/DesktopActions.h"

/// Collects what the application, the setting, the schedule and the popups are like, and prints it
/// with what stands in the way.
ExitCode ShowStatus(const StatusOptions& options);

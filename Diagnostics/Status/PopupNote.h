#pragma once

#include <optional>

#include "Diagnostics/Status/PopupAnswer.h"
#include "Diagnostics/Status/PopupStatus.h"
#include "Platform/desktop/bus/PopupRecord.h"

namespace status {

/// What the application noted when it held popups back.
struct PopupNote {
    desktop::PopupRecord record;
    bool alive = false; ///< the process that wrote it
};

/// `answer`: none came in time.
PopupStatus PopupsFrom(const std::optional<PopupNote>& note, const std::optional<PopupAnswer>& answer);

} // namespace status

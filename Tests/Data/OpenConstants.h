#pragma once

#include "Data/VQMDataConstants.h"

/// The product has no way to list or forget constants; a test needs both.
struct OpenConstants : CVQMDataConstants {
    using CVQMDataConstants::m_DataCache;
};

#include "Platform/desktop/environment/ApplicationId.h"

const char* const desktop::kApplicationId = PLATFORM_APP_ID;

#include <system_info.h>

#include "Platform/desktop/x11/XConnection.h"

int system_info_get_value_int(system_info_key_e key, int* value)
{
    Display* display = desktop::OwnDisplay();
    if (display == nullptr || value == nullptr) {
        return -1;
    }
    switch (key) {
    case SYSTEM_INFO_KEY_SCREEN_WIDTH:
        *value = DisplayWidth(display, DefaultScreen(display));
        return 0;
    case SYSTEM_INFO_KEY_SCREEN_HEIGHT:
        *value = DisplayHeight(display, DefaultScreen(display));
        return 0;
    }
    return -1;
}

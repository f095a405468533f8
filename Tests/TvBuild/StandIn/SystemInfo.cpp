#include <system_info.h>

int system_info_get_value_int(system_info_key_e key, int* value)
{
    *value = key == SYSTEM_INFO_KEY_SCREEN_WIDTH ? 1280 : 720;
    return 0;
}

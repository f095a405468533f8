#pragma once

/// Facts about the TV.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    SYSTEM_INFO_KEY_SCREEN_WIDTH = 380,  ///< pixels
    SYSTEM_INFO_KEY_SCREEN_HEIGHT = 381, ///< pixels
} system_info_key_e;

/// Reads one fact into `*value`. Returns 0, or a negative error that leaves `*value` alone.
int system_info_get_value_int(system_info_key_e key, int* value);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)

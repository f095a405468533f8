#pragma once

/// The settings store that all applications of a TV share.
///
/// Keys are paths such as "db/menu/syncdemo/state". Every operation that returns an int gives 0
/// on success and -1 on failure. Changes by any process are delivered on the main loop.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#endif

/// One key with its value, owned by the store and valid only during the callback that receives it.
typedef struct _keynode_t keynode_t;
typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

/// Reads an integer. `*intval` is left alone on failure.
int vconf_get_int(const char* in_key, int* intval);

/// Reads a text. The caller releases the result with `free`; null on failure.
char* vconf_get_str(const char* in_key);

int vconf_set_int(const char* in_key, int intval);
int vconf_set_str(const char* in_key, const char* strval);

/// Runs `cb` after each change of the key, its removal included. Registering the same callback
/// again makes it run once more per change.
int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data);

/// Ends one registration of `cb` on the key; -1 when there is none.
int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb);

/// The key's name; owned by the node.
char* vconf_keynode_get_name(keynode_t* keynode);

/// The key's integer; 0 when it holds none.
int vconf_keynode_get_int(keynode_t* keynode);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)

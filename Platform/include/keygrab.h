#pragma once

/// The TV key-grab service: keys of the remote control, held for one window.
///
/// Keys are numbered 0 to 192 by the service. A caller collects ids in a list that it allocates
/// and registers or unregisters the whole list at once.
/// The results are 0 on success and negative on failure.

// NOLINTBEGIN(modernize-use-using): the interface is C.

#ifdef __cplusplus
extern "C" {
#endif

enum { GRAB_KEY_COUNT = 193 };

/// One slot of a list; only the service reads or writes it.
typedef struct {
    int keyId;         ///< -1: the slot is free
    unsigned int mode; ///< how the key is shared, as handed to `Grab_AddKey`
    int result;        ///< what the last registration of this slot gave
} GrabKey;

typedef struct {
    GrabKey keys[GRAB_KEY_COUNT];
} GrabKeyList;

/// Empties a list. Every list starts with this.
int Grab_InitKeys(GrabKeyList* list);

/// Adds one key id to a list.
int Grab_AddKey(GrabKeyList* list, int keyId, unsigned int mode);

/// From now on the window receives the keys of the list, no matter which window has the focus.
/// `display` is an Xlib `Display*`, `window` an X window id. The list stays the caller's.
int Grab_RegisterKeys(void* display, unsigned int window, GrabKeyList* list);

/// Releases the keys of the list.
int UnGrab_RegisterKeys(void* display, unsigned int window, GrabKeyList* list);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-use-using)

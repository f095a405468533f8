#pragma once

#include <Elementary.h>

/// The application's working part: an invisible window that holds the remote control's keys and
/// launches the companion GUI when a tool key is released while sync demo is on.
///
/// Lives on the main loop's thread and does not throw.
class CVQMKeyGrab {
public:
    /// Opens the window and grabs the keys. A failure is logged and leaves the object with what
    /// was built until then; the application runs on without its keys.
    CVQMKeyGrab();

    CVQMKeyGrab(const CVQMKeyGrab&) = delete;
    CVQMKeyGrab& operator=(const CVQMKeyGrab&) = delete;

    /// Closes the window. The keys are not handed back here: the grab ends with the process.
    virtual ~CVQMKeyGrab();

    /// Builds the window, its canvas and a transparent rectangle of the screen's size, listens for
    /// key releases with `data` as the listener's data, and grabs the keys.
    /// False at the first step that fails; what was built stays for `DestroyWindow`.
    bool CreateWindow(void* data);

    /// Stops listening and releases the window. Safe on a partly built object and when repeated.
    void DestroyWindow();

    /// Grabs every key id of the service in the or-exclusive mode and hands ten of them back.
    /// `display` is an Xlib `Display*`, `window` an X window id. `flag` is ignored.
    void OrExclusiveGrabKeys(void* display, unsigned int window, bool flag);

    /// The key-up listener. `data` is the grabber, `event_info` an `Evas_Event_Key_Up`.
    static void OnKeyReleaseCB(void* data, Evas* e, Evas_Object* obj, void* event_info);

    /// Exported for the platform; nothing here uses it.
    static unsigned char xinfo[12];

private:
    /// Part of the object's layout; nothing reads it.
    [[maybe_unused]] bool m_bFlag = false;
    Evas_Object* m_window = nullptr;
    Evas_Object* m_background = nullptr;
    /// The window's own canvas, never freed here.
    Evas* m_evas = nullptr;
};

/// The one key grab, between start-up and teardown; null before and after.
extern CVQMKeyGrab* gkeygrab;

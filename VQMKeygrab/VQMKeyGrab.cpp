#include "VQMKeygrab/VQMKeyGrab.h"

#include <cstring>

#include <aul.h>
#include <Ecore_X.h>
#include <keygrab.h>
#include <system_info.h>

#include "Common/VQMConfig.h"
#include "Common/VQMLog.h"
#include "Common/VQMSyncDemoMonitor.h"

namespace {

constexpr char kWindowName[] = "VQMKeygrab";
constexpr char kCompanionId[] = VQM_APP_ID ".gui";
constexpr const char* kToolKeys[] = {"XF86SimpleMenu", "XF86More"};

/// The service's or-exclusive mode.
constexpr unsigned int kOrExclusive = 0x80000;
/// The keys that every other application needs: they are grabbed with the rest and released again. The
/// service numbers the keys; the order is part of the interface.
constexpr int kReleasedAgain[] = {75, 76, 17, 10, 31, 26, 27, 28, 29, 30};

bool IsToolKey(const char* key)
{
    for (const char* toolKey : kToolKeys) {
        if (std::strcmp(key, toolKey) == 0) {
            return true;
        }
    }
    return false;
}

/// Deletes the object, after giving up one reference if any is counted. The toolkit counts none for a new
/// object, so usually there is none to give up.
void ReleaseObject(Evas_Object*& object, const char* function, const char* name)
{
    if (evas_object_ref_get(object) > 0) {
        VQM_LOG_DEBUG_AS(function, "evas_object_unref(%s)", name);
        evas_object_unref(object);
    }
    evas_object_del(object);
    object = nullptr;
}

} // namespace

unsigned char CVQMKeyGrab::xinfo[12];

CVQMKeyGrab::CVQMKeyGrab()
{
    if (!CreateWindow(this)) {
        VQM_LOG_DEBUG("failed to create window");
    }
}

CVQMKeyGrab::~CVQMKeyGrab()
{
    VQM_LOG_DEBUG("~CVQMKeyGrab");
    DestroyWindow();
}

bool CVQMKeyGrab::CreateWindow(void* data)
{
    VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow \n");

    int width = 0;
    int height = 0;
    if (system_info_get_value_int(SYSTEM_INFO_KEY_SCREEN_WIDTH, &width) != 0) {
        VQM_LOG_DEBUG("CreateWindow : Unable to retrieve screen width\n");
        return false;
    }
    VQM_LOG_DEBUG("Device Info screen width get success: %d\n", width);
    if (system_info_get_value_int(SYSTEM_INFO_KEY_SCREEN_HEIGHT, &height) != 0) {
        VQM_LOG_DEBUG("CreateWindow : Unable to retrieve screen height\n");
        return false;
    }
    VQM_LOG_DEBUG("Device Info screen height get success: %d\n", height);

    m_window = elm_win_add(nullptr, kWindowName, ELM_WIN_DIALOG_BASIC);
    if (m_window == nullptr) {
        // Logged at both priorities on purpose.
        VQM_LOG_ERROR("CVQMKeyGrab::CreateWindow - create elm window failed\n");
        VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow - create elm window failed\n");
        return false;
    }
    elm_win_title_set(m_window, kWindowName);

    m_evas = evas_object_evas_get(m_window);
    if (m_evas == nullptr) {
        VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow - evas_object_evas_get failed\n");
        return false;
    }

    m_background = evas_object_rectangle_add(m_evas);
    if (m_background == nullptr) {
        VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow - evas_object_rectangle_add failed\n");
        return false;
    }
    // Transparent pixels that are copied, not blended, replace the pixels below them.
    evas_object_color_set(m_background, 0, 0, 0, 0);
    evas_object_render_op_set(m_background, EVAS_RENDER_COPY);
    evas_object_resize(m_background, width, height);
    evas_object_show(m_background);
    // The window itself is not resized: intended.
    evas_object_show(m_window);

    // Null until the toolkit has opened its first window.
    void* display = ecore_x_display_get();
    if (display == nullptr) {
        VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow - disp is NULL\n");
        return false;
    }
    const Ecore_X_Window window = elm_win_xwindow_get(m_window);
    evas_object_event_callback_add(m_window, EVAS_CALLBACK_KEY_UP, OnKeyReleaseCB, data);
    OrExclusiveGrabKeys(display, window, true);

    VQM_LOG_DEBUG("CVQMKeyGrab::CreateWindow finish\n");
    return true;
}

void CVQMKeyGrab::DestroyWindow()
{
    VQM_LOG_DEBUG("DestroyWindow");
    if (m_window != nullptr) {
        VQM_LOG_DEBUG("event callback delete");
        evas_object_event_callback_del(m_window, EVAS_CALLBACK_KEY_UP, OnKeyReleaseCB);
        evas_object_hide(m_window);
    }
    if (m_background != nullptr) {
        VQM_LOG_DEBUG("m_background is not null");
        evas_object_hide(m_background);
        ReleaseObject(m_background, __func__, "m_background");
    }
    // Not freed: the canvas belongs to the window, which is deleted last because the rectangle lies on it.
    if (m_evas != nullptr) {
        VQM_LOG_DEBUG("m_evas is not null");
        m_evas = nullptr;
    }
    if (m_window != nullptr) {
        VQM_LOG_DEBUG("m_window is not null");
        ReleaseObject(m_window, __func__, "m_window");
    }
}

void CVQMKeyGrab::OrExclusiveGrabKeys(void* display, unsigned int window, bool /*flag*/)
{
    VQM_LOG_DEBUG("CVQMKeyGrab::OrExclusiveGrabKeys - Start\n");
    if (display == nullptr) {
        // Logged at both priorities on purpose.
        VQM_LOG_ERROR("CVQMKeyGrab::OrExclusiveGrabKeys - Display pointer is NULL\n");
        VQM_LOG_DEBUG("CVQMKeyGrab::OrExclusiveGrabKeys - Display pointer is NULL\n");
        return;
    }

    // No result of the service is checked: intended.
    GrabKeyList grabList;
    GrabKeyList releaseList;
    Grab_InitKeys(&grabList);
    Grab_InitKeys(&releaseList);

    for (int keyId = 0; keyId < GRAB_KEY_COUNT; ++keyId) {
        Grab_AddKey(&grabList, keyId, kOrExclusive);
    }
    Grab_RegisterKeys(display, window, &grabList);

    for (const int keyId : kReleasedAgain) {
        Grab_AddKey(&releaseList, keyId, kOrExclusive);
    }
    UnGrab_RegisterKeys(display, window, &releaseList);

    VQM_LOG_DEBUG("CVQMKeyGrab::OrExclusiveGrabKeys - Finished\n");
}

void CVQMKeyGrab::OnKeyReleaseCB(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* event_info)
{
    if (data == nullptr) {
        VQM_LOG_ERROR("OnKeyReleaseCB -  data is null \n");
        return;
    }
    // `key` is the symbol, "XF86More"; `keyname` names the physical key, independent of its symbol.
    if (!IsToolKey(static_cast<const Evas_Event_Key_Up*>(event_info)->key)) {
        return;
    }

    VQM_LOG_DEBUG("\n########################   TOOL KEY PRESSED   ###########################\n");
    if (CVQMSyncDemoMonitor::CheckSyncDemoEnbaled()) {
        VQM_LOG_DEBUG("result = %d", aul_launch_app(kCompanionId, nullptr));
    } else {
        VQM_LOG_DEBUG("not used in vqm mode");
    }
}

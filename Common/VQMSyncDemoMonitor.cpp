#include "Common/VQMSyncDemoMonitor.h"

#include <vconf.h>

#include "Common/VQMConfig.h"
#include "Common/VQMLog.h"

namespace {

constexpr char kSettingKey[] = "db/menu/syncdemo/state";
constexpr char kMediaDirectory[] = VQM_MEDIA_DIR;
constexpr char kScheduleDirectory[] = VQM_APPS_DIR "/" VQM_APP_ID "/RECH";

/// The store's only failure; other results, negative ones too, are its business.
constexpr int kStoreFailure = -1;

vconf_callback_fn AsStoreCallback(void* callback)
{
    return reinterpret_cast<vconf_callback_fn>(callback);
}

} // namespace

CVQMSyncDemoMonitor* CVQMSyncDemoMonitor::m_pInstance = nullptr;
boost::mutex CVQMSyncDemoMonitor::m_objectMutex;
bool CVQMSyncDemoMonitor::bSetVconfCallBack = false;

CVQMSyncDemoMonitor::CVQMSyncDemoMonitor() : m_bCreated(false), m_bHaveSchedule(false), m_bHaveContents(false) {}

CVQMSyncDemoMonitor::~CVQMSyncDemoMonitor() = default;

CVQMSyncDemoMonitor* CVQMSyncDemoMonitor::GetInstance()
{
    boost::mutex::scoped_lock lock(m_objectMutex);
    if (m_pInstance == nullptr) {
        m_pInstance = new CVQMSyncDemoMonitor;
    }
    return m_pInstance;
}

void CVQMSyncDemoMonitor::DestroyInstance()
{
    boost::mutex::scoped_lock lock(m_objectMutex);
    delete m_pInstance;
    m_pInstance = nullptr;
}

bool CVQMSyncDemoMonitor::CheckSyncDemoEnbaled()
{
    int state = 0;
    vconf_get_int(kSettingKey, &state);
    if (state == 1) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Enabled \n");
        return true;
    }
    VQM_LOG_DEBUG("CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled \n");
    return false;
}

void CVQMSyncDemoMonitor::SetSyncDemoVocnf(bool enable)
{
    // Two reads on purpose: only switching off is decided by the first one alone.
    const bool switchOff = CheckSyncDemoEnbaled() && !enable;
    if (!switchOff) {
        const bool switchOn = !CheckSyncDemoEnbaled() && enable;
        if (!switchOn) {
            return;
        }
    }

    const int value = enable ? 1 : 0;
    VQM_LOG_DEBUG("SetSyncDemoVocnf - path:%s, value:%d \n", kSettingKey, value);
    if (vconf_set_int(kSettingKey, value) == kStoreFailure) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::SetSyncDemoVocnf - vconf_set_int returned error \n");
    } else {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::SetSyncDemoVocnf - success %d \n", value);
    }
}

bool CVQMSyncDemoMonitor::SetVconfCallBack(void* callback, void* userData)
{
    if (callback == nullptr) {
        VQM_LOG_DEBUG("error : vConfCallBack is NULL\n");
        return false;
    }
    if (vconf_notify_key_changed(kSettingKey, AsStoreCallback(callback), userData) == kStoreFailure) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::SetVconfCallBack - vconf_notify_key_changed returned error \n");
        return false;
    }
    bSetVconfCallBack = true;
    return true;
}

bool CVQMSyncDemoMonitor::UnSetVconfCallBack(void* callback)
{
    if (callback == nullptr) {
        VQM_LOG_DEBUG("error : vConfCallBack is NULL\n");
        return false;
    }
    if (!bSetVconfCallBack) {
        VQM_LOG_DEBUG("error : vConfCallBack is not setted before\n");
        return false;
    }
    if (vconf_ignore_key_changed(kSettingKey, AsStoreCallback(callback)) == kStoreFailure) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::UnSetVconfCallBack - vconf_ignore_key_changed returned error \n");
        return false;
    }
    bSetVconfCallBack = false;
    return true;
}

void CVQMSyncDemoMonitor::GetSyncDemoMediaPath(std::string& path)
{
    path = kMediaDirectory;
    path += '/';
    VQM_LOG_DEBUG("CVQMSyncDemoMonitor::GetSyncDemoMediaPath - %s\n", path.c_str());
}

void CVQMSyncDemoMonitor::GetSyncDemoSchedulePath(std::string& path)
{
    path = kScheduleDirectory;
    path += '/';
    VQM_LOG_DEBUG("CVQMSyncDemoMonitor::GetSyncDemoSchedulePath - %s\n", path.c_str());
}

bool CVQMSyncDemoMonitor::CheckHaveSchedule()
{
    return m_bHaveSchedule;
}

bool CVQMSyncDemoMonitor::CheckHaveContents()
{
    return m_bHaveContents;
}

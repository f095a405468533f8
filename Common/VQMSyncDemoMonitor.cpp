#include "Common/VQMSyncDemoMonitor.h"

#include <exception>
#include <string>
#include <utility>

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <vconf.h>

#include "Common/VQMConfig.h"
#include "Common/VQMLog.h"
#include "Data/VQMDataConstants.h"
#include "Data/VQMScheduleContainer.h"
#include "VQMPipe/VQMFilePipe.h"
#include "VQMPipe/VQMTextFile.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

constexpr char kMediaDirectory[] = VQM_MEDIA_DIR;
constexpr char kScheduleDirectory[] = VQM_APPS_DIR "/" VQM_APP_ID "/RECH";

constexpr char kScheduleFileConstant[] = "ScheduleFile";
/// Bytes per step of reading the schedule.
constexpr uVQMINT64 kReadUnit = 102400;

/// The store's only failure; other results, even negative ones, count as success.
constexpr int kStoreFailure = -1;

vconf_callback_fn AsStoreCallback(void* callback)
{
    return reinterpret_cast<vconf_callback_fn>(callback);
}

/// Logs the network and player settings in the name of the operation `function`.
void LogSettings(const char* function, const _VQMPolicy& policy)
{
    constexpr char kSeparator[] = "#########################################################";
    VQM_LOG_DEBUG_AS(function, "%s", kSeparator);
    VQM_LOG_DEBUG_AS(function, "rech_info - IsMaster %d\n", policy.IsMaster);
    VQM_LOG_DEBUG_AS(function, "rech_info - NumOfPlayer %d\n", policy.NumOfPlayer);
    VQM_LOG_DEBUG_AS(function, "rech_info - IPAddrOfMaster %s\n", policy.IPAddrOfMaster.c_str());
    VQM_LOG_DEBUG_AS(function, "rech_info - IPType %d\n", policy.IPType);
    VQM_LOG_DEBUG_AS(function, "rech_info - IPAddr %s\n", policy.IPAddr.c_str());
    VQM_LOG_DEBUG_AS(function, "rech_info - SubnetMask %s\n", policy.SubnetMask.c_str());
    VQM_LOG_DEBUG_AS(function, "rech_info - Gateway %s\n", policy.Gateway.c_str());
    VQM_LOG_DEBUG_AS(function, "rech_info - TypeOfNetwork %d\n", policy.TypeOfNetwork);
    VQM_LOG_DEBUG_AS(function, "rech_info - WirelessGroupName %s\n", policy.WirelessGroupName.c_str());
    VQM_LOG_DEBUG_AS(function, "rech_info - nImageDuration %d\n", policy.nImageDuration);
    VQM_LOG_DEBUG_AS(function, "%s", kSeparator);
}

/// With 32-bit times, the library reports an error for a file dated after 2038, although it exists.
/// Any other error is thrown.
bool Exists(const std::string& path)
{
    try {
        return boost::filesystem::exists(path);
    } catch (const boost::filesystem::filesystem_error& error) {
        if (error.code() == boost::system::errc::value_too_large) {
            return true;
        }
        throw;
    }
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
    // The result is not checked: a failed read leaves 0, which counts as off.
    vconf_get_int(kSyncDemoSettingKey, &state);
    if (state == 1) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Enabled \n");
        return true;
    }
    VQM_LOG_DEBUG("CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled \n");
    return false;
}

void CVQMSyncDemoMonitor::SetSyncDemoVocnf(bool enable)
{
    // Two reads on purpose: the first one alone decides only a call that switches off.
    const bool switchOff = CheckSyncDemoEnbaled() && !enable;
    if (!switchOff) {
        const bool switchOn = !CheckSyncDemoEnbaled() && enable;
        if (!switchOn) {
            return;
        }
    }

    const int value = enable ? 1 : 0;
    VQM_LOG_DEBUG("SetSyncDemoVocnf - path:%s, value:%d \n", kSyncDemoSettingKey, value);
    if (vconf_set_int(kSyncDemoSettingKey, value) == kStoreFailure) {
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
    if (vconf_notify_key_changed(kSyncDemoSettingKey, AsStoreCallback(callback), userData) == kStoreFailure) {
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
    if (vconf_ignore_key_changed(kSyncDemoSettingKey, AsStoreCallback(callback)) == kStoreFailure) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::UnSetVconfCallBack - vconf_ignore_key_changed returned error \n");
        return false;
    }
    bSetVconfCallBack = false; // even if other callbacks are still registered: intended
    return true;
}

bool CVQMSyncDemoMonitor::Create()
{
    if (m_bCreated) {
        return true;
    }
    try {
        CheckContents();
        m_bCreated = true;
    } catch (const CVQMException& error) {
        VQM_LOG_ERROR("Create : error %s \n", error.GetErrorText());
    } catch (const std::exception& error) {
        VQM_LOG_ERROR("Create : error %s \n", error.what());
    } catch (...) {
        VQM_LOG_ERROR("Create : Unknown system error \n");
    }
    return m_bCreated;
}

void CVQMSyncDemoMonitor::CheckContents()
{
    std::string fileName;
    CVQMDataConstants::GetValue(kScheduleFileConstant, fileName);
    std::string path;
    GetSyncDemoSchedulePath(path);
    path += fileName;
    if (!Exists(path)) {
        VQM_LOG_DEBUG("CVQMSyncDemoMonitor::CheckContents - schedule not exist (%s) \n", path.c_str());
        // The answer about contents and the current policy stay, here and after a failed parse: intended.
        m_bHaveSchedule = false;
        return;
    }

    m_bHaveSchedule = true;
    _VQMPolicy policy;
    if (!ParseStoredSchedule(path, &policy)) {
        m_bHaveSchedule = false;
        return;
    }
    if (!HasAllContents(policy)) {
        m_bHaveContents = false;
        return;
    }

    boost::mutex::scoped_lock lock(m_policyMutex);
    m_stCurrentPolicy = std::move(policy);
    m_bHaveContents = true;
    LogSettings(__func__, m_stCurrentPolicy); // under the lock, so that no other policy is logged
}

/// Stops at the first content that is missing or has another size, and logs it for `CheckContents`.
bool CVQMSyncDemoMonitor::HasAllContents(const _VQMPolicy& policy)
{
    std::string path; // its memory serves all contents
    GetSyncDemoMediaPath(path);
    const std::size_t directoryLength = path.size();
    CVQMFilePipe pipe;
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        for (const _VQMContentInfo& content : schedule.listContents) {
            path.resize(directoryLength);
            path += content.strName;
            if (pipe.GetFileSize(path.c_str()) != content.nSize) {
                // The same words for a file of another size: intended.
                VQM_LOG_DEBUG_AS("CheckContents", "CVQMSyncDemoMonitor::CheckContents - %s not exist \n", path.c_str());
                return false;
            }
        }
    }
    return true;
}

bool CVQMSyncDemoMonitor::ParseStoredSchedule(std::string path, _VQMPolicy* target)
{
    if (path.empty()) {
        return false;
    }
    CVQMDataBufferObject document;
    if (VQMReadTextFile(path, kReadUnit, document) != VQMTextFileResult::Complete) {
        return false;
    }
    CVQMScheduleContainer schedule;
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(document.GetData(), &schedule)) {
        return false;
    }
    serializer.Destroy();

    _VQMPolicy policy = std::move(schedule).TakePolicy();
    if (target != nullptr) {
        *target = std::move(policy);
        return true;
    }
    boost::mutex::scoped_lock lock(m_policyMutex);
    m_stCurrentPolicy = std::move(policy);
    return true;
}

void CVQMSyncDemoMonitor::GetCurrentPolicy(_VQMPolicy& out)
{
    // Copied first, so that a copy that fails leaves `out` as it was.
    boost::mutex::scoped_lock lock(m_policyMutex);
    _VQMPolicy copy(m_stCurrentPolicy);
    lock.unlock();
    out = std::move(copy);
}

void CVQMSyncDemoMonitor::TakeCurrentPolicy(_VQMPolicy& out)
{
    _VQMPolicy taken;
    boost::mutex::scoped_lock lock(m_policyMutex);
    std::swap(taken, m_stCurrentPolicy);
    lock.unlock();
    out = std::move(taken); // frees what `out` held, without the lock
}

void CVQMSyncDemoMonitor::ClearCurrentPlolicy()
{
    boost::mutex::scoped_lock lock(m_policyMutex);
    // Check period, version, expiration and IP type survive: intended.
    m_stCurrentPolicy.bError = true;
    m_stCurrentPolicy.listSchedule.clear();
    m_stCurrentPolicy.IPAddrOfMaster.clear();
    m_stCurrentPolicy.IPAddr.clear();
    m_stCurrentPolicy.SubnetMask.clear();
    m_stCurrentPolicy.Gateway.clear();
    m_stCurrentPolicy.WirelessGroupName.clear();
    m_stCurrentPolicy.IsMaster = false;
    m_stCurrentPolicy.NumOfPlayer = 0;
    m_stCurrentPolicy.TypeOfNetwork = 0;
    m_stCurrentPolicy.nImageDuration = 0;
    m_stCurrentPolicy.nItemCount = 0;
    m_stCurrentPolicy.nTotalSize = 0;
    m_stCurrentPolicy.nProjectID = 0;
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

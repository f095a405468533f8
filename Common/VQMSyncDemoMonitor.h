#pragma once

#include <string>

#include <boost/thread/mutex.hpp>

/// The process-wide view of the sync-demo mode: the setting that turns it on, and where its media
/// and its schedule lie on disk.
///
/// Several names are misspelt; they are the interface.
///
/// Threads: the singleton may be fetched and destroyed from any thread. The setting operations
/// take no lock and belong to the main loop's thread, where change callbacks arrive.
class CVQMSyncDemoMonitor {
public:
    /// The monitor, created on first use. It stays valid until `DestroyInstance`; the caller never
    /// deletes it. Throws what construction throws, and the next call tries again.
    static CVQMSyncDemoMonitor* GetInstance();

    /// Deletes the monitor, if there is one. Registered setting callbacks stay registered.
    static void DestroyInstance();

    /// True when the sync-demo setting holds 1. The store is read afresh by each call; a setting
    /// that is missing or cannot be read counts as off.
    static bool CheckSyncDemoEnbaled();

    /// Stores the setting, 1 or 0, unless it is stored already. A failure is only logged.
    static void SetSyncDemoVocnf(bool enable);

    /// Runs `callback` with `userData` on the main loop after each change of the setting.
    /// `callback` is a `vconf_callback_fn`; registering again adds another registration.
    /// False when `callback` is null or the store refuses.
    static bool SetVconfCallBack(void* callback, void* userData);

    /// Ends a registration. One flag serves all of them: after two registrations only the first
    /// call is accepted. False when `callback` is null, nothing is registered, or the store refuses.
    static bool UnSetVconfCallBack(void* callback);

    virtual ~CVQMSyncDemoMonitor();

    CVQMSyncDemoMonitor(const CVQMSyncDemoMonitor&) = delete;
    CVQMSyncDemoMonitor& operator=(const CVQMSyncDemoMonitor&) = delete;

    /// Replaces `path` with the directory of the demo media, "/" at its end.
    void GetSyncDemoMediaPath(std::string& path);

    /// Replaces `path` with the directory of the stored schedule, "/" at its end.
    void GetSyncDemoSchedulePath(std::string& path);

    /// Whether the last content check found a schedule that parsed.
    bool CheckHaveSchedule();

    /// Whether the last content check that got so far found every content file in its announced size.
    bool CheckHaveContents();

private:
    CVQMSyncDemoMonitor();

    bool m_bCreated;
    bool m_bHaveSchedule;
    bool m_bHaveContents;

    static CVQMSyncDemoMonitor* m_pInstance;
    static boost::mutex m_objectMutex; ///< guards `m_pInstance`
    static bool bSetVconfCallBack;
};

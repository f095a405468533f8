#pragma once

#include <string>

#include <boost/thread/mutex.hpp>

#include "Data/VQMScheduleRecords.h"

/// The settings store's key of the sync-demo setting.
inline constexpr char kSyncDemoSettingKey[] = "db/menu/syncdemo/state";

/// The process-wide view of the sync-demo mode: the setting that turns it on, where its media and
/// its schedule lie on disk, and the current policy, which a content check takes from there.
///
/// Several names are misspelt; they are the interface.
///
/// Threads: the singleton may be fetched and destroyed from any thread. The setting operations
/// take no lock and belong to the main loop's thread, where change callbacks arrive. Checks run on
/// one thread at a time; any thread may parse a schedule, and copy, take or clear the current policy
/// meanwhile, and sees each policy whole. No operation holds two locks at once.
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

    /// Runs the content check, once: after a run without an exception every further call returns
    /// true without looking at the disk again. True means that the check ran; `CheckHaveSchedule` and
    /// `CheckHaveContents` return its findings. False after an exception, which is logged at error
    /// priority; the next call tries again.
    bool Create();

    /// The content check, whenever it is called: the file that the constant "ScheduleFile" names
    /// must lie in the schedule directory and parse, and every content file of the schedule must
    /// lie in the media directory in exactly its announced size in bytes. Then the schedule becomes
    /// the current policy, and its network and player settings are logged. Otherwise the current
    /// policy stays and one of the two answers becomes false; without a schedule, the answer about
    /// contents stays as well.
    ///
    /// Load the constants before. Without that constant, the check looks for the schedule directory
    /// itself. A content announced with 0 bytes may be absent.
    ///
    /// Throws `boost::filesystem::filesystem_error` when the schedule's path cannot be examined
    /// (anything but its absence), and `std::bad_alloc`; the current policy stays then as well.
    void CheckContents();

    /// Reads and parses one schedule file. The policy goes to `target`, which the caller owns; with
    /// null it becomes the current policy, contents unchecked. False when `path` is empty, cannot
    /// be read or does not parse: the target stays as it was. The answers of `CheckHaveSchedule`
    /// and `CheckHaveContents` stay. Throws `std::bad_alloc`; the target stays then as well.
    bool ParseStoredSchedule(std::string path, _VQMPolicy* target);

    /// Copies the current policy to `out`. `bError` is true until a check has stored one. Throws
    /// `std::bad_alloc`; `out` stays as it was then.
    void GetCurrentPolicy(_VQMPolicy& out);

    /// Moves the current policy to `out`. Unlike `GetCurrentPolicy`, it copies nothing and needs no memory.
    /// The monitor then holds an empty policy, as before its first check. The answers of `CheckHaveSchedule`
    /// and `CheckHaveContents` stay.
    void TakeCurrentPolicy(_VQMPolicy& out);

    /// Resets the current policy in part: check period, version, expiration and IP type stay as
    /// they were, and so do the answers of `CheckHaveSchedule` and `CheckHaveContents`.
    void ClearCurrentPlolicy();

    /// Replaces `path` with the directory of the demo media, "/" at its end.
    void GetSyncDemoMediaPath(std::string& path);

    /// Replaces `path` with the directory of the stored schedule, "/" at its end.
    void GetSyncDemoSchedulePath(std::string& path);

    // The answers of the last content check. No lock guards them: ask on the thread that checks, or
    // once it has finished.

    /// Whether the last content check found a schedule that parsed.
    bool CheckHaveSchedule();

    /// Whether the last content check with a schedule found every content file in its announced size.
    bool CheckHaveContents();

private:
    CVQMSyncDemoMonitor();

    bool HasAllContents(const _VQMPolicy& policy);

    bool m_bCreated;
    bool m_bHaveSchedule;
    bool m_bHaveContents;
    _VQMPolicy m_stCurrentPolicy;
    boost::mutex m_policyMutex; ///< guards `m_stCurrentPolicy`; never held together with `m_objectMutex`

    static CVQMSyncDemoMonitor* m_pInstance;
    static boost::mutex m_objectMutex; ///< guards `m_pInstance`
    static bool bSetVconfCallBack;
};

#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <Ecore.h>
#include <sys/types.h>

#include "Diagnostics/Status/DisplayConnection.h"
#include "Platform/common/FileDescriptor.h"
#include "RemoteControl/Keys/EndingSignals.h"
#include "RemoteControl/Keys/Keyboard.h"
#include "RemoteControl/Keys/KeyUse.h"
#include "RemoteControl/Keys/LentKey.h"

/// What is known of the TV.
struct TvState {
    pid_t application = 0;              ///< its process; 0: it does not run
    std::map<std::string, KeyUse> uses; ///< of each key
    std::string said;                   ///< how the last press went, in a sentence; empty before the first
};

/// The remote's keys on the TV's display: it puts them on the TV's keyboard where that lacks them, presses
/// them, and follows what the application does with each.
///
/// A thread of its own does it all, on a connection of its own: the window never waits for the TV.
/// The object belongs to the main loop's thread.
class TvKeys {
public:
    /// `keys` are names of keysyms. `changed` runs on the main loop after each change. Throws
    /// `std::runtime_error` when the display cannot be opened or lacks an extension.
    TvKeys(const std::string& display, std::vector<std::string> keys, std::function<void(const TvState&)> changed);
    /// Takes the keys off the TV's keyboard again. Waits for the TV's display, for ever if need be: the
    /// process must limit its teardown.
    ~TvKeys();

    TvKeys(const TvKeys&) = delete;
    TvKeys& operator=(const TvKeys&) = delete;

    /// Presses and releases a key soon. Does not wait. Presses that come much faster than keys can be
    /// pressed are dropped.
    void Press(const std::string& key);

private:
    void Run();
    void LendKeys();
    void Serve(EndingSignals& signals);
    void FollowApplication();
    void PressOne(const std::string& key, EndingSignals& signals);
    void Tell();
    std::string NextPress();
    bool IsEnding();
    static Eina_Bool OnChanged(void* data, Ecore_Fd_Handler* handler);

    std::vector<std::string> keys_;
    std::function<void(const TvState&)> changed_;
    platform::FileDescriptor wakeThread_;
    platform::FileDescriptor wakeLoop_;
    Ecore_Fd_Handler* handler_ = nullptr;

    // The thread's, once it runs.
    DisplayConnection display_;
    Keyboard keyboard_;
    int ownerEvent_ = 0;     ///< the number of the event that the application comes or goes
    Window followed_ = None; ///< the application's window that publishes its keys
    std::map<std::string, LentKey> lent_;
    TvState state_;

    std::mutex mutex_; ///< guards the rest
    std::deque<std::string> presses_;
    TvState told_;
    bool ending_ = false;

    std::thread thread_;
};

#pragma once

#include <chrono>
#include <functional>
#include <vector>

struct pollfd;
class LoopTimer;

/// Waits for descriptors, timers and the signals that end a program: SIGINT, SIGTERM, SIGQUIT and
/// SIGHUP. Takes no descriptor for itself.
///
/// SIGHUP stays ignored where it was, as under nohup. The first signal ends the loop in order; a second
/// one of its kind ends the process, should an action not come back.
///
/// One at a time, on the thread that made it. What an action throws passes through `Run`.
class MainLoop {
public:
    using Action = std::function<void()>;
    using Clock = std::chrono::steady_clock;

    MainLoop();
    ~MainLoop();

    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /// The loop of this process; null when there is none.
    static MainLoop* Current();

    /// Calls `action` whenever `descriptor` can be read. Both last as long as the loop runs.
    void OnReadable(int descriptor, Action action);

    /// Ends the loop as soon as stdout has no reader any more: its pipe, socket or terminal is closed.
    void EndWithReader();

    /// Runs until `End` or a signal. Returns at once when the loop has ended before.
    void Run();

    void End() { ended_ = true; }

private:
    friend class LoopTimer;

    struct Source {
        int descriptor;
        short events;
        Action action;
    };

    int TimeToWait() const;
    /// False when a signal has come.
    bool Wait(std::vector<pollfd>& polled) const;
    void RunTimers();

    bool ended_ = false;
    std::vector<Source> sources_;
    std::vector<LoopTimer*> timers_;
};

/// Calls an action once, some time after it was started. May be started again.
class LoopTimer {
public:
    LoopTimer(MainLoop& loop, MainLoop::Action action);

    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

    void StartAt(MainLoop::Clock::time_point due);
    bool IsRunning() const { return running_; }

private:
    friend class MainLoop;

    MainLoop::Action action_;
    bool running_ = false;
    MainLoop::Clock::time_point due_;
};

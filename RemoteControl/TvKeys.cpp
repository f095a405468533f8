#include "RemoteControl/TvKeys.h"

#include <chrono>
#include <cstdint>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

#include <X11/extensions/Xfixes.h>

#include "Platform/desktop/environment/ApplicationId.h"
#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"

namespace {

constexpr std::chrono::milliseconds kHold{50};
constexpr std::size_t kMostPresses = 8;

DisplayConnection Open(const std::string& name)
{
    DisplayConnection display(XOpenDisplay(name.c_str()));
    if (display == nullptr) {
        throw std::runtime_error("cannot open the TV's display '" + name + "'");
    }
    return display;
}

void Wake(const platform::FileDescriptor& event)
{
    const std::uint64_t one = 1;
    // It fails only when the counter is full, and then the reader wakes up anyway.
    [[maybe_unused]] const ssize_t written = write(event.Get(), &one, sizeof one);
}

void Drain(const platform::FileDescriptor& event)
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(event.Get(), &count, sizeof count);
}

const char* Outcome(KeyUse use)
{
    return use == KeyUse::kHeld    ? ": the application has it"
           : use == KeyUse::kTaken ? ": another program has it"
                                   : ": whoever has the focus gets it";
}

} // namespace

TvKeys::TvKeys(const std::string& display, std::vector<std::string> keys, std::function<void(const TvState&)> changed)
    : keys_(std::move(keys)),
      changed_(std::move(changed)),
      wakeThread_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      wakeLoop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      display_(Open(display)),
      keyboard_(display_.get())
{
    int error = 0;
    if (XFixesQueryExtension(display_.get(), &ownerEvent_, &error) == False) {
        throw std::runtime_error("display '" + display + "' has no XFixes extension, which tells who runs");
    }
    ownerEvent_ += XFixesSelectionNotify;
    handler_ = ecore_main_fd_handler_add(wakeLoop_.Get(), ECORE_FD_READ, OnChanged, this, nullptr, nullptr);
    thread_ = std::thread([this] { Run(); });
}

TvKeys::~TvKeys()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
    }
    Wake(wakeThread_);
    thread_.join();
    ecore_main_fd_handler_del(handler_);
}

void TvKeys::Press(const std::string& key)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (presses_.size() == kMostPresses) {
            return;
        }
        presses_.push_back(key);
    }
    Wake(wakeThread_);
}

void TvKeys::Run()
{
    // Those signals are the main thread's.
    EndingSignals signals;
    XFixesSelectSelectionInput(display_.get(), DefaultRootWindow(display_.get()),
                               XInternAtom(display_.get(), desktop::kApplicationId, False),
                               XFixesSetSelectionOwnerNotifyMask | XFixesSelectionWindowDestroyNotifyMask |
                                   XFixesSelectionClientCloseNotifyMask);
    LendKeys();
    FollowApplication();
    while (!IsEnding()) {
        Serve(signals);
    }
    for (auto& [name, key] : lent_) {
        try {
            key.GiveBack();
        } catch (const std::exception&) {
            // Another process is busy with the keyboard: the next one to press a key takes this one off.
        }
    }
}

void TvKeys::LendKeys()
{
    for (const std::string& name : keys_) {
        try {
            lent_.try_emplace(name, display_.get(), keyboard_, XStringToKeysym(name.c_str()));
        } catch (const std::exception& exception) {
            state_.said = exception.what(); // a keyboard without room
        }
    }
}

/// Waits for something to do, and does it.
void TvKeys::Serve(EndingSignals& signals)
{
    pollfd readable[] = {{ConnectionNumber(display_.get()), POLLIN, 0}, {wakeThread_.Get(), POLLIN, 0}};
    if (XEventsQueued(display_.get(), QueuedAfterFlush) == 0) {
        poll(readable, 2, -1);
    }
    Drain(wakeThread_);
    bool changed = false;
    while (XPending(display_.get()) > 0) {
        XEvent event;
        XNextEvent(display_.get(), &event);
        changed = changed || event.type == ownerEvent_ || event.type == PropertyNotify;
    }
    if (changed) {
        FollowApplication();
    }
    for (std::string key = NextPress(); !key.empty(); key = NextPress()) {
        PressOne(key, signals);
    }
}

/// Takes over what the application publishes, and asks to be told of changes.
void TvKeys::FollowApplication()
{
    const Window owner =
        XGetSelectionOwner(display_.get(), XInternAtom(display_.get(), desktop::kApplicationId, False));
    if (owner != followed_ && owner != None) {
        const desktop::XErrorTrap trap(display_.get()); // it may be gone already
        XSelectInput(display_.get(), owner, PropertyChangeMask);
    }
    followed_ = owner;
    // Read last, so that no change is missed.
    const auto instance = desktop::ReadInstance(display_.get());
    state_.application = instance ? instance->pid : 0;
    for (const std::string& key : keys_) {
        state_.uses[key] = UseOfKey(instance, key);
    }
    Tell();
}

void TvKeys::PressOne(const std::string& key, EndingSignals& signals)
{
    const auto found = lent_.find(key);
    if (found == lent_.end()) {
        state_.said = key + ": the TV's keyboard has no room for it";
    } else {
        try {
            keyboard_.Press(found->second.Code(), 1, kHold, signals);
            state_.said = key + Outcome(state_.uses[key]);
        } catch (const std::exception& exception) {
            state_.said = exception.what();
        }
    }
    Tell();
}

void TvKeys::Tell()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        told_ = state_;
    }
    Wake(wakeLoop_);
}

/// Empty when there is none.
std::string TvKeys::NextPress()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (presses_.empty() || ending_) {
        return "";
    }
    std::string key = std::move(presses_.front());
    presses_.pop_front();
    return key;
}

bool TvKeys::IsEnding()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return ending_;
}

Eina_Bool TvKeys::OnChanged(void* data, Ecore_Fd_Handler* /*handler*/)
{
    auto* self = static_cast<TvKeys*>(data);
    Drain(self->wakeLoop_);
    TvState state;
    {
        const std::lock_guard<std::mutex> lock(self->mutex_);
        state = self->told_;
    }
    self->changed_(state);
    return ECORE_CALLBACK_RENEW;
}

#include "RemoteControl/Keys/LentKey.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include <X11/Xatom.h>

#include "Platform/desktop/x11/Instance.h"
#include "Platform/desktop/x11/XConnection.h"
#include "RemoteControl/Keys/SelectionLock.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kProperty[] = "_TV_LENT_KEYS";
constexpr std::size_t kNumbersPerUse = 3;
constexpr long kMostUses = 1024;

constexpr milliseconds kPollInterval{10};
/// Processes hold the lock while the application reads the mapping, for kNoticeLimit at most.
constexpr milliseconds kLockLimit{10000};
constexpr milliseconds kNoticeLimit{2000};

template <typename Condition>
bool WaitUntil(Condition condition, milliseconds limit)
{
    const auto deadline = steady_clock::now() + limit;
    while (!condition()) {
        if (steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    return true;
}

/// The numbers of a CARDINAL/32 property; none when the window or the property is not there.
std::vector<unsigned long> ReadNumbers(Display* display, Window window, long most)
{
    struct Free {
        void operator()(unsigned char* data) const { XFree(data); }
    };
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(display, window, XInternAtom(display, kProperty, False), 0, most, False,
                                          XA_CARDINAL, &type, &format, &items, &rest, &data);
    const std::unique_ptr<unsigned char, Free> owner(status == Success ? data : nullptr);
    if (owner == nullptr || type != XA_CARDINAL || format != 32) {
        return {};
    }
    // Xlib keeps 32-bit items in longs.
    const auto* numbers = reinterpret_cast<const unsigned long*>(data);
    return {numbers, numbers + items};
}

void WriteNumbers(Display* display, Window window, const std::vector<unsigned long>& numbers)
{
    XChangeProperty(display, window, XInternAtom(display, kProperty, False), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(numbers.data()), static_cast<int>(numbers.size()));
}

bool Holds(Display* display, const std::string& key)
{
    const auto instance = desktop::ReadInstance(display);
    return instance && std::count(instance->heldKeys.begin(), instance->heldKeys.end(), key) != 0;
}

} // namespace

struct LentKey::Use {
    KeyCode code;
    KeySym symbol;
    Window user;
};

LentKey::LentKey(Display* display, Keyboard& keyboard, KeySym symbol)
    : display_(display), keyboard_(keyboard), symbol_(symbol)
{
    const SelectionLock lock(display_, kProperty, kLockLimit, nullptr);
    const std::vector<Use> before = ReadUses(display_);
    std::vector<Use> uses = TakeOffWhatIsLeft(before);
    code_ = keyboard_.Find(symbol_);
    const bool own = code_ != 0 && std::none_of(before.begin(), before.end(), [this](const Use& use) {
                         return use.code == code_ && use.symbol == symbol_;
                     });
    if (own) {
        if (uses.size() != before.size()) {
            WriteUses(uses);
        }
        return;
    }
    const KeyCode code = code_ != 0 ? code_ : keyboard_.FindSpare();
    user_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), -1, -1, 1, 1, 0, 0, 0);
    // What tells it from a later window of the same number.
    WriteNumbers(display_, user_, {code});
    uses.push_back({code, symbol_, user_});
    // Noted first: a process that is killed in between leaves no key that is taken for the keyboard's.
    WriteUses(uses);
    if (code_ == 0) {
        keyboard_.Put(code, symbol_);
        code_ = code;
    }
}

void LentKey::GiveBack()
{
    if (!IsLent()) {
        return;
    }
    const SelectionLock lock(display_, kProperty, kLockLimit, nullptr);
    XDestroyWindow(display_, user_);
    XSync(display_, False);
    user_ = None;
    std::vector<Use> uses = ReadUses(display_);
    const auto isOfThisKey = [this](const Use& use) { return use.code == code_; };
    const bool inUse =
        std::any_of(uses.begin(), uses.end(), [&](const Use& use) { return isOfThisKey(use) && IsAlive(use.user); });
    if (!inUse) {
        TakeOff({code_, symbol_, None});
        uses.erase(std::remove_if(uses.begin(), uses.end(), isOfThisKey), uses.end());
        WriteUses(uses);
    }
}

std::vector<LentKey::Use> LentKey::ReadUses(Display* display)
{
    int first = 0;
    int last = 0;
    XDisplayKeycodes(display, &first, &last);
    const std::vector<unsigned long> numbers =
        ReadNumbers(display, DefaultRootWindow(display), kMostUses * static_cast<long>(kNumbersPerUse));
    std::vector<Use> uses;
    for (std::size_t i = 0; i + kNumbersPerUse <= numbers.size(); i += kNumbersPerUse) {
        // Any client can write the property.
        if (numbers[i] >= static_cast<unsigned long>(first) && numbers[i] <= static_cast<unsigned long>(last)) {
            uses.push_back({static_cast<KeyCode>(numbers[i]), numbers[i + 1], numbers[i + 2]});
        }
    }
    return uses;
}

void LentKey::WriteUses(const std::vector<Use>& uses)
{
    std::vector<unsigned long> numbers;
    for (const Use& use : uses) {
        numbers.insert(numbers.end(), {use.code, use.symbol, use.user});
    }
    WriteNumbers(display_, DefaultRootWindow(display_), numbers);
    XSync(display_, False);
}

/// Removes the keys that no process uses any more, except the one that is about to be used again.
/// Returns the uses that go on.
std::vector<LentKey::Use> LentKey::TakeOffWhatIsLeft(const std::vector<Use>& uses)
{
    std::vector<Use> alive;
    std::copy_if(uses.begin(), uses.end(), std::back_inserter(alive),
                 [this](const Use& use) { return IsAlive(use.user); });
    for (const Use& use : uses) {
        const bool inUse = std::any_of(alive.begin(), alive.end(), [&](const Use& a) { return a.code == use.code; });
        if (!inUse && use.symbol != symbol_) {
            TakeOff(use);
        }
    }
    return alive;
}

/// Until the application has read the mapping it says that it holds the key, which the next process
/// that lends the same key would believe too early.
void LentKey::TakeOff(const Use& use)
{
    keyboard_.TakeOff(use.code, use.symbol);
    const char* name = XKeysymToString(use.symbol);
    if (name != nullptr && keyboard_.Find(use.symbol) == 0) {
        WaitUntil([&] { return !Holds(display_, name); }, kNoticeLimit);
    }
}

bool LentKey::IsAlive(Window user) const
{
    const desktop::XErrorTrap trap(display_);
    return !ReadNumbers(display_, user, 1).empty();
}

std::set<KeyCode> LentKeycodes(Display* display)
{
    std::set<KeyCode> codes;
    for (const LentKey::Use& use : LentKey::ReadUses(display)) {
        codes.insert(use.code);
    }
    return codes;
}

#include <keygrab.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <Ecore.h>
#include <Ecore_X.h>
#include <X11/XKBlib.h>

#include "Platform/desktop/app/GrabbedKeys.h"
#include "Platform/desktop/app/KeyGrab.h"
#include "Platform/desktop/app/KeyWindow.h"
#include "Platform/desktop/app/OwnInstance.h"
#include "Platform/desktop/app/UngrabWatch.h"
#include "Platform/desktop/app/XServerLoss.h"
#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/x11/KeyTable.h"
#include "Platform/desktop/x11/XConnection.h"

static_assert(sizeof(GrabKey) == 12 && sizeof(GrabKeyList) == 2316, "callers allocate lists of this size");
static_assert(GRAB_KEY_COUNT == desktop::kKeyIds);

namespace {

constexpr int kFailure = -1;
constexpr int kFreeSlot = -1;

/// The keys held for this process; null before the first registration.
std::unique_ptr<desktop::GrabbedKeys>& HeldKeys()
{
    static std::unique_ptr<desktop::GrabbedKeys> keys;
    return keys;
}

/// The ids of the keys that were handed back, whether they were held or not.
std::set<int>& ReleasedKeys()
{
    static std::set<int> keys;
    return keys;
}

std::vector<std::string> NamesOf(const std::set<int>& keys)
{
    std::vector<std::string> names;
    for (const int keyId : keys) {
        names.emplace_back(desktop::KeyName(keyId));
    }
    return names;
}

/// Users who want to keep the media keys of their desktop limit the table to the tool keys.
bool OnlyToolKeys()
{
    const char* keys = std::getenv("TV_REMOTE_KEYS");
    return keys != nullptr && std::string_view(keys) == "tool";
}

std::set<int> KeysOf(const GrabKeyList& list, bool onlyToolKeys)
{
    std::set<int> keys;
    for (const GrabKey& slot : list.keys) {
        if (desktop::KeyName(slot.keyId) != nullptr && (!onlyToolKeys || desktop::IsToolKey(slot.keyId))) {
            keys.insert(slot.keyId);
        }
    }
    return keys;
}

void Renew();

/// The toolkit closes its connection together with its last window, which ends the grabs.
bool CanGrab()
{
    return HeldKeys() != nullptr && ecore_x_display_get() != nullptr;
}

void OnMayBeFree()
{
    if (CanGrab() && !HeldKeys()->FailedNames().empty()) {
        Renew();
    }
}

void WatchFailedKeys(void* /*data*/)
{
    if (CanGrab() && !HeldKeys()->FailedNames().empty()) {
        desktop::WatchForUngrabs(desktop::OwnDisplay(), OnMayBeFree);
    }
}

/// Publishes the keys for tools, and starts to watch for the release of those that another client holds.
void Publish()
{
    const std::vector<std::string> failed = HeldKeys()->FailedNames();
    desktop::PublishKeys(HeldKeys()->HeldNames(), failed);
    desktop::PublishReleasedKeys(NamesOf(ReleasedKeys()));
    if (!failed.empty()) {
        // In a job, because the caller may be about to release the refused keys anyway.
        ecore_job_add(WatchFailedKeys, nullptr);
    }
}

void Renew()
{
    HeldKeys()->Renew();
    Publish();
}

Eina_Bool OnMappingChanged(void* /*data*/, int /*type*/, void* /*event*/)
{
    if (CanGrab()) {
        Renew();
    }
    return ECORE_CALLBACK_PASS_ON;
}

void StartHolding(Display* display)
{
    // A held key then repeats only its press, so that each release is real.
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    desktop::ReceiveGrabbedKeys(display);
    ecore_event_handler_add(ECORE_X_EVENT_MAPPING_CHANGE, OnMappingChanged, nullptr);
    HeldKeys() = std::make_unique<desktop::GrabbedKeys>(display);
}

} // namespace

void desktop::ReleaseHeldKeys()
{
    if (CanGrab()) {
        HeldKeys()->Clear();
    }
    HeldKeys().reset();
}

int Grab_InitKeys(GrabKeyList* list)
{
    if (list == nullptr) {
        return kFailure;
    }
    for (GrabKey& slot : list->keys) {
        slot = {kFreeSlot, 0, 0};
    }
    return 0;
}

int Grab_AddKey(GrabKeyList* list, int keyId, unsigned int mode)
{
    if (list == nullptr || desktop::KeyName(keyId) == nullptr) {
        return kFailure;
    }
    for (GrabKey& slot : list->keys) {
        if (slot.keyId == kFreeSlot || slot.keyId == keyId) {
            slot = {keyId, mode, 0};
            return 0;
        }
    }
    return kFailure;
}

int Grab_RegisterKeys(void* display, unsigned int window, GrabKeyList* list)
{
    if (display == nullptr || list == nullptr) {
        return kFailure;
    }
    if (!desktop::DirectGrabbedKeysTo(window)) {
        PLATFORM_LOG(DLOG_ERROR, "window 0x%x is not a toolkit window: no keys are taken for it", window);
        return kFailure;
    }
    // Again, because the toolkit has opened its connection by now and installed its own handler.
    desktop::ExitWhenXServerIsLost();
    if (!HeldKeys()) {
        StartHolding(static_cast<Display*>(display));
    }
    const std::set<int> keys = KeysOf(*list, OnlyToolKeys());
    HeldKeys()->Add(keys);
    for (const int keyId : keys) {
        ReleasedKeys().erase(keyId);
    }
    Publish();

    // A key that this keyboard lacks, or that TV_REMOTE_KEYS leaves out, is not a failure.
    int result = 0;
    for (GrabKey& slot : list->keys) {
        slot.result = HeldKeys()->StateOf(slot.keyId) == desktop::GrabState::kWhole ? 0 : kFailure;
        result = slot.result == 0 ? result : kFailure;
    }
    return result;
}

int UnGrab_RegisterKeys(void* display, unsigned int /*window*/, GrabKeyList* list)
{
    if (display == nullptr || list == nullptr || !HeldKeys()) {
        return kFailure;
    }
    // All keys of the list, even if TV_REMOTE_KEYS has kept some of them from being taken.
    const std::set<int> keys = KeysOf(*list, false);
    HeldKeys()->Remove(keys);
    ReleasedKeys().insert(keys.begin(), keys.end());
    Publish();
    return 0;
}

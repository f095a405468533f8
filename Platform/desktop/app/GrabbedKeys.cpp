#include "Platform/desktop/app/GrabbedKeys.h"

#include <algorithm>

#include "Platform/desktop/app/KeyboardMap.h"
#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/x11/KeyTable.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

/// Where the wanted ids are on this keyboard.
std::map<KeyCode, int> FindKeycodes(const std::set<int>& keyIds, const KeyboardMap& keyboard)
{
    std::map<KeySym, int> idOf;
    for (const int keyId : keyIds) {
        idOf.emplace(XStringToKeysym(KeyName(keyId)), keyId);
    }
    idOf.erase(NoSymbol);
    std::map<KeyCode, int> found;
    for (int keycode = keyboard.FirstKeycode(); keycode <= keyboard.LastKeycode(); ++keycode) {
        const auto wanted = idOf.find(keyboard.SymbolOf(keycode));
        if (wanted != idOf.end()) {
            found.emplace(static_cast<KeyCode>(keycode), wanted->second);
        }
    }
    return found;
}

/// Asks for many grabs at once and learns with one round trip which were refused.
class GrabRequests {
public:
    GrabRequests(Display* display, Window root) : display_(display), root_(root), trap_(display) {}

    void Ask(KeyCode keycode, unsigned int modifiers)
    {
        keycodes_[NextRequest(display_)] = keycode;
        XGrabKey(display_, keycode, modifiers, root_, False, GrabModeAsync, GrabModeAsync);
    }

    /// How many requests of each keycode were refused.
    std::map<KeyCode, std::size_t> Refused()
    {
        std::map<KeyCode, std::size_t> refused;
        for (const unsigned long request : trap_.FailedRequests()) {
            const auto asked = keycodes_.find(request);
            if (asked != keycodes_.end()) {
                ++refused[asked->second];
            }
        }
        return refused;
    }

private:
    Display* display_;
    Window root_;
    XErrorTrap trap_;
    std::map<unsigned long, KeyCode> keycodes_;
};

} // namespace

GrabbedKeys::GrabbedKeys(Display* display) : display_(display), root_(DefaultRootWindow(display)) {}

void GrabbedKeys::Add(const std::set<int>& keyIds)
{
    wanted_.insert(keyIds.begin(), keyIds.end());
    Renew();
}

void GrabbedKeys::Remove(const std::set<int>& keyIds)
{
    for (const int keyId : keyIds) {
        wanted_.erase(keyId);
    }
    std::map<KeyCode, int> kept;
    for (const auto& [keycode, key] : keys_) {
        if (wanted_.count(key.keyId) != 0) {
            kept.emplace(keycode, key.keyId);
        }
    }
    DropAllBut(kept);
    XFlush(display_);
}

void GrabbedKeys::Renew()
{
    const KeyboardMap keyboard(display_);
    const std::map<KeyCode, int> found = FindKeycodes(wanted_, keyboard);
    DropAllBut(found);
    for (const auto& [keycode, keyId] : found) {
        // A key that is grabbed already keeps its grab: released for a moment it could be missed.
        keys_.emplace(keycode, Key{keyId, Grip::kNone}).first->second.keyId = keyId;
    }
    Grab(LockModifierCombinations(display_, keyboard));
    LogNewFailures();
}

void GrabbedKeys::DropAllBut(const std::map<KeyCode, int>& wanted)
{
    for (auto key = keys_.begin(); key != keys_.end();) {
        if (wanted.count(key->first) == 0) {
            XUngrabKey(display_, key->first, AnyModifier, root_);
            key = keys_.erase(key);
        } else {
            ++key;
        }
    }
}

void GrabbedKeys::Grab(const std::vector<unsigned int>& lockCombinations)
{
    GrabRequests requests(display_, root_);
    for (const auto& [keycode, key] : keys_) {
        if (key.grip != Grip::kWhole) {
            requests.Ask(keycode, AnyModifier);
        }
    }
    const std::map<KeyCode, std::size_t> refused = requests.Refused();
    for (auto& [keycode, key] : keys_) {
        if (refused.count(keycode) == 0) {
            key.grip = Grip::kWhole;
        }
    }
    if (refused.empty()) {
        return;
    }

    // Any modifier is refused as a whole where another client has one combination.
    for (const auto& [keycode, count] : refused) {
        for (const unsigned int modifiers : lockCombinations) {
            requests.Ask(keycode, modifiers);
        }
    }
    std::map<KeyCode, std::size_t> refusedParts = requests.Refused();
    for (const auto& [keycode, count] : refused) {
        const bool nothingLeft = refusedParts[keycode] == lockCombinations.size();
        keys_.at(keycode).grip = nothingLeft ? Grip::kNone : Grip::kPartial;
    }
}

void GrabbedKeys::LogNewFailures()
{
    std::map<int, Grip> failures;
    for (const auto& [keycode, key] : keys_) {
        if (key.grip != Grip::kWhole) {
            failures[key.keyId] = GripOf(key.keyId);
        }
    }
    for (const auto& [keyId, grip] : failures) {
        const auto logged = logged_.find(keyId);
        if (logged != logged_.end() && logged->second == grip) {
            continue;
        }
        if (grip == Grip::kPartial) {
            PLATFORM_LOG(DLOG_WARN, "another program holds a combination of the key %s: taken without it",
                         KeyName(keyId));
        } else {
            PLATFORM_LOG(DLOG_WARN, "another program holds the key %s: not taken", KeyName(keyId));
        }
    }
    logged_ = std::move(failures);
}

Grip GrabbedKeys::GripOf(int keyId) const
{
    Grip worst = Grip::kWhole;
    for (const auto& [keycode, key] : keys_) {
        if (key.keyId == keyId) {
            worst = std::max(worst, key.grip);
        }
    }
    return worst;
}

std::vector<std::string> GrabbedKeys::HeldNames() const
{
    return NamesOf([](const Key& key) { return key.grip != Grip::kNone; });
}

std::vector<std::string> GrabbedKeys::FailedNames() const
{
    return NamesOf([](const Key& key) { return key.grip != Grip::kWhole; });
}

std::vector<std::string> GrabbedKeys::NamesOf(bool (*counts)(const Key&)) const
{
    std::set<int> keyIds;
    for (const auto& [keycode, key] : keys_) {
        if (counts(key)) {
            keyIds.insert(key.keyId);
        }
    }
    std::vector<std::string> names;
    names.reserve(keyIds.size());
    for (const int keyId : keyIds) {
        names.emplace_back(KeyName(keyId));
    }
    return names;
}

} // namespace desktop

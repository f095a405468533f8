#include "Platform/desktop/app/GrabbedKeys.h"

#include <algorithm>

#include "Platform/desktop/app/KeyboardMap.h"
#include "Platform/desktop/base/PlatformLog.h"
#include "Platform/desktop/x11/KeyTable.h"
#include "Platform/desktop/x11/XConnection.h"

namespace desktop {

namespace {

/// The keycodes of the wanted ids on this keyboard.
std::map<KeyCode, int> FindKeycodes(const std::set<int>& keyIds, const KeyboardMap& keyboard)
{
    std::map<KeySym, int> idOf;
    for (const int keyId : keyIds) {
        idOf.emplace(XStringToKeysym(KeyName(keyId)), keyId);
    }
    // Older Xlibs do not know every name. Keycodes without a symbol must not match such an id.
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

/// Requests many grabs and finds out in one round trip which were refused.
class GrabRequests {
public:
    using Place = std::pair<KeyCode, Window>;

    explicit GrabRequests(Display* display) : display_(display), trap_(display) {}

    void Ask(const Place& place, unsigned int modifiers)
    {
        places_[NextRequest(display_)] = place;
        // Asynchronous, so that a press never freezes the keyboard until this process reads it.
        XGrabKey(display_, place.first, modifiers, place.second, False, GrabModeAsync, GrabModeAsync);
    }

    /// How many requests for each place were refused.
    std::map<Place, std::size_t> Refused()
    {
        std::map<Place, std::size_t> refused;
        for (const unsigned long request : trap_.FailedRequests()) {
            const auto asked = places_.find(request);
            if (asked != places_.end()) {
                ++refused[asked->second];
            }
        }
        return refused;
    }

private:
    Display* display_;
    XErrorTrap trap_;
    std::map<unsigned long, Place> places_;
};

} // namespace

GrabbedKeys::GrabbedKeys(Display* display) : display_(display)
{
    // A key press is looked up on the screen that has the focus, or the pointer.
    for (int screen = 0; screen < ScreenCount(display); ++screen) {
        roots_.push_back(RootWindow(display, screen));
    }
}

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
    for (const auto& [place, key] : keys_) {
        if (wanted_.count(key.keyId) != 0) {
            kept.emplace(place.first, key.keyId);
        }
    }
    DropAllBut(kept);
    XFlush(display_);
}

void GrabbedKeys::Clear()
{
    wanted_.clear();
    keys_.clear();
    logged_.clear();
    for (const Window root : roots_) {
        XUngrabKey(display_, AnyKey, AnyModifier, root);
    }
    XFlush(display_);
}

void GrabbedKeys::Renew()
{
    const KeyboardMap keyboard(display_);
    const std::map<KeyCode, int> found = FindKeycodes(wanted_, keyboard);
    DropAllBut(found);
    for (const auto& [keycode, keyId] : found) {
        for (const Window root : roots_) {
            // A key that is grabbed already keeps its grab: a press during a release and re-grab would be lost.
            keys_.emplace(Place(keycode, root), Key{keyId, GrabState::kNone}).first->second.keyId = keyId;
        }
    }
    Grab(LockModifierCombinations(display_, keyboard));
    LogChanges();
}

void GrabbedKeys::DropAllBut(const std::map<KeyCode, int>& wanted)
{
    for (auto key = keys_.begin(); key != keys_.end();) {
        const auto& [keycode, root] = key->first;
        if (wanted.count(keycode) == 0) {
            XUngrabKey(display_, keycode, AnyModifier, root);
            key = keys_.erase(key);
        } else {
            ++key;
        }
    }
}

void GrabbedKeys::Grab(const std::vector<unsigned int>& lockCombinations)
{
    GrabRequests requests(display_);
    for (const auto& [place, key] : keys_) {
        if (key.state != GrabState::kWhole) {
            requests.Ask(place, AnyModifier);
        }
    }
    const std::map<Place, std::size_t> refused = requests.Refused();
    for (auto& [place, key] : keys_) {
        if (refused.count(place) == 0) {
            key.state = GrabState::kWhole;
        }
    }
    if (refused.empty()) {
        return;
    }

    // The server refuses a grab with any modifier as a whole where another client has one combination.
    for (const auto& [place, count] : refused) {
        for (const unsigned int modifiers : lockCombinations) {
            requests.Ask(place, modifiers);
        }
    }
    std::map<Place, std::size_t> refusedParts = requests.Refused();
    for (const auto& [place, count] : refused) {
        const bool nothingLeft = refusedParts[place] == lockCombinations.size();
        keys_.at(place).state = nothingLeft ? GrabState::kNone : GrabState::kPartial;
    }
}

void GrabbedKeys::LogChanges()
{
    std::map<int, GrabState> failures;
    for (const auto& [place, key] : keys_) {
        if (key.state != GrabState::kWhole) {
            failures[key.keyId] = StateOf(key.keyId);
        }
    }
    for (const auto& [keyId, state] : failures) {
        const auto logged = logged_.find(keyId);
        if (logged != logged_.end() && logged->second == state) {
            continue;
        }
        if (state == GrabState::kPartial) {
            PLATFORM_LOG(DLOG_WARN, "another program holds a combination of the key %s: taken without it",
                         KeyName(keyId));
        } else {
            PLATFORM_LOG(DLOG_WARN, "another program holds the key %s: not taken", KeyName(keyId));
        }
    }
    for (const auto& [keyId, state] : logged_) {
        if (failures.count(keyId) == 0 && wanted_.count(keyId) != 0) {
            PLATFORM_LOG(DLOG_INFO, "no other program holds the key %s any more: taken", KeyName(keyId));
        }
    }
    logged_ = std::move(failures);
}

GrabState GrabbedKeys::StateOf(int keyId) const
{
    GrabState worst = GrabState::kWhole;
    for (const auto& [place, key] : keys_) {
        if (key.keyId == keyId) {
            // The states stand in the order from best to worst.
            worst = std::max(worst, key.state);
        }
    }
    return worst;
}

std::vector<std::string> GrabbedKeys::HeldNames() const
{
    return NamesOf([](const Key& key) { return key.state != GrabState::kNone; });
}

std::vector<std::string> GrabbedKeys::FailedNames() const
{
    return NamesOf([](const Key& key) { return key.state != GrabState::kWhole; });
}

std::vector<std::string> GrabbedKeys::NamesOf(bool (*counts)(const Key&)) const
{
    std::set<int> keyIds;
    for (const auto& [place, key] : keys_) {
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

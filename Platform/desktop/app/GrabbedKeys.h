#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <X11/Xlib.h>

namespace desktop {

/// How much of a key is ours.
enum class GrabState {
    kWhole,   ///< every press, whatever modifiers are down
    kPartial, ///< another client has some combination; ours are what is left of plain and locked
    kNone,    ///< another client has the key
};

/// Key ids grabbed on the root window of each of a display's screens, so that their events arrive
/// whoever has the focus.
///
/// An id stands for every key that gives its symbol without a modifier; an id without a key on
/// this keyboard is remembered for the day it appears. What another client holds is logged by
/// the key's name, once for as long as that lasts.
class GrabbedKeys {
public:
    /// The grabs, and so the events, belong to this connection. Borrowed.
    explicit GrabbedKeys(Display* display);

    void Add(const std::set<int>& keyIds);
    void Remove(const std::set<int>& keyIds);

    /// Follows a change of the keyboard's mapping: gives up keys that moved away, grabs where they
    /// are now, and tries again what another client held.
    void Renew();

    /// Releases every grab, and remembers no id. Waits for nothing.
    void Clear();

    /// The worst among the keys of this id; whole when the keyboard has none.
    GrabState StateOf(int keyId) const;

    /// Names of the keys whose presses arrive, in the order of their ids.
    std::vector<std::string> HeldNames() const;
    /// Names of the keys that are not wholly ours.
    std::vector<std::string> FailedNames() const;

private:
    struct Key {
        int keyId;
        GrabState state;
    };

    /// A grab is one key on one screen.
    using Place = std::pair<KeyCode, Window>;

    void DropAllBut(const std::map<KeyCode, int>& wanted);
    void Grab(const std::vector<unsigned int>& lockCombinations);
    void LogChanges();
    std::vector<std::string> NamesOf(bool (*counts)(const Key&)) const;

    Display* display_;
    std::vector<Window> roots_;
    std::set<int> wanted_;
    std::map<Place, Key> keys_;
    std::map<int, GrabState> logged_;
};

} // namespace desktop

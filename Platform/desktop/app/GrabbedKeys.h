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
    kWhole,   ///< every press arrives, with any modifiers
    kPartial, ///< another client has one combination; the rest of plain and locked presses arrive
    kNone,    ///< another client has the key
};

/// Key ids grabbed on the root window of each of a display's screens, so that their events arrive with
/// the focus on any window.
///
/// An id stands for every key that gives its symbol without a modifier. An id without a key on this
/// keyboard is remembered until such a key appears. A key that another client holds is logged by its
/// name, once for as long as that lasts.
class GrabbedKeys {
public:
    /// The grabs, and so the events, belong to this connection, which is borrowed.
    explicit GrabbedKeys(Display* display);

    void Add(const std::set<int>& keyIds);
    void Remove(const std::set<int>& keyIds);

    /// Follows a change of the keyboard's mapping: releases keycodes that lost their key, grabs the ones
    /// that have it now, and retries keys that another client held.
    void Renew();

    /// Releases every grab, and remembers no id. Waits for nothing.
    void Clear();

    /// The worst among the keys of this id; whole when the keyboard has none.
    GrabState StateOf(int keyId) const;

    /// Names of the keys whose presses arrive, in the order of their ids.
    std::vector<std::string> HeldNames() const;
    /// Names of the keys that another client holds, wholly or in one combination.
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

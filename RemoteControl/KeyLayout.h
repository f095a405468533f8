#pragma once

#include <string_view>
#include <vector>

/// A rectangle of the window, in units that the toolkit's scale turns into pixels.
struct Place {
    int x;
    int y;
    int width;
    int height;
};

/// A colour without transparency, 0 to 255 each.
struct Colour {
    int red;
    int green;
    int blue;
};

/// A key of the remote control.
struct RemoteKey {
    const char* symbol;                     ///< its keysym's name
    const char* caption;                    ///< what the button says
    const char* hint;                       ///< the key of the host's keyboard that presses it, for people
    std::vector<std::string_view> hostKeys; ///< the names of those keys; the key's own symbol is always one
    Place place;
    const Colour* stripe = nullptr; ///< the colour that a colour key is named after
};

constexpr int kWindowWidth = 332;
constexpr int kMargin = 20;

/// All keys, from the top of the remote to its bottom.
const std::vector<RemoteKey>& RemoteKeys();

/// A place in a row that so many buttons share, the first at the left.
Place PlaceInRow(int y, int column, int columns);

/// Where the row of tool keys, and what is below the keys, begins.
constexpr int kToolRow = 126;
constexpr int kBelowKeys = 508;

#pragma once

namespace companion {

struct Colour {
    int red, green, blue;
};

// Each text colour stands out from each surface that it is used on by 5 to 1 or more.
inline constexpr Colour kBackground = {13, 18, 25};
inline constexpr Colour kCard = {27, 35, 47};
inline constexpr Colour kOtherRow = {33, 42, 56};
inline constexpr Colour kSelectedRow = {44, 66, 98};
inline constexpr Colour kTrack = {120, 136, 156}; ///< of the day, where nothing plays
inline constexpr Colour kText = {244, 247, 250};
inline constexpr Colour kQuietText = {190, 201, 214};
inline constexpr Colour kPeriod = {58, 88, 130};
inline constexpr Colour kPlaying = {104, 186, 248};
inline constexpr Colour kOnPlaying = {8, 20, 36}; ///< text on it
inline constexpr Colour kGood = {124, 224, 150};
inline constexpr Colour kOdd = {255, 205, 92};
inline constexpr Colour kBad = {255, 158, 146};

// Sizes of text on a screen of 1080 lines.
inline constexpr int kSmallText = 30;
inline constexpr int kSmallestText = 28;

/// Of the frame around what has the focus.
inline constexpr int kFocusWidth = 8;

inline constexpr int kLines = 1080; ///< that all sizes are for

} // namespace companion

#include "RemoteControl/KeyLayout.h"

namespace {

constexpr int kGap = 8;
constexpr int kKeyHeight = 54;
constexpr int kRowHeight = kKeyHeight + kGap;
constexpr int kFirstRow = 44;
constexpr int kArrowRow = kToolRow + kRowHeight + kGap;

constexpr Colour kRed{229, 72, 77};
constexpr Colour kGreen{70, 167, 88};
constexpr Colour kYellow{245, 217, 10};
constexpr Colour kBlue{62, 130, 247};

/// A place among the keys around the arrows and below them.
Place Cell(int row, int column)
{
    return PlaceInRow(kArrowRow + row * kRowHeight, column, 3);
}

} // namespace

Place PlaceInRow(int y, int column, int columns)
{
    const int width = (kWindowWidth - 2 * kMargin - (columns - 1) * kGap) / columns;
    return {kMargin + column * (width + kGap), y, width, kKeyHeight};
}

const std::vector<RemoteKey>& RemoteKeys()
{
    constexpr int kColourRow = kArrowRow + 4 * kRowHeight;
    static const std::vector<RemoteKey> keys = {
        {"XF86PowerOff", "Power", "P", {"p"}, PlaceInRow(kFirstRow, 0, 3)},
        {"XF86HomePage", "Home", "H", {"h", "Home"}, PlaceInRow(kFirstRow, 1, 3)},
        {"XF86Close", "Exit", "X", {"x"}, PlaceInRow(kFirstRow, 2, 3)},
        {"XF86SimpleMenu", "SimpleMenu", "S", {"s"}, PlaceInRow(kToolRow, 0, 2)},
        {"XF86More", "More", "M", {"m"}, PlaceInRow(kToolRow, 1, 2)},
        {"XF86AudioRaiseVolume", "Vol +", "+", {"plus", "equal", "KP_Add"}, Cell(0, 0)},
        {"Up", "\u25B2", "\u2191", {"KP_Up"}, Cell(0, 1)},
        {"XF86ChannelUp", "Ch +", "PgUp", {"Prior", "KP_Prior"}, Cell(0, 2)},
        {"Left", "\u25C0", "\u2190", {"KP_Left"}, Cell(1, 0)},
        {"Return", "OK", "\u21B5", {"KP_Enter"}, Cell(1, 1)},
        {"Right", "\u25B6", "\u2192", {"KP_Right"}, Cell(1, 2)},
        {"XF86AudioLowerVolume", "Vol \u2212", "\u2212", {"minus", "KP_Subtract"}, Cell(2, 0)},
        {"Down", "\u25BC", "\u2193", {"KP_Down"}, Cell(2, 1)},
        {"XF86ChannelDown", "Ch \u2212", "PgDn", {"Next", "KP_Next"}, Cell(2, 2)},
        {"XF86Back", "Back", "Esc", {"Escape", "BackSpace"}, Cell(3, 0)},
        {"XF86AudioMute", "Mute", "U", {"u"}, Cell(3, 1)},
        {"XF86AudioPlay", "Play", "Space", {"space"}, Cell(3, 2)},
        {"XF86Red", "Red", "F1", {"F1"}, PlaceInRow(kColourRow, 0, 4), &kRed},
        {"XF86Green", "Green", "F2", {"F2"}, PlaceInRow(kColourRow, 1, 4), &kGreen},
        {"XF86Yellow", "Yellow", "F3", {"F3"}, PlaceInRow(kColourRow, 2, 4), &kYellow},
        {"XF86Blue", "Blue", "F4", {"F4"}, PlaceInRow(kColourRow, 3, 4), &kBlue},
    };
    return keys;
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Eina.h>

/// What an X window shows, read from the server.
class Pixels {
public:
    /// A window of the display that DISPLAY names, all of which is on the screen. Throws `std::runtime_error`
    /// when it cannot be read.
    Pixels(unsigned long window, int width, int height);

    int Width() const { return width_; }
    int Height() const { return height_; }

    /// 0xRRGGBB
    std::uint32_t At(int x, int y) const
    {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)];
    }

    /// The contrast of the most frequent colour there with the one that differs most from it: 1 to 21, as
    /// text on the web is judged.
    double Contrast(const Eina_Rectangle& place) const;

    /// How many pixels of the outer 5 % differ from the one in the corner.
    int DrawnInMargin() const;

    /// The contrast of two pixels.
    static double Contrast(std::uint32_t one, std::uint32_t other);

private:
    int width_;
    int height_;
    std::vector<std::uint32_t> pixels_{};
};

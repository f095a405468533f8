#include "Tests/Companion/Pixels.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <unordered_map>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

double Luminance(std::uint32_t colour)
{
    const auto part = [colour](unsigned shift) {
        const double value = ((colour >> shift) & 0xFFU) / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

} // namespace

Pixels::Pixels(unsigned long window, int width, int height) : width_(width), height_(height)
{
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> display(XOpenDisplay(nullptr), XCloseDisplay);
    XImage* const image = display == nullptr ? nullptr
                                             : XGetImage(display.get(), window, 0, 0, static_cast<unsigned>(width),
                                                         static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        throw std::runtime_error("the window cannot be read");
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            pixels_.push_back(static_cast<std::uint32_t>(XGetPixel(image, x, y)) & 0xFFFFFFU);
        }
    }
    XDestroyImage(image);
}

double Pixels::Contrast(const Eina_Rectangle& place) const
{
    std::unordered_map<std::uint32_t, int> counts;
    for (int y = std::max(place.y, 0); y < std::min(place.y + place.h, height_); ++y) {
        for (int x = std::max(place.x, 0); x < std::min(place.x + place.w, width_); ++x) {
            ++counts[At(x, y)];
        }
    }
    const auto ground = std::max_element(
        counts.begin(), counts.end(), [](const auto& left, const auto& right) { return left.second < right.second; });
    double best = 1;
    for (const auto& [colour, count] : counts) {
        best = std::max(best, Contrast(ground->first, colour));
    }
    return best;
}

int Pixels::DrawnInMargin() const
{
    const int left = width_ / 20;
    const int top = height_ / 20;
    int drawn = 0;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            const bool outside = x < left || x >= width_ - left || y < top || y >= height_ - top;
            drawn += outside && At(x, y) != At(0, 0) ? 1 : 0;
        }
    }
    return drawn;
}

double Pixels::Contrast(std::uint32_t one, std::uint32_t other)
{
    const double first = Luminance(one) + 0.05;
    const double second = Luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

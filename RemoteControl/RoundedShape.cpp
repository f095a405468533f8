#include "RemoteControl/RoundedShape.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

/// How much of the pixel lies in a disc around the middle of a picture of this size.
double Coverage(int x, int y, double middle, double radius)
{
    return std::clamp(radius + 0.5 - std::hypot(x - middle, y - middle), 0.0, 1.0);
}

} // namespace

Evas_Object* AddRoundedShape(Evas* canvas, int radius, int stroke)
{
    // A disc; its middle row and column are stretched, and its corners stay as they are.
    const int size = 2 * radius + 1;
    Evas_Object* image = evas_object_image_filled_add(canvas);
    evas_object_image_size_set(image, size, size);
    evas_object_image_alpha_set(image, EINA_TRUE);
    auto* pixels = static_cast<std::uint32_t*>(evas_object_image_data_get(image, EINA_TRUE));
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double inner = stroke == 0 ? 0.0 : Coverage(x, y, radius, radius - stroke);
            const auto alpha = static_cast<std::uint32_t>(255 * (Coverage(x, y, radius, radius) - inner));
            pixels[y * size + x] = alpha << 24U | alpha << 16U | alpha << 8U | alpha;
        }
    }
    evas_object_image_data_set(image, pixels);
    evas_object_image_data_update_add(image, 0, 0, size, size);
    evas_object_image_border_set(image, radius, radius, radius, radius);
    return image;
}

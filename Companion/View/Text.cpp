#include "Companion/View/Text.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace companion {

namespace {

constexpr char kStyleKey[] = "text style";

double ScaleOf(Evas_Object* object)
{
    int height = 0;
    evas_output_size_get(evas_object_evas_get(object), nullptr, &height);
    return height > 0 ? static_cast<double>(height) / kLines : 1.0;
}

const char* NameOf(Align align)
{
    const bool mirrored = elm_config_mirrored_get() != EINA_FALSE;
    return align == Align::kCenter ? "center" : (align == Align::kStart) == mirrored ? "right" : "left";
}

void SetStyle(Evas_Object* object, const TextStyle& look, int size, bool shorten)
{
    char text[256];
    std::snprintf(text, sizeof text, "DEFAULT='font=Sans%s font_size=%d color=#%02x%02x%02x wrap=mixed align=%s%s'",
                  look.bold ? ":style=Bold" : "", size, static_cast<unsigned>(look.colour.red),
                  static_cast<unsigned>(look.colour.green), static_cast<unsigned>(look.colour.blue), NameOf(look.align),
                  shorten ? " ellipsis=1.0" : "");
    Evas_Textblock_Style* const style = evas_textblock_style_new();
    evas_textblock_style_set(style, text);
    evas_object_textblock_style_set(object, style);
    evas_textblock_style_free(style); // the object holds it as long as it needs it
}

bool Fits(Evas_Object* object, int width, int height)
{
    constexpr int kRounding = 2; // sizes of fonts and places are rounded apart
    int formattedWidth = 0;
    int formattedHeight = 0;
    evas_object_textblock_size_formatted_get(object, &formattedWidth, &formattedHeight);
    return formattedWidth <= width && formattedHeight <= height + kRounding;
}

void Fit(Evas_Object* object)
{
    const auto* const look = static_cast<const TextStyle*>(evas_object_data_get(object, kStyleKey));
    int width = 0;
    int height = 0;
    evas_object_geometry_get(object, nullptr, nullptr, &width, &height);
    if (width <= 1 || height <= 1) {
        return;
    }
    evas_object_scale_set(object, ScaleOf(object));
    for (int size = look->size; size >= kSmallestText; size -= 2) {
        SetStyle(object, *look, size, false);
        if (Fits(object, width, height)) {
            return;
        }
    }
    SetStyle(object, *look, kSmallestText, true);
}

} // namespace

Text::Text(Evas_Object* grid, const TextStyle& style, const Eina_Rectangle& place)
    : object_(evas_object_textblock_add(evas_object_evas_get(grid)))
{
    const auto release = [](void* data, Evas* /*canvas*/, Evas_Object* /*object*/, void* /*event*/) {
        delete static_cast<TextStyle*>(data);
    };
    auto look = std::make_unique<TextStyle>(style);
    evas_object_data_set(object_, kStyleKey, look.get());
    evas_object_event_callback_add(object_, EVAS_CALLBACK_FREE, release, look.release());
    evas_object_event_callback_add(object_, EVAS_CALLBACK_RESIZE, OnResize, nullptr);
    SetStyle(object_, style, style.size, false);
    evas_object_textblock_valign_set(object_, style.valign);
    evas_object_pass_events_set(object_, EINA_TRUE);
    elm_grid_pack(grid, object_, 0, 0, 1, 1);
    Place(place);
    evas_object_show(object_);
}

void Text::Place(const Eina_Rectangle& place)
{
    // The canvas reserves room above the first line and below the last one for the tallest accents of all.
    const int reserve = 3 * static_cast<TextStyle*>(evas_object_data_get(object_, kStyleKey))->size / 10;
    elm_grid_pack_set(object_, place.x, place.y - reserve, place.w, place.h + 2 * reserve);
}

void Text::Set(const std::string& text)
{
    const std::unique_ptr<char, decltype(&std::free)> markup(evas_textblock_text_utf8_to_markup(object_, text.c_str()),
                                                             std::free);
    const char* const present = evas_object_textblock_text_markup_get(object_);
    if (present == nullptr || text.empty() || std::string(present) != markup.get()) {
        evas_object_textblock_text_markup_set(object_, markup.get());
    }
    Fit(object_);
}

void Text::Set(const std::string& text, const Colour& colour)
{
    static_cast<TextStyle*>(evas_object_data_get(object_, kStyleKey))->colour = colour;
    Set(text);
}

void Text::OnResize(void* /*data*/, Evas* /*canvas*/, Evas_Object* object, void* /*event*/)
{
    Fit(object);
}

Evas_Object* AddGrid(Evas_Object* parent, int width, int height)
{
    Evas_Object* const grid = elm_grid_add(parent);
    elm_grid_size_set(grid, width, height);
    evas_object_show(grid);
    return grid;
}

Evas_Object* AddRectangle(Evas_Object* parent, const Colour& colour)
{
    Evas_Object* const rectangle = evas_object_rectangle_add(evas_object_evas_get(parent));
    evas_object_color_set(rectangle, colour.red, colour.green, colour.blue, 255);
    evas_object_pass_events_set(rectangle, EINA_TRUE);
    evas_object_show(rectangle);
    return rectangle;
}

} // namespace companion

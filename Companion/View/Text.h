#pragma once

#include <string>

#include <Elementary.h>

#include "Companion/View/Palette.h"

namespace companion {

/// To which side of its rectangle a text goes. The start is where the language of the companion starts,
/// whatever the language of the text.
enum class Align { kStart, kCenter, kEnd };

/// How a text looks. Sizes are for a screen of 1080 lines and grow with the screen.
struct TextStyle {
    int size = kSmallText; ///< shrinks down to `kSmallestText` where the text does not fit otherwise
    Colour colour = kText;
    bool bold = false;
    Align align = Align::kStart;
    double valign = 0.0; ///< from 0, the top, to 1
};

/// A text that fits into its rectangle: wrapped, then smaller, and shortened as the last resort. Belongs to
/// the container that it is in.
class Text {
public:
    /// In `place` of an elm_grid that counts in lines of a screen of 1080 from top to bottom.
    Text(Evas_Object* grid, const TextStyle& style, const Eina_Rectangle& place);

    Evas_Object* Object() const { return object_; }

    /// Moves it to another place of its grid.
    void Place(const Eina_Rectangle& place);

    /// Plain text, not markup.
    void Set(const std::string& text);

    /// The same in another colour.
    void Set(const std::string& text, const Colour& colour);

private:
    static void OnResize(void* data, Evas* canvas, Evas_Object* object, void* event);

    Evas_Object* object_; ///< owns what it knows of the style
};

/// A shown container that counts in units of its own. The caller packs it.
Evas_Object* AddGrid(Evas_Object* parent, int width, int height);

/// A filled rectangle.
Evas_Object* AddRectangle(Evas_Object* parent, const Colour& colour);

} // namespace companion

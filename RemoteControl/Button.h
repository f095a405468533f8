#pragma once

#include <functional>
#include <string>

#include <Ecore.h>
#include <Evas.h>

#include "RemoteControl/KeyLayout.h"

/// A length in the layout's units, in pixels of this screen.
int Pixels(double units);

/// Text on the canvas, in a size of the layout's units. The canvas owns it.
Evas_Object* AddText(Evas* canvas, const char* text, bool bold, int size, Colour colour);

/// A button of the remote: a plate with a caption, the key of the keyboard that presses it, and a line that
/// says in words, with a mark of its own shape, what state it is in.
///
/// Main loop's thread only. The canvas owns the objects and outlives the button.
class Button {
public:
    enum class Mark {
        kDisc, ///< filled: held, on
        kRing, ///< empty: handed back, off
        kDash, ///< neither
        kNone, ///< no state at all
    };

    /// `pressed` runs at each press by pointer.
    Button(Evas* canvas, const Place& place, const char* caption, const char* hint, std::function<void()> pressed);
    ~Button();

    Button(const Button&) = delete;
    Button& operator=(const Button&) = delete;

    /// Shows a state. `words` say it as well.
    void SetState(Mark mark, const char* words);

    /// Draws a stripe of this colour above the caption.
    void AddStripe(Colour colour);

    /// Presses it: it looks pressed for a moment.
    void Press();

private:
    void AddPlate(Evas* canvas);
    static void OnMouseDown(void* data, Evas* canvas, Evas_Object* object, void* event);
    static Eina_Bool OnPressEnd(void* data);

    Place place_;
    std::function<void()> pressed_;
    Ecore_Timer* pressEnd_ = nullptr;
    Evas_Object* plate_ = nullptr;
    Evas_Object* frame_ = nullptr; ///< of what is held
    Evas_Object* state_ = nullptr;
};

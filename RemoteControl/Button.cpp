#include "RemoteControl/Button.h"

#include <cmath>
#include <string>
#include <utility>

#include <Elementary.h>

#include "RemoteControl/RoundedShape.h"

namespace {

constexpr double kPressSeconds = 0.15;
constexpr int kRadius = 9;
constexpr int kCaptionSize = 15;
constexpr int kSmallSize = 10;
/// Narrower buttons have a smaller caption.
constexpr int kNarrow = 80;
constexpr int kNarrowCaptionSize = 13;

constexpr Colour kPlate{52, 58, 69};
constexpr Colour kPressedPlate{92, 104, 125};
constexpr Colour kCaption{240, 242, 245};
constexpr Colour kHint{154, 163, 178};

struct MarkLook {
    const char* shape;
    Colour colour;
};
/// By `Button::Mark`.
constexpr MarkLook kMarks[] = {
    {"\u25CF ", {134, 224, 154}}, {"\u25CB ", {242, 200, 121}}, {"\u2013 ", {171, 178, 191}}, {"", {171, 178, 191}}};

void SetColour(Evas_Object* object, Colour colour)
{
    evas_object_color_set(object, colour.red, colour.green, colour.blue, 255);
}

void PutAt(Evas_Object* object, double x, double y, double width, double height)
{
    evas_object_move(object, Pixels(x), Pixels(y));
    evas_object_resize(object, Pixels(width), Pixels(height));
}

int WidthOf(Evas_Object* text)
{
    int width = 0;
    evas_object_geometry_get(text, nullptr, nullptr, &width, nullptr);
    return width;
}

void PutInMiddle(Evas_Object* text, const Place& place, int y)
{
    evas_object_move(text, Pixels(place.x + place.width / 2.0) - WidthOf(text) / 2, Pixels(place.y + y));
}

} // namespace

int Pixels(double units)
{
    return static_cast<int>(std::lround(units * elm_config_scale_get()));
}

Evas_Object* AddText(Evas* canvas, const char* text, bool bold, int size, Colour colour)
{
    Evas_Object* object = evas_object_text_add(canvas);
    evas_object_text_font_set(object, bold ? "Sans:style=Bold" : "Sans", Pixels(size));
    evas_object_text_text_set(object, text);
    SetColour(object, colour);
    evas_object_pass_events_set(object, EINA_TRUE);
    evas_object_show(object);
    return object;
}

Button::Button(Evas* canvas, const Place& place, const char* caption, const char* hint, std::function<void()> pressed)
    : place_(place), pressed_(std::move(pressed))
{
    AddPlate(canvas);
    Evas_Object* text =
        AddText(canvas, caption, true, place.width < kNarrow ? kNarrowCaptionSize : kCaptionSize, kCaption);
    PutInMiddle(text, place, place.width < kNarrow ? 14 : 12);
    Evas_Object* key = AddText(canvas, hint, false, kSmallSize - 1, kHint);
    evas_object_move(key, Pixels(place.x + place.width - 6) - WidthOf(key), Pixels(place.y + 3));
    state_ = AddText(canvas, "", false, kSmallSize, kHint);
}

Button::~Button()
{
    if (pressEnd_ != nullptr) {
        ecore_timer_del(pressEnd_);
    }
}

void Button::AddPlate(Evas* canvas)
{
    plate_ = AddRoundedShape(canvas, Pixels(kRadius));
    SetColour(plate_, kPlate);
    PutAt(plate_, place_.x, place_.y, place_.width, place_.height);
    evas_object_show(plate_);
    evas_object_event_callback_add(plate_, EVAS_CALLBACK_MOUSE_DOWN, OnMouseDown, this);
    frame_ = AddRoundedShape(canvas, Pixels(kRadius), Pixels(1.5));
    SetColour(frame_, kMarks[0].colour);
    PutAt(frame_, place_.x, place_.y, place_.width, place_.height);
    evas_object_pass_events_set(frame_, EINA_TRUE);
}

void Button::SetState(Mark mark, const char* words)
{
    const MarkLook& look = kMarks[static_cast<std::size_t>(mark)];
    evas_object_text_text_set(state_, (look.shape + std::string(words)).c_str());
    SetColour(state_, look.colour);
    PutInMiddle(state_, place_, place_.height - 20);
    if (mark == Mark::kDisc) {
        evas_object_show(frame_);
    } else {
        evas_object_hide(frame_);
    }
}

void Button::AddStripe(Colour colour)
{
    Evas_Object* stripe = AddRoundedShape(evas_object_evas_get(plate_), Pixels(2));
    SetColour(stripe, colour);
    evas_object_pass_events_set(stripe, EINA_TRUE);
    PutAt(stripe, place_.x + 9, place_.y + 6, place_.width - 32, 5);
    evas_object_show(stripe);
}

void Button::Press()
{
    SetColour(plate_, kPressedPlate);
    if (pressEnd_ == nullptr) {
        pressEnd_ = ecore_timer_add(kPressSeconds, OnPressEnd, this);
    }
    pressed_();
}

void Button::OnMouseDown(void* data, Evas* /*canvas*/, Evas_Object* /*object*/, void* event)
{
    if (static_cast<const Evas_Event_Mouse_Down*>(event)->button == 1) {
        static_cast<Button*>(data)->Press();
    }
}

Eina_Bool Button::OnPressEnd(void* data)
{
    auto* self = static_cast<Button*>(data);
    self->pressEnd_ = nullptr;
    SetColour(self->plate_, kPlate);
    return ECORE_CALLBACK_CANCEL;
}

#include "RemoteControl/Button.h"

#include <cmath>
#include <utility>

#include <Elementary.h>

#include "RemoteControl/RoundedShape.h"

namespace {

constexpr double kPressSeconds = 0.15;
constexpr int kRadius = 9;
constexpr int kCaptionSize = 15;
constexpr int kSmallSize = 10;
constexpr int kMarkSize = 9;
constexpr int kMarkGap = 4;
/// Narrower buttons have a smaller caption.
constexpr int kNarrow = 80;
constexpr int kNarrowCaptionSize = 13;

constexpr Colour kPlate{52, 58, 69};
constexpr Colour kPressedPlate{92, 104, 125};
constexpr Colour kCaption{240, 242, 245};
constexpr Colour kHint{154, 163, 178};
constexpr Colour kDiscColour{134, 224, 154};
constexpr Colour kRingColour{242, 200, 121};
constexpr Colour kDashColour{171, 178, 191};

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

Evas_Object* AddMark(Evas* canvas, int radius, int stroke, Colour colour)
{
    Evas_Object* mark = AddRoundedShape(canvas, radius, stroke);
    SetColour(mark, colour);
    evas_object_pass_events_set(mark, EINA_TRUE);
    return mark;
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
    evas_object_move(text, Pixels(place.x + place.width / 2.0) - WidthOf(text) / 2,
                     Pixels(place.y + (place.width < kNarrow ? 14 : 12)));
    Evas_Object* key = AddText(canvas, hint, false, kSmallSize - 1, kHint);
    evas_object_move(key, Pixels(place.x + place.width - 6) - WidthOf(key), Pixels(place.y + 3));
    state_ = AddText(canvas, "", false, kSmallSize, kDashColour);
    disc_ = AddMark(canvas, Pixels(kMarkSize) / 2, 0, kDiscColour);
    ring_ = AddMark(canvas, Pixels(kMarkSize) / 2, Pixels(1.5), kRingColour);
    dash_ = evas_object_rectangle_add(canvas);
    evas_object_pass_events_set(dash_, EINA_TRUE);
    SetColour(dash_, kDashColour);
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
    SetColour(frame_, kDiscColour);
    PutAt(frame_, place_.x, place_.y, place_.width, place_.height);
    evas_object_pass_events_set(frame_, EINA_TRUE);
}

void Button::SetState(Mark mark, const char* words)
{
    mark_ = mark;
    evas_object_text_text_set(state_, words);
    const std::pair<Evas_Object*, Mark> shapes[] = {
        {disc_, Mark::kDisc}, {frame_, Mark::kDisc}, {ring_, Mark::kRing}, {dash_, Mark::kDash}};
    for (const auto& [shape, meaning] : shapes) {
        if (mark == meaning) {
            evas_object_show(shape);
        } else {
            evas_object_hide(shape);
        }
    }
    SetColour(state_, mark == Mark::kDisc ? kDiscColour : mark == Mark::kRing ? kRingColour : kDashColour);
    PlaceState();
}

/// The mark and the words side by side, together in the middle.
void Button::PlaceState()
{
    const double scale = elm_config_scale_get();
    const double words = WidthOf(state_) / scale;
    const int mark = mark_ == Mark::kNone ? 0 : kMarkSize + kMarkGap;
    const double left = place_.x + (place_.width - mark - words) / 2;
    const double top = place_.y + place_.height - 20;
    evas_object_move(state_, Pixels(left + mark), Pixels(top));
    PutAt(disc_, left, top + 3, kMarkSize, kMarkSize);
    PutAt(ring_, left, top + 3, kMarkSize, kMarkSize);
    PutAt(dash_, left, top + 7, kMarkSize, 1.5);
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

#include "Companion/View/FocusFrame.h"

#include <algorithm>

#include "Companion/View/Palette.h"
#include "Companion/View/Text.h"

namespace companion {

namespace {

Eina_Rectangle PlaceOf(Evas_Object* object)
{
    Eina_Rectangle place = {};
    evas_object_geometry_get(object, &place.x, &place.y, &place.w, &place.h);
    return place;
}

/// What to draw `thick` around: the focused widget, or the inside of the focused row of a list, as far as it
/// is in sight. Empty when there is none.
Eina_Rectangle FocusedPlace(Evas_Object* window, int thick)
{
    Evas_Object* const widget = elm_object_focused_object_get(window);
    if (widget == nullptr) {
        return {};
    }
    Eina_Rectangle place = PlaceOf(widget);
    const Elm_Object_Item* const item = elm_object_focused_item_get(widget);
    if (item == nullptr) {
        return place;
    }
    Evas_Object* const content = elm_object_item_part_content_get(item, "elm.swallow.content");
    const Eina_Rectangle row = content == nullptr ? Eina_Rectangle{} : PlaceOf(content);
    if (eina_rectangle_intersection(&place, &row) == EINA_FALSE) {
        return {};
    }
    return {place.x + thick, place.y + thick, std::max(place.w - 2 * thick, 0), std::max(place.h - 2 * thick, 0)};
}

} // namespace

FocusFrame::FocusFrame(Evas_Object* window) : window_(window)
{
    elm_win_focus_highlight_style_set(window, "blank"); // the toolkit switches its own on at the first key
    for (Evas_Object*& side : sides_) {
        side = AddRectangle(window, kPlaying);
        evas_object_layer_set(side, EVAS_LAYER_MAX);
    }
    // Before each picture, so that it follows whatever moves what has the focus.
    evas_event_callback_add(evas_object_evas_get(window), EVAS_CALLBACK_RENDER_PRE, OnRender, this);
    // The focus alone changes nothing that the canvas would draw.
    evas_event_callback_add(evas_object_evas_get(window), EVAS_CALLBACK_CANVAS_OBJECT_FOCUS_IN, OnFocus, this);
}

FocusFrame::~FocusFrame()
{
    Evas* const canvas = evas_object_evas_get(window_);
    evas_event_callback_del_full(canvas, EVAS_CALLBACK_RENDER_PRE, OnRender, this);
    evas_event_callback_del_full(canvas, EVAS_CALLBACK_CANVAS_OBJECT_FOCUS_IN, OnFocus, this);
    if (list_ != nullptr) {
        evas_object_smart_callback_del_full(list_, "item,focused", OnRow, this);
    }
}

void FocusFrame::FollowRows(Evas_Object* list)
{
    list_ = list;
    evas_object_smart_callback_add(list, "item,focused", OnRow, this);
}

void FocusFrame::Surround(const Eina_Rectangle& place, int thick)
{
    const Eina_Rectangle outer = {place.x - thick, place.y - thick, place.w + 2 * thick, place.h + 2 * thick};
    const Eina_Rectangle places[] = {{outer.x, outer.y, outer.w, thick},
                                     {outer.x, place.y + place.h, outer.w, thick},
                                     {outer.x, outer.y, thick, outer.h},
                                     {place.x + place.w, outer.y, thick, outer.h}};
    for (std::size_t side = 0; side < sides_.size(); ++side) {
        const Eina_Rectangle& at = places[side];
        evas_object_geometry_set(sides_[side], at.x, at.y, at.w, at.h);
        if (place.w > 0) {
            evas_object_show(sides_[side]);
        } else {
            evas_object_hide(sides_[side]);
        }
    }
}

void FocusFrame::OnRender(void* data, Evas* /*canvas*/, void* /*event*/)
{
    auto* const self = static_cast<FocusFrame*>(data);
    const int thick = std::max(kFocusWidth * PlaceOf(self->window_).h / kLines, 1);
    self->Surround(FocusedPlace(self->window_, thick), thick);
}

void FocusFrame::OnFocus(void* /*data*/, Evas* canvas, void* /*event*/)
{
    evas_damage_rectangle_add(canvas, 0, 0, 1, 1); // asks for a picture, for which the frame is placed
}

void FocusFrame::OnRow(void* data, Evas_Object* list, void* /*item*/)
{
    OnFocus(data, evas_object_evas_get(list), nullptr);
}

} // namespace companion

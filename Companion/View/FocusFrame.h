#pragma once

#include <array>

#include <Elementary.h>

namespace companion {

/// A frame around what has the focus. It stands still: the frame of the toolkit's theme pulses, which wakes
/// the process for as long as the window is open.
///
/// The window owns the objects and outlives the frame.
class FocusFrame {
public:
    explicit FocusFrame(Evas_Object* window);
    ~FocusFrame();

    FocusFrame(const FocusFrame&) = delete;
    FocusFrame& operator=(const FocusFrame&) = delete;

    /// Follows the focus from row to row of a list, too. The list outlives the frame.
    void FollowRows(Evas_Object* list);

private:
    void Surround(const Eina_Rectangle& place, int thick);
    static void OnRender(void* data, Evas* canvas, void* event);
    static void OnFocus(void* data, Evas* canvas, void* event);
    static void OnRow(void* data, Evas_Object* list, void* item);

    Evas_Object* window_;
    Evas_Object* list_ = nullptr;
    std::array<Evas_Object*, 4> sides_{};
};

} // namespace companion

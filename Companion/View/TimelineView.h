#pragma once

#include <vector>

#include <Elementary.h>

#include "Companion/View/Text.h"
#include "Diagnostics/Programme/Programme.h"

namespace companion {

/// A day from left to right, or from right to left: a bar for each period, brighter and taller while it
/// plays, the hours below, and above it where the day is now.
class TimelineView {
public:
    explicit TimelineView(Evas_Object* parent);

    TimelineView(const TimelineView&) = delete;
    TimelineView& operator=(const TimelineView&) = delete;

    /// To be packed into a container, which then owns it.
    Evas_Object* Object() const { return grid_; }

    /// `second`: of the day, now.
    void Show(const std::vector<schedule::Span>& periods, int second);

private:
    void ShowMark(int second, int top, int height);
    void ShowPeriod(const schedule::Span& span, bool playing);
    void ShowHours();

    Evas_Object* grid_;               ///< a second wide for each second of the day
    std::vector<Evas_Object*> shown_; ///< what the next `Show` replaces
};

} // namespace companion

#pragma once

#include "Common/VQMLog.h"

/// Walks a fixed number of slots of an attribute list. Slots from the list's end on are missing, which is
/// logged in the name of the schedule container.
class CVQMAttributeCursor {
public:
    /// `function` is the operation that log lines name. `attributes` holds names and values in turns up
    /// to a null name, and may be null. Both stay the caller's and must outlive the cursor.
    CVQMAttributeCursor(const char* function, const char** attributes, int slots)
        : function_(function), next_(attributes), slots_(slots)
    {
    }

    /// Goes to the next attribute that is not missing, and logs those that are. False after the last slot.
    bool Next()
    {
        for (; slots_ > 0; --slots_) {
            name_ = next_ != nullptr ? next_[0] : nullptr;
            value_ = name_ != nullptr ? next_[1] : nullptr;
            if (name_ != nullptr) {
                next_ += 2;
            }
            if (value_ != nullptr) {
                --slots_;
                return true;
            }
            VQM_LOG_IN("VQMScheduleContainer.cpp", function_, DLOG_DEBUG, nullptr, "pAttribute or pValue is wrong");
        }
        return false;
    }

    // After a `Next` that returned true.

    const char* Name() const { return name_; }
    const char* Value() const { return value_; }

private:
    const char* const function_;
    const char** next_;
    int slots_;
    const char* name_ = nullptr;
    const char* value_ = nullptr;
};

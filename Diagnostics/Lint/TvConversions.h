#pragma once

#include <string>

#include "Common/VQMDataObject.h"
#include "Data/VQMScheduleRecords.h"

/// What the TV makes of a text: the library's own conversions, never others.
namespace lint::tv {

_VQMTime Time(const std::string& text);
_VQMTime Date(const std::string& text);
int Integer(const std::string& text);
uVQMINT64 Unsigned(const std::string& text);

/// "09:03:00"
std::string TimeText(const _VQMTime& time);

/// "2016-12-31"
std::string DateText(const _VQMTime& date);

} // namespace lint::tv

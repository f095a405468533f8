#include "Diagnostics/Lint/TvConversions.h"

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Text/Words.h"

namespace lint::tv {

_VQMTime Time(const std::string& text)
{
    _VQMTime time;
    CVQMScheduleContainer().ConvertHHMMSSTimeToVQMTime(text, time);
    return time;
}

_VQMTime Date(const std::string& text)
{
    _VQMTime date;
    CVQMScheduleContainer().ConvertYYYYMMDDDateToVQMTime(text, date);
    return date;
}

int Integer(const std::string& text)
{
    int number = 0;
    // Every data object converts; an empty buffer costs nothing.
    CVQMDataBufferObject().StrToNumber(text.c_str(), number);
    return number;
}

uVQMINT64 Unsigned(const std::string& text)
{
    uVQMINT64 number = 0;
    CVQMDataBufferObject().StrToNumber(text.c_str(), number);
    return number;
}

std::string TimeText(const _VQMTime& time)
{
    return TwoDigits(time.nHour) + ":" + TwoDigits(time.nMinute) + ":" + TwoDigits(time.nSecond);
}

std::string DateText(const _VQMTime& date)
{
    return std::to_string(date.nYear) + "-" + TwoDigits(date.nMonth) + "-" + TwoDigits(date.nDay);
}

} // namespace lint::tv

#pragma once

#include <string_view>

#include "Common/VQMDataObject.h"
#include "Data/VQMScheduleRecords.h"

// The values of texts, by other means than the product's scanners.

/// An optional '-' and digits, modulo 2^32.
int IntOf(std::string_view text);

/// Digits, modulo 2^64.
uVQMINT64 UnsignedOf(std::string_view text);

/// An optional '-', digits, and any number of fractions, each of which goes on from the one before.
double DoubleOf(std::string_view text);

/// Hours, minutes and seconds, by the rules of the schedule document.
_VQMTime TimeOf(std::string_view text);

/// Year, month and day at their fixed places.
_VQMTime DateOf(std::string_view text);

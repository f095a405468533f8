#pragma once

#include <string>
#include <string_view>

#include "Data/VQMScheduleRecords.h"

/// Reads a schedule document as a strict reader would: every element, attribute and text must be
/// known, in its place and of its form. Throws `std::runtime_error` where one is not.
///
/// It shares nothing with the library but the records, so that the two can be compared.
_VQMPolicy ReadStrictly(std::string_view document);

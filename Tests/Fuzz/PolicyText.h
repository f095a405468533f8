#pragma once

#include <string>

#include "Data/VQMScheduleRecords.h"

/// Every field of a record, one a line and each text with its length: equal texts mean equal records.
std::string Describe(const _VQMPolicy& policy);
std::string Describe(const _VQMTime& time);

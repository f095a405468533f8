#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics/Text/Diagnostic.h"

namespace lint {

/// What the linter looks for. Docs/lint.md has a section for each, under its name.
enum class Rule {
    // the document as a whole
    kNotWellFormed,
    kUnreadableEncoding,
    kEncodingDeclaredWrongly,
    kTextAfterNul,
    kTooLarge,
    kDoctype,
    kStateMissing,
    kStateNotFirst,
    kStateNotOk,
    kNoSchedule,
    kNoItems,
    // elements and attributes
    kUnknownElement,
    kMisspeltElement,
    kMisplacedElement,
    kRepeatedElement,
    kUnknownAttribute,
    kMisspeltAttribute,
    kMissingAttribute,
    kAttributeBeyondSlots,
    kScheduleInSchedule,
    kItemOutsideSchedule,
    kItemInItem,
    kChildOutsideItem,
    kMissingChild,
    kRepeatedChild,
    kElementInText,
    kFormatBeforeName,
    kStrayText,
    // times and dates
    kTimeMalformed,
    kTimeWithoutSeconds,
    kTimeNotDigits,
    kTimeOutOfRange,
    kTimeAfterMidnight,
    kHour24,
    kTimeStyle,
    kStartNotBeforeEnd,
    kOverlappingPeriods,
    kDateNotYearMonthDay,
    kImpossibleDate,
    kDateStyle,
    kExpired,
    // numbers
    kNumberNotDigits,
    kNumberWraps,
    kNegativeNumber,
    kSizeInPieces,
    kSizeZero,
    kItemCountMismatch,
    kTotalSizeMismatch,
    // files
    kEmptyName,
    kEmptyFormat,
    kWhiteSpaceInName,
    kBlankInName,
    kMixedNormalization,
    kPathSeparatorInName,
    kDotInFormat,
    kExtensionTwice,
    kDuplicateId,
    kDuplicateOrder,
    kDuplicateFile,
    // network
    kNotAnAddress,
    kEmptyAddress,
    kNotASubnetMask,
    kGatewayOutsideSubnet,
    kMasterNotOwnAddress,
    kIsMasterValue,
    kCount,
};

/// The rule's stable name, in lower case with hyphens.
const char* NameOf(Rule rule);

Severity SeverityOf(Rule rule);

std::optional<Rule> FindRule(std::string_view name);

/// The names of all rules, in the order of the documentation.
std::vector<std::string> RuleNames();

} // namespace lint

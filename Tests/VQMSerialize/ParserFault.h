#pragma once

#include <cstddef>

/// Takes the place of the parser library's `XML_ParserCreate` and `XML_GetBuffer`, so that every
/// outcome of them can be had.
namespace parser_fault {

enum class Creation { Real, Null, StandardException, OtherException };

/// What the parser answers to a request for a buffer of no bytes; versions of the library differ.
enum class EmptyBuffer { Real, Given, Null };

struct Faults {
    Creation creation = Creation::Real;
    bool refuseBuffer = false;
    EmptyBuffer emptyBuffer = EmptyBuffer::Real;
    /// Records "XML_GetBuffer <length>".
    bool recordBuffer = false;
    /// The parser's n-th allocation from now on fails, 1 being the next one; counts down to 0.
    std::size_t failingAllocation = 0;
};

/// What fails; `faults() = {}` starts afresh.
Faults& faults();

/// The memory blocks that all parsers together hold now.
std::size_t BlocksInUse();

/// The bytes that all parsers together held at most since the last `ForgetMost`.
std::size_t MostBytes();
void ForgetMost();

} // namespace parser_fault

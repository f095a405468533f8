#pragma once

#include <sstream>
#include <string>

// The checks of a fuzz target. A failed check stops the process, as the fuzzer
// expects of an input that shows a fault.

[[noreturn]] void Fail(const std::string& what);

inline void Check(bool holds, const char* what)
{
    if (!holds) {
        Fail(what);
    }
}

template <typename Value>
void CheckEqual(const Value& expected, const Value& actual, const char* what)
{
    if (!(expected == actual)) {
        std::ostringstream text;
        text << what << "\nexpected: " << expected << "\nactual:   " << actual;
        Fail(text.str());
    }
}

#pragma once

#include <string>

#include "Diagnostics/Text/Diagnostic.h"

/// Colours for a terminal, or none. What is painted must be safe for a terminal already.
class Style {
public:
    explicit Style(bool colour = false) : colour_(colour) {}

    /// As the severity is shown: red, yellow, blue.
    std::string Paint(Severity severity, const std::string& text) const;

    /// Green: in order.
    std::string Good(const std::string& text) const { return Wrapped("32", text); }

    std::string Bold(const std::string& text) const { return Wrapped("1", text); }

private:
    std::string Wrapped(const char* code, const std::string& text) const
    {
        return colour_ ? "\033[" + std::string(code) + "m" + text + "\033[0m" : text;
    }

    bool colour_;
};

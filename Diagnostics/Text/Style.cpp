#include "Diagnostics/Text/Style.h"

std::string Style::Paint(Severity severity, const std::string& text) const
{
    switch (severity) {
    case Severity::kError:
        return Wrapped("1;31", text);
    case Severity::kWarning:
        return Wrapped("1;33", text);
    case Severity::kNote:
        break;
    }
    return Wrapped("1;34", text);
}

#include "Platform/common/CharacterClass.h"

#include <glib.h>

namespace platform {

bool IsPrintable(char32_t character)
{
    return g_unichar_isprint(character) != FALSE;
}

bool IsWide(char32_t character)
{
    return g_unichar_iswide(character) != FALSE;
}

bool IsWithoutWidth(char32_t character)
{
    return g_unichar_iszerowidth(character) != FALSE;
}

} // namespace platform

#pragma once

#include <cstdint>

#include <expat.h>

// Where the parser is. Since 2.9 expat has functions of 64 bits for this and deprecates the others,
// which are all that older versions have.
#if XML_MAJOR_VERSION > 2 || (XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION >= 9)

/// The offset of the current event or error; negative before the first event.
inline std::int64_t ByteIndex(XML_Parser parser)
{
    return XML_GetCurrentByteIndex64(parser);
}

/// The bytes that the current event takes in the document.
inline std::int64_t ByteCount(XML_Parser parser)
{
    return XML_GetCurrentByteCount64(parser);
}

#else

inline std::int64_t ByteIndex(XML_Parser parser)
{
    return XML_GetCurrentByteIndex(parser);
}

inline std::int64_t ByteCount(XML_Parser parser)
{
    return XML_GetCurrentByteCount(parser);
}

#endif

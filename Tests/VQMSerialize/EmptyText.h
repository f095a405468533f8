#pragma once

#include <string>

#include <expat.h>

/// Whether the parser at hand gives a buffer for no bytes. Its versions differ, and both answers
/// refuse the document. `parser_fault::Faults::emptyBuffer` has either on every machine.
inline const bool kParserGivesEmptyBuffer = [] {
    const XML_Parser parser = XML_ParserCreate(nullptr);
    const bool given = XML_GetBuffer(parser, 0) != nullptr;
    XML_ParserFree(parser);
    return given;
}();

constexpr char kParseErrorMessage[] = "  PraseError !!!!\n";
constexpr char kNoBufferMessage[] = "CVQMXMLSerialize::Deserialize-  XML_GetBuffer Failed!!!!\n";

/// What `Deserialize` logs of a text that the parser at hand refuses. The text ends at its first NUL.
inline const char* RefusalMessage(const std::string& text)
{
    const bool isEmpty = text.empty() || text.front() == '\0';
    return isEmpty && !kParserGivesEmptyBuffer ? kNoBufferMessage : kParseErrorMessage;
}

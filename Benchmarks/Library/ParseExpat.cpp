// The limit: expat with handlers that do nothing.

#include <expat.h>

#include "Benchmarks/Library/ParseInput.h"

namespace {

void OnStart(void* /*data*/, const char* /*name*/, const char** /*attributes*/) {}
void OnEnd(void* /*data*/, const char* /*name*/) {}
void OnText(void* /*data*/, const char* /*text*/, int /*length*/) {}

} // namespace

Work ParseWithExpat(std::size_t size, Layout layout)
{
    const auto document = std::make_shared<const std::string>(ScheduleDocument(size, kItemSize, layout));
    return {[=] {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(parser, OnStart, OnEnd);
        XML_SetCharacterDataHandler(parser, OnText);
        const XML_Status status = XML_Parse(parser, document->data(), static_cast<int>(document->size()), XML_TRUE);
        XML_ParserFree(parser);
        if (status != XML_STATUS_OK) {
            throw std::runtime_error("the document was not read");
        }
    }};
}

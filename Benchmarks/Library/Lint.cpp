#include <memory>
#include <stdexcept>
#include <string>

#include "Benchmarks/Library/ParseInput.h"
#include "Benchmarks/Library/ScheduleDocument.h"
#include "Benchmarks/Library/Work.h"
#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Lint/Lint.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

std::shared_ptr<const std::string> Document(std::size_t items, std::size_t itemsOfAPeriod)
{
    return std::make_shared<const std::string>(ScheduleDocument(items, kItemSize, Layout::LineForItem, itemsOfAPeriod));
}

Work Linting(const std::shared_ptr<const std::string>& document)
{
    return {[document] { lint::Lint(*document, lint::Options()); }};
}

Work Parsing(const std::shared_ptr<const std::string>& document)
{
    return {[document] {
        CVQMScheduleContainer container;
        CVQMXMLSerialize serializer;
        if (!serializer.Create() || !serializer.Deserialize(document->c_str(), &container)) {
            throw std::runtime_error("the document was not read");
        }
    }};
}

} // namespace

Work LintPeriods(std::size_t size)
{
    return Linting(Document(size, kItemsOfAPeriod));
}

Work LintOnePeriod(std::size_t size)
{
    return Linting(Document(size, size));
}

Work ParsePeriods(std::size_t size)
{
    return Parsing(Document(size, kItemsOfAPeriod));
}

Work ParseOnePeriod(std::size_t size)
{
    return Parsing(Document(size, size));
}

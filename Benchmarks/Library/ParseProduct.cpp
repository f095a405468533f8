#include <utility>

#include "Benchmarks/Library/ParseInput.h"
#include "Data/VQMScheduleContainer.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

void Read(const std::string& document, CVQMScheduleContainer& container)
{
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(document.c_str(), &container)) {
        throw std::runtime_error("the document was not read");
    }
}

} // namespace

Work ParseWithProduct(std::size_t size, Layout layout)
{
    return ParsingWork(size, layout, [](const std::string& document, _VQMPolicy& policy) {
        CVQMScheduleContainer container;
        Read(document, container);
        container.GetSturcture(&policy);
    });
}

Work ParseAndTakeOver(std::size_t size, Layout layout)
{
    return ParsingWork(size, layout, [](const std::string& document, _VQMPolicy& policy) {
        CVQMScheduleContainer container;
        Read(document, container);
        policy = std::move(container).TakePolicy();
    });
}

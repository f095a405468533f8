#include "Benchmarks/Library/ParseInput.h"
#include "Data/VQMScheduleContainer.h"
#include "VQMSerialize/VQMXMLSerialize.h"

Work ParseWithProduct(std::size_t size, Layout layout)
{
    return ParsingWork(size, layout, [](const std::string& document, _VQMPolicy& policy) {
        CVQMScheduleContainer container;
        CVQMXMLSerialize serializer;
        if (!serializer.Create() || !serializer.Deserialize(document.c_str(), &container)) {
            throw std::runtime_error("the document was not read");
        }
        container.GetSturcture(&policy);
    });
}

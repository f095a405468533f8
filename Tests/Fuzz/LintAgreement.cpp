#include "Tests/Fuzz/LintAgreement.h"

#include <stdexcept>

#include "Data/VQMScheduleContainer.h"
#include "Diagnostics/Lint/Lint.h"
#include "Tests/Fuzz/PolicyText.h"
#include "Tests/Fuzz/StrictReading.h"
#include "VQMSerialize/VQMXMLSerialize.h"

bool IsClean(std::string_view document, const std::set<lint::Rule>& ignored)
{
    lint::Options options;
    options.ignored = ignored;
    options.today = {2026, 6, 1};
    const lint::Counts counts = lint::Lint(document, options).counts;
    return counts.errors + counts.warnings == 0;
}

std::string FindDisagreement(std::string_view document, const std::set<lint::Rule>& ignored)
{
    if (!IsClean(document, ignored)) {
        return "";
    }
    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(std::string(document).c_str(), &container)) {
        return "the parser rejects the document";
    }
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    try {
        const std::string expected = Describe(ReadStrictly(document));
        const std::string actual = Describe(policy);
        return expected == actual ? "" : "the document says\n" + expected + "the parser has\n" + actual;
    } catch (const std::runtime_error& error) {
        return std::string("a strict reader refuses: ") + error.what();
    } catch (const std::out_of_range&) {
        return "a strict reader misses a child of an item";
    }
}

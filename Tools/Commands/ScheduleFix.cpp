#include "Tools/Commands/ScheduleFix.h"

#include <algorithm>
#include <cstdint>

#include "Diagnostics/Edit/ApplyEdits.h"
#include "Diagnostics/Lint/Repairs.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Words.h"
#include "Tools/CommandError.h"
#include "Tools/Commands/DocumentEdit.h"
#include "Tools/Terminal/Terminal.h"

namespace {

std::string Summary(const std::string& name, std::size_t repairs, std::uint64_t remaining, bool written)
{
    std::string text = name + ": ";
    if (repairs > 0) {
        text += Counted(repairs, "repair") + (written ? " made" : " to make; --fix --write makes them") + "; ";
    }
    return text + Counted(remaining, "finding") + (repairs > 0 ? " left" : ", none with a repair");
}

/// Whether nothing is left to do.
bool FixDocument(const std::string& name, const lint::Options& options, bool write, bool strict)
{
    const EditableFile file = OpenDocument(name, write);
    const std::vector<Edit> edits = SortedEdits(file.Content(), lint::FindRepairs(file.Content(), options));
    static_cast<void>(PrintDiff(name, file, edits));
    const bool written = write && !edits.empty();
    if (written) {
        WriteEdits(file, edits);
    }
    const lint::Counts left = lint::Lint(ApplyEdits(file.Content(), edits), options).counts;
    const std::uint64_t findings = left.errors + left.warnings + left.notes;
    if (!edits.empty() || findings > 0) {
        PrintError(Summary(ShownName(name), edits.size(), findings, written));
    }
    return (edits.empty() || written) && left.errors + left.warnings == 0 && (!strict || left.notes == 0);
}

} // namespace

ExitCode FixDocuments(const std::vector<std::string>& names, const lint::Options& options, bool write, bool strict)
{
    if (write && std::find(names.begin(), names.end(), kStdin) != names.end()) {
        OpenDocument(kStdin, write); // refuses before any document is changed
    }
    bool failed = false;
    bool clean = true;
    for (const std::string& name : names) {
        try {
            clean = FixDocument(name, options, write, strict) && clean;
        } catch (const CommandError& error) {
            PrintError(error.what());
            failed = true;
        }
    }
    if (failed) {
        return ExitCode::kCouldNotRun;
    }
    return clean ? ExitCode::kOk : ExitCode::kFindings;
}

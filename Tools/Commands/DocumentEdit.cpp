#include "Tools/Commands/DocumentEdit.h"

#include <stdexcept>

#include "Diagnostics/Edit/ApplyEdits.h"
#include "Diagnostics/Edit/UnifiedDiff.h"
#include "Diagnostics/Text/InputFile.h"
#include "Tools/CommandError.h"
#include "Tools/Terminal/Terminal.h"

EditableFile OpenDocument(const std::string& name, bool write)
{
    if (write && name == kStdin) {
        throw CommandError(ExitCode::kUsage, "--write changes a file; expected its name, not '-'");
    }
    try {
        return {name, write ? EditableFile::Use::kReplace : EditableFile::Use::kRead};
    } catch (const std::runtime_error& error) {
        throw CommandError(ExitCode::kCouldNotRun, error.what());
    }
}

bool PrintDiff(const std::string& name, const EditableFile& file, const std::vector<Edit>& edits)
{
    return WriteUnifiedDiff(ShownName(name), file.Content(), SortedEdits(file.Content(), edits), Print);
}

void WriteEdits(const EditableFile& file, const std::vector<Edit>& edits)
{
    const std::string content = ApplyEdits(file.Content(), SortedEdits(file.Content(), edits));
    try {
        file.Replace(content);
    } catch (const std::runtime_error& error) {
        throw CommandError(ExitCode::kCouldNotRun, error.what());
    }
}

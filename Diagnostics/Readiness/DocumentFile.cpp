#include "Diagnostics/Readiness/DocumentFile.h"

#include <cerrno>
#include <climits>
#include <optional>
#include <system_error>

#include <sys/stat.h>

#include "Diagnostics/Lint/ParseErrorText.h"
#include "Diagnostics/Readiness/Access.h"
#include "Diagnostics/Readiness/FileKinds.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "Diagnostics/Text/InputFile.h"
#include "Diagnostics/Text/Words.h"

namespace readiness {

namespace {

/// "; you may not enter '/a/b'"
std::string Closed(const std::string& path)
{
    const std::string folder = ClosedFolder(path);
    return folder.empty() ? "" : "; you may not enter " + Quoted(folder);
}

} // namespace

DocumentFile Examine(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        const int error = errno;
        if (IsAbsence(error)) {
            return {DocumentState::kMissing, "is missing" + WhyMissing(path)};
        }
        return {DocumentState::kUnreadable,
                "cannot be examined: " + std::generic_category().message(error) + Closed(path), true};
    }
    if (!S_ISREG(status.st_mode)) {
        const bool waits = S_ISFIFO(status.st_mode);
        return {DocumentState::kUnreadable,
                std::string("is ") + KindName(status.st_mode) + (waits ? ", where reading waits for a writer" : ""),
                false, waits};
    }
    if (status.st_size > INT_MAX) {
        return {DocumentState::kUnreadable,
                "is larger than the " + std::to_string(INT_MAX) + " bytes that can be parsed", false, true};
    }
    try {
        const InputFile file(path); // only to see whether it can be opened
    } catch (const std::system_error& error) {
        return {DocumentState::kUnreadable, "cannot be read: " + error.code().message()};
    }
    return {DocumentState::kLoaded};
}

DocumentFile ReadExamined(const std::string& path, const std::function<bool(const std::string& path)>& read)
{
    // The name is examined for the messages about it; what was opened, because another file may have taken the
    // name meanwhile.
    DocumentFile named = Examine(path);
    if (named.state != DocumentState::kLoaded) {
        return named;
    }
    std::optional<InputFile> file;
    try {
        file.emplace(path);
    } catch (const std::system_error& error) {
        return {DocumentState::kUnreadable, "cannot be read: " + error.code().message()};
    }
    DocumentFile opened = Examine(file->Path());
    if (opened.state != DocumentState::kLoaded || read(file->Path())) {
        return opened;
    }
    return WhyNotParsed(file->Path());
}

DocumentFile WhyNotParsed(const std::string& path)
{
    DocumentFile examined = Examine(path);
    if (examined.state != DocumentState::kLoaded) {
        return examined;
    }
    try {
        const InputFile file(path);
        return {DocumentState::kNotWellFormed,
                "cannot be parsed: " +
                    lint::ParseErrorText([&file](char* buffer, std::size_t size) { return file.Read(buffer, size); })};
    } catch (const std::system_error& error) {
        return {DocumentState::kUnreadable, "cannot be read: " + error.code().message()};
    }
}

} // namespace readiness

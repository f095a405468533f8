#include "Tools/Schedule/PolicyFile.h"

#include <algorithm>
#include <system_error>

#include "Data/VQMScheduleContainer.h"
#include "Tools/Failure.h"
#include "Tools/InputFile.h"
#include "Tools/Lint/Lint.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace schedule {

namespace {

constexpr std::size_t kReadUnit = 1048576;

struct Document {
    std::string text; ///< up to the first zero byte
    bool textAfterNul = false;
    std::string head; ///< the first bytes, whatever they are
};

/// Passes a file on, as far as it is looked at.
class BoundedSource {
public:
    explicit BoundedSource(const InputFile& file) : file_(file) {}

    std::size_t operator()(char* buffer, std::size_t size)
    {
        const std::size_t count = file_.Read(buffer, std::min(size, left_));
        left_ -= count;
        return count;
    }

private:
    const InputFile& file_;
    std::size_t left_ = kMaxDocument + 1;
};

Document ReadDocument(const std::string& path)
{
    const InputFile file(path);
    lint::DocumentReader reader{BoundedSource(file)};
    Document document;
    while (!reader.AtEnd()) {
        reader.ReadUpTo(document.text, document.text.size() + kReadUnit);
    }
    document.textAfterNul = reader.HasTextAfterNul();
    document.head = reader.Head();
    return document;
}

[[noreturn]] void Refuse(const std::string& what, const std::string& name, const std::string& why)
{
    throw Failure(ExitCode::kCouldNotRun, "cannot " + what + " '" + name + "': " + why);
}

/// Why the library rejects a document, and where: the linter knows.
std::string Cause(const Document& document)
{
    lint::Options options;
    for (const std::string& name : lint::RuleNames()) {
        options.ignored.insert(*lint::FindRule(name));
    }
    options.ignored.erase(lint::Rule::kNotWellFormed);
    options.ignored.erase(lint::Rule::kUnreadableEncoding);
    options.maxFindings = 1;
    // A wide encoding shows in its first bytes, zero bytes among them.
    const bool endsEarly = document.text.size() < document.head.size();
    const lint::Report report = lint::Lint(endsEarly ? document.head : document.text, options);
    if (report.findings.empty()) {
        return "the library rejects it";
    }
    const lint::Finding& finding = report.findings.front();
    return "line " + std::to_string(finding.line) + ", column " + std::to_string(finding.column) + ": " +
           finding.message;
}

} // namespace

PolicyFile ReadPolicyFile(const std::string& path)
{
    PolicyFile file;
    file.name = ShownName(path);
    Document document;
    try {
        document = ReadDocument(path);
    } catch (const std::system_error& error) {
        Refuse("read", file.name, error.code().message());
    }
    if (document.text.size() > kMaxDocument) {
        Refuse("read", file.name, "more than " + std::to_string(kMaxDocument) + " bytes; expected a schedule document");
    }
    file.textAfterNul = document.textAfterNul;

    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(document.text.c_str(), &container)) {
        Refuse("parse", file.name, Cause(document));
    }
    container.GetSturcture(&file.policy);
    return file;
}

} // namespace schedule

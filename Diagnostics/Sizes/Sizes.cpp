#include "Diagnostics/Sizes/Sizes.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>

#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Lint/Observer.h"
#include "Diagnostics/Lint/ParseErrorText.h"
#include "Diagnostics/Lint/TvConversions.h"
#include "Diagnostics/Text/Words.h"

namespace sizes {

namespace {

constexpr std::size_t kMaxProblems = 100;

/// Ends with "/".
std::string FolderPath(const std::string& media)
{
    struct stat status = {};
    int error = stat(media.c_str(), &status) == 0 ? 0 : errno;
    if (error == 0 && !S_ISDIR(status.st_mode)) {
        error = ENOTDIR;
    }
    if (error != 0) {
        throw std::runtime_error("cannot read the media folder '" + media +
                                 "': " + std::generic_category().message(error));
    }
    return media.back() == '/' ? media : media + "/";
}

/// Measures the file of each item as the document goes by.
class Comparison : public lint::Observer {
public:
    explicit Comparison(std::string folder) : folder_(std::move(folder)) {}

    void OnProject(const lint::StartTag& project) override
    {
        // Of several projects the TV takes the last values.
        Announce(project, "item_count", count_);
        Announce(project, "total_size", size_);
    }

    void OnItem(const lint::ItemFacts& item) override
    {
        ++report_.items;
        const std::optional<std::uint64_t> measured = Measure(item);
        const std::uint64_t size = measured.value_or(item.size);
        overflow_ = __builtin_add_overflow(total_, size, &total_) || overflow_;
        if (size != item.size) {
            report_.corrections.push_back({"size", item.file, EditOf(item.sizePlace, size),
                                           item.sizePlace.position.line, item.sizePlace.position.column});
        }
    }

    Report Finish()
    {
        Correct(count_, report_.items);
        if (!overflow_) {
            Correct(size_, total_);
        } else if (size_) {
            AddProblem("total-size-too-large", size_->place, "the sizes add up to more than 18446744073709551615", "");
        }
        std::sort(report_.corrections.begin(), report_.corrections.end(),
                  [](const Correction& left, const Correction& right) { return left.edit.offset < right.edit.offset; });
        return std::move(report_);
    }

private:
    struct Announced {
        const char* what;
        std::uint64_t value;
        lint::Range place;
    };

    static void Announce(const lint::StartTag& project, const char* name, std::optional<Announced>& announced)
    {
        if (const std::optional<std::size_t> index = project.Find(name)) {
            announced = Announced{name, lint::tv::Unsigned(project.AttributeValue(*index)), project.ValuePlace(*index)};
        }
    }

    static Edit EditOf(const lint::Range& place, std::uint64_t number)
    {
        return {place.position.offset, place.bytes.value_or(""), std::to_string(number)};
    }

    /// The size that the item ought to announce; none where that is not known or cannot be written.
    std::optional<std::uint64_t> Measure(const lint::ItemFacts& item)
    {
        const std::string path = folder_ + item.file;
        const lint::Range& place = item.filePlace;
        struct stat status = {};
        if (!item.hasSize) {
            AddProblem("size-missing", place, "the item of " + QuotedShort(item.file) + " has no size", path);
        } else if (stat(path.c_str(), &status) != 0) {
            const bool absent = errno == ENOENT || errno == ENOTDIR;
            AddProblem(absent ? "file-missing" : "file-not-examined", place,
                       QuotedShort(item.file) + (absent ? " is missing" : " cannot be examined: ") +
                           (absent ? "" : std::generic_category().message(errno)),
                       path);
        } else if (!S_ISREG(status.st_mode)) {
            AddProblem("not-a-file", place, QuotedShort(item.file) + " is not a file", path);
        } else if (status.st_size == 0) {
            AddProblem("file-empty", place, QuotedShort(item.file) + " is empty; copy it again", path);
        } else if (const auto size = static_cast<std::uint64_t>(status.st_size);
                   size == item.size || item.sizePlace.bytes) {
            return size;
        } else {
            AddProblem("size-not-plain", item.sizePlace,
                       "the size of " + QuotedShort(item.file) +
                           " is mixed with comments, sections or elements; write " + std::to_string(size),
                       path);
        }
        return std::nullopt;
    }

    void Correct(const std::optional<Announced>& announced, std::uint64_t number)
    {
        if (!announced || announced->value == number) {
            return;
        }
        if (!announced->place.bytes) {
            AddProblem("value-not-plain", announced->place,
                       std::string(announced->what) + " is written with entities; write " + std::to_string(number), "");
            return;
        }
        const lint::Position& position = announced->place.position;
        report_.corrections.push_back(
            {announced->what, "", EditOf(announced->place, number), position.line, position.column});
    }

    void AddProblem(const char* id, const lint::Range& place, std::string message, std::string path)
    {
        if (++report_.problemCount > kMaxProblems) {
            return;
        }
        Diagnostic problem;
        problem.id = id;
        problem.message = std::move(message);
        problem.path = std::move(path);
        problem.line = place.position.line;
        problem.column = place.position.column;
        report_.problems.push_back(std::move(problem));
    }

    std::string folder_;
    Report report_;
    std::optional<Announced> count_;
    std::optional<Announced> size_;
    std::uint64_t total_ = 0;
    bool overflow_ = false;
};

} // namespace

std::vector<Edit> Report::Edits() const
{
    std::vector<Edit> edits;
    edits.reserve(corrections.size());
    for (const Correction& correction : corrections) {
        edits.push_back(correction.edit);
    }
    return edits;
}

Report Compare(const std::string& name, std::string_view document, const std::string& media)
{
    Comparison comparison(FolderPath(media));
    lint::Options options = lint::OnlyWhatRejects();
    options.observer = &comparison;
    const lint::Report rejected = lint::Lint(document, options);
    if (!rejected.findings.empty()) {
        throw std::runtime_error("cannot read '" + name + "': " + lint::ParseErrorText(rejected));
    }
    return comparison.Finish();
}

} // namespace sizes

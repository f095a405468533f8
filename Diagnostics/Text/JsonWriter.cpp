#include "Diagnostics/Text/JsonWriter.h"

#include <utility>

namespace {

constexpr std::size_t kPart = 65536;

} // namespace

JsonWriter::JsonWriter(Sink write, bool oneLine) : write_(std::move(write)), oneLine_(oneLine), closing_("}")
{
    buffer_ = "{";
    Member("schema_version", kJsonSchemaVersion);
}

void JsonWriter::Member(const std::string& name, const Json& value)
{
    BeginEntry();
    buffer_ += Json(name).dump(-1, ' ', true) + (oneLine_ ? ":" : ": ");
    Write(value);
}

void JsonWriter::Element(const Json& value)
{
    BeginEntry();
    Write(value);
}

void JsonWriter::Begin(const std::string& name, char bracket)
{
    BeginEntry();
    buffer_ += Json(name).dump(-1, ' ', true) + (oneLine_ ? ":" : ": ") + bracket;
    closing_ += bracket == '{' ? '}' : ']';
    isEmpty_ = true;
}

void JsonWriter::End()
{
    const char bracket = closing_.back();
    closing_.pop_back();
    if (!isEmpty_) {
        NewLine();
    }
    buffer_ += bracket;
    isEmpty_ = false;
}

bool JsonWriter::Finish()
{
    while (!closing_.empty()) {
        End();
    }
    buffer_ += '\n';
    return wanted_ && write_(buffer_);
}

void JsonWriter::BeginEntry()
{
    if (buffer_.size() >= kPart) {
        wanted_ = wanted_ && write_(buffer_);
        buffer_.clear();
    }
    if (!isEmpty_) {
        buffer_ += ',';
    }
    isEmpty_ = false;
    NewLine();
}

void JsonWriter::NewLine()
{
    if (!oneLine_) {
        buffer_ += '\n';
        buffer_.append(closing_.size() * kJsonIndent, ' ');
    }
}

void JsonWriter::Write(const Json& value)
{
    if (oneLine_) {
        buffer_ += value.dump(-1, ' ', true);
        return;
    }
    // A line end inside a text is escaped: each one here is the layout's.
    for (const char character : value.dump(kJsonIndent, ' ', true)) {
        buffer_ += character;
        if (character == '\n') {
            buffer_.append(closing_.size() * kJsonIndent, ' ');
        }
    }
}

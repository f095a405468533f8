#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "Diagnostics/Text/Json.h"

/// Writes a document of the form that `RenderJsonDocument` or `RenderJsonLine` gives, member by member:
/// a list of a million items is never there as a whole.
class JsonWriter {
public:
    /// Takes the document in parts; false when the reader has gone.
    using Sink = std::function<bool(std::string_view part)>;

    JsonWriter(Sink write, bool oneLine);

    void Member(const std::string& name, const Json& value);
    void BeginObject(const std::string& name) { Begin(name, '{'); }
    void BeginArray(const std::string& name) { Begin(name, '['); }
    void Element(const Json& value);

    /// Ends the innermost object or array.
    void End();

    /// Ends the document. Returns false when the sink did.
    bool Finish();

private:
    void Begin(const std::string& name, char bracket);
    void BeginEntry();
    void NewLine();
    void Write(const Json& value);

    Sink write_;
    bool oneLine_;
    std::string closing_; ///< the brackets that are open, the innermost last
    bool isEmpty_ = true; ///< the innermost object or array
    std::string buffer_;
    bool wanted_ = true;
};

#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include <expat.h>

#include "Diagnostics/Lint/DocumentReader.h"
#include "Diagnostics/Lint/DocumentWindow.h"
#include "Diagnostics/Lint/FindingList.h"
#include "Diagnostics/Lint/Lint.h"
#include "Diagnostics/Lint/Reporter.h"
#include "Diagnostics/Lint/ScheduleChecker.h"
#include "Diagnostics/Text/Encodings.h"

namespace lint {

/// One run of the XML parser over a document, piece by piece.
///
/// The TV parses the document as a whole. So that text comes in the same pieces here, the pieces
/// end before a "<".
class DocumentParse {
public:
    DocumentParse(DocumentReader& reader, FindingList& findings, const Options& options);

    DocumentParse(const DocumentParse&) = delete;
    DocumentParse& operator=(const DocumentParse&) = delete;

    /// Reads the first piece, and parses nothing yet.
    void Begin();

    /// Parses the document and checks it.
    void Run();

    // About the document as a whole.

    void ReportAtStart(Problem problem);
    void ReportAtEnd(Problem problem);

private:
    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static void OnStart(void* self, const char* name, const char** attributes);
    static void OnEnd(void* self, const char* name);
    static void OnText(void* self, const char* text, int size);
    static void OnDoctype(void* self, const char* name, const char* systemId, const char* publicId, int hasSubset);
    static void OnDeclaration(void* self, const char* version, const char* encoding, int standalone);

    template <typename Action>
    void Guarded(Action action);

    bool ParseAll();
    bool ParseTo(std::uint64_t end, bool isFinal);
    std::uint64_t PieceEnd() const;
    std::uint64_t Offset() const;
    void ReportEncoding(bool isRejected);
    bool WouldBeUtf8();
    void ReportNotWellFormed();
    void ReportTooLarge();

    DocumentReader& reader_;
    std::uint64_t maxBytes_;
    DocumentWindow window_;
    Reporter reporter_;
    ScheduleChecker checker_;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser_;
    std::exception_ptr thrown_; ///< by a handler; kept over the parser's C code
    std::string encoding_{};    ///< as declared; empty without a declaration
    bool rootSeen_ = false;
    std::uint64_t parsed_ = 0; ///< bytes given to the parser
    std::size_t piece_;        ///< bytes to read before the next step
    bool asUtf8_;
    std::optional<Range> declared_; ///< the name of another encoding than UTF-8 in the XML declaration
    Utf8Check utf8_;                ///< of what was parsed, where another encoding is declared
};

} // namespace lint

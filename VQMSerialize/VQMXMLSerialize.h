#pragma once

#include <typeinfo>

#include "Common/VQMDataObject.h"

struct XML_ParserStruct; // expat's parser

/// What a serializer delivers at one time.
enum _VQMParsingStep {
    PARSING_START_ELEMENT = 0, ///< a start tag: name and attributes
    PARSING_END_ELEMENT = 1,   ///< an end tag, also that of an empty-element tag: name
    PARSING_ELEMENT_DATA = 2,  ///< a piece of character data: text
};

/// Fills data objects from a text form, and in principle writes them to it.
class IVQMSerialize {
public:
    /// Makes the serializer ready for one document. False on failure, which is logged.
    virtual bool Create() = 0;

    /// Gives up what `Create` made; without it, does nothing.
    virtual void Destroy() = 0;

    /// Appends the text form of `pObj` to `pBuffer`. False on failure.
    virtual bool Serialize(const CVQMDataSerializableObject* pObj, CVQMDataBufferObject* pBuffer) = 0;

    /// Fills `pObj` from the NUL-terminated text `pData`. False on failure, which is logged.
    virtual bool Deserialize(const char* pData, CVQMDataSerializableObject* pObj) = 0;

    IVQMSerialize() = default;
    IVQMSerialize(const IVQMSerialize&) = delete;
    IVQMSerialize& operator=(const IVQMSerialize&) = delete;

    virtual ~IVQMSerialize();
};

/// Parses a whole XML document in memory and feeds every parser event to a target: sets the
/// parsing step and what belongs to it, then calls the target's `ReadFrom` with itself.
///
/// One document: `Create`, then `Deserialize`, which frees the parser whatever its outcome.
///
/// While a document is parsed, its parser is in use: from inside a target's `ReadFrom`, `Create` and
/// `Deserialize` of the same serializer return false, with the log line of a parser that is not to
/// be had, and `Destroy` does nothing. The parse goes on. To read a document within a document, use
/// another serializer.
///
/// Threads: a serializer belongs to one thread for the duration of a document. Separate
/// serializers may parse on separate threads.
class CVQMXMLSerialize : public IVQMSerialize {
public:
    CVQMXMLSerialize();

    /// Creates the parser; one that is still held is overwritten, not freed. False on failure.
    bool Create() override;

    /// Frees the parser, if there is one.
    void Destroy() override;

    /// Nothing is written as XML: false, and the buffer stays as it is.
    bool Serialize(const CVQMDataSerializableObject* pObj, CVQMDataBufferObject* pBuffer) override;

    /// Parses the document at `pData`, up to its NUL, into `pObj`, which the caller keeps. Needs a
    /// `Create` before it, each time. False when an argument is null (the parser is kept then),
    /// when the parser refuses a document of this length (2 GiB and more always), and for a
    /// document that is not well-formed; the target keeps what was delivered before the error.
    ///
    /// Whatever the target throws from `ReadFrom` ends the parse and comes out of here.
    bool Deserialize(const char* pData, CVQMDataSerializableObject* pObj) override;

    /// The current step, or the last one between two steps.
    int GetParsingStep() { return m_nParsingStep; }

    // What belongs to the current step, else null; valid until `ReadFrom` returns. An event that
    // someone else reports from inside `ReadFrom` resets, at its end, what it has set itself: a text
    // the text, an end the name, a start the name and the attributes.

    /// The element's name, during a start or an end.
    const char* GetParsingElementName() const { return m_pElementName; }

    /// Names and values in turns, ended by a null name; during a start.
    const char** GetParsingAttributes() { return m_ppAttributes; }

    /// One piece of text as the parser splits it; white space between elements is text too.
    const char* GetParsingText() const { return m_pText; }

    ~CVQMXMLSerialize() override;

    // The parser's callbacks; `pUserData` is the serializer. Outside of a parse they deliver to the
    // last target, and its exceptions pass through.

    static void OnStartElement(void* pUserData, const char* pName, const char** ppAttributes);
    static void OnEndElement(void* pUserData, const char* pName);
    static void OnElementData(void* pUserData, const char* pText, int nLength);

protected:
    XML_ParserStruct* m_pParser = nullptr;
    CVQMDataSerializableObject* m_pTarget = nullptr; ///< not owned
    int m_nParsingStep = PARSING_START_ELEMENT;
    const char* m_pElementName = nullptr;
    const char** m_ppAttributes = nullptr;
    const char* m_pText = nullptr;

private:
    struct _Parse;

    bool Parse(int nLength);
    void DeliverText(const char* pText, int nLength, CVQMDataBufferObject& copy);
    void Deliver(int nStep);
    void Stop();

    _Parse* m_pParse = nullptr; ///< set while the parser runs
};

/// A `dynamic_cast`: null when the serializer is of another class, or null.
inline CVQMXMLSerialize* VQMAsXMLSerialize(IVQMSerialize* pSerialize)
{
    // Targets ask with every event, and nearly always it is this very class: a comparison tells.
    if (pSerialize != nullptr && &typeid(*pSerialize) == &typeid(CVQMXMLSerialize)) {
        return static_cast<CVQMXMLSerialize*>(pSerialize);
    }
    return dynamic_cast<CVQMXMLSerialize*>(pSerialize);
}

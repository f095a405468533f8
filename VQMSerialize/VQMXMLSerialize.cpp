#include "VQMSerialize/VQMXMLSerialize.h"

#include <climits>
#include <cstring>
#include <exception>

#include <expat.h>

#include "Common/VQMLog.h"

/// One run of the parser. Exceptions must not unwind through its C frames, so they wait here.
struct CVQMXMLSerialize::_Parse {
    bool bStopped = false;
    std::exception_ptr pThrown; ///< by the target
    CVQMDataBufferObject text;  ///< the current text; its memory serves all texts of the document
    bool bTextInUse = false;
};

namespace {

/// What an event brought is gone when the event ends, however it ends.
template <typename Pointer>
class UntilEventEnds {
public:
    explicit UntilEventEnds(Pointer& pointer) : pointer_(pointer) {}
    ~UntilEventEnds() { pointer_ = nullptr; }

    UntilEventEnds(const UntilEventEnds&) = delete;
    UntilEventEnds& operator=(const UntilEventEnds&) = delete;

private:
    Pointer& pointer_;
};

} // namespace

IVQMSerialize::~IVQMSerialize() = default;

CVQMXMLSerialize::CVQMXMLSerialize() = default;

CVQMXMLSerialize::~CVQMXMLSerialize()
{
    CVQMXMLSerialize::Destroy();
}

bool CVQMXMLSerialize::Create()
{
    try {
        if (m_pParse == nullptr) { // else the parser is in use, and stays
            m_pParser = XML_ParserCreate(nullptr);
        }
        if (m_pParse != nullptr || m_pParser == nullptr) {
            VQM_LOG_DEBUG(" XML_ParserCreate is Failed!!!\n");
            return false;
        }
        XML_SetUserData(m_pParser, this);
        XML_SetElementHandler(m_pParser, OnStartElement, OnEndElement);
        XML_SetCharacterDataHandler(m_pParser, OnElementData);
        return true;
    } catch (const std::exception& error) {
        VQM_LOG_DEBUG("CVQMXMLSerialize::Create - Error %s \n", error.what());
    } catch (...) {
        VQM_LOG_DEBUG("CVQMXMLSerialize::Create - Unknown error \n");
    }
    return false;
}

void CVQMXMLSerialize::Destroy()
{
    if (m_pParser != nullptr && m_pParse == nullptr) {
        XML_ParserFree(m_pParser);
        m_pParser = nullptr;
    }
}

bool CVQMXMLSerialize::Serialize(const CVQMDataSerializableObject* /*pObj*/, CVQMDataBufferObject* /*pBuffer*/)
{
    return false;
}

bool CVQMXMLSerialize::Deserialize(const char* pData, CVQMDataSerializableObject* pObj)
{
    if (pData == nullptr) {
        VQM_LOG_DEBUG("CVQMXMLSerialize::Deserialize - input serialized data is null \n");
        return false;
    }
    if (pObj == nullptr) {
        VQM_LOG_DEBUG("CVQMXMLSerialize::Deserialize - output pObj is null \n");
        return false;
    }
    const std::size_t length = std::strlen(pData);
    void* const buffer =
        length <= INT_MAX && m_pParse == nullptr ? XML_GetBuffer(m_pParser, static_cast<int>(length)) : nullptr;
    if (buffer == nullptr) {
        VQM_LOG_DEBUG("CVQMXMLSerialize::Deserialize-  XML_GetBuffer Failed!!!!\n");
        Destroy();
        return false;
    }
    std::memcpy(buffer, pData, length);
    m_pTarget = pObj;
    if (!Parse(static_cast<int>(length))) {
        VQM_LOG_DEBUG("  PraseError !!!!\n");
        Destroy();
        return false;
    }
    Destroy();
    VQM_LOG_DEBUG("ParseHttpResponse End !!!!\n");
    return true;
}

/// Parses the buffer. Throws on what the target threw, the parser freed before.
bool CVQMXMLSerialize::Parse(int nLength)
{
    _Parse parse;
    m_pParse = &parse;
    const XML_Status status = XML_ParseBuffer(m_pParser, nLength, XML_TRUE);
    m_pParse = nullptr;
    if (parse.pThrown != nullptr) {
        Destroy();
        std::rethrow_exception(parse.pThrown);
    }
    return status != XML_STATUS_ERROR;
}

void CVQMXMLSerialize::OnStartElement(void* pUserData, const char* pName, const char** ppAttributes)
{
    auto* const pThis = static_cast<CVQMXMLSerialize*>(pUserData);
    if (pThis == nullptr) {
        VQM_LOG_DEBUG("OnStartElement - User Data is null \n");
        return;
    }
    if (pName == nullptr || ppAttributes == nullptr) {
        VQM_LOG_DEBUG(" Parameter is Null!!!!\n");
        return;
    }
    pThis->m_pElementName = pName;
    pThis->m_ppAttributes = ppAttributes;
    const UntilEventEnds name(pThis->m_pElementName);
    const UntilEventEnds attributes(pThis->m_ppAttributes);
    pThis->Deliver(PARSING_START_ELEMENT);
}

void CVQMXMLSerialize::OnEndElement(void* pUserData, const char* pName)
{
    auto* const pThis = static_cast<CVQMXMLSerialize*>(pUserData);
    if (pThis == nullptr) {
        VQM_LOG_DEBUG("OnEndElement - User Data is null \n");
        return;
    }
    pThis->m_pElementName = pName;
    const UntilEventEnds name(pThis->m_pElementName);
    pThis->Deliver(PARSING_END_ELEMENT);
}

void CVQMXMLSerialize::OnElementData(void* pUserData, const char* pText, int nLength)
{
    auto* const pThis = static_cast<CVQMXMLSerialize*>(pUserData);
    if (pThis == nullptr) {
        VQM_LOG_DEBUG("OnElementData - User Data is null \n");
        return;
    }
    if (pText == nullptr) {
        VQM_LOG_DEBUG("OnElementData - data is null \n");
        return;
    }
    _Parse* const pParse = pThis->m_pParse;
    if (pParse != nullptr && !pParse->bTextInUse) {
        pParse->bTextInUse = true;
        pThis->DeliverText(pText, nLength, pParse->text);
        pParse->bTextInUse = false;
    } else { // within the event of another text, which stays as it is
        CVQMDataBufferObject text;
        pThis->DeliverText(pText, nLength, text);
    }
}

// The two that run for every event of a document are inlined: that is a twentieth of the parse.

/// Without memory for the copy there is no event, and a parse ends as it does at any other error.
inline void CVQMXMLSerialize::DeliverText(const char* pText, int nLength, CVQMDataBufferObject& copy)
{
    try {
        copy.Clear();
        copy.InsertText(pText, static_cast<uVQMINT64>(nLength));
    } catch (const std::exception&) {
        if (m_pParse != nullptr) {
            Stop();
        }
        return;
    }
    m_pText = copy.GetData();
    const UntilEventEnds text(m_pText);
    Deliver(PARSING_ELEMENT_DATA);
}

/// Within a parse nothing is thrown: the target's exception waits for the parser's end.
inline void CVQMXMLSerialize::Deliver(int nStep)
{
    m_nParsingStep = nStep;
    if (m_pTarget == nullptr) {
        return;
    }
    if (m_pParse == nullptr) {
        m_pTarget->ReadFrom(this);
        return;
    }
    if (m_pParse->bStopped) { // the parser may still report an event or two
        return;
    }
    try {
        m_pTarget->ReadFrom(this);
    } catch (...) {
        m_pParse->pThrown = std::current_exception();
        Stop();
    }
}

void CVQMXMLSerialize::Stop()
{
    m_pParse->bStopped = true;
    XML_StopParser(m_pParser, XML_FALSE);
}

#include "Data/VQMDataConstants.h"

#include <cstring>

#include "Common/VQMLog.h"
#include "VQMPipe/VQMTextFile.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

constexpr char kEntryElement[] = "Data";
constexpr char kKeyAttribute[] = "key";
constexpr char kValueAttribute[] = "value";

/// An entry has exactly this many attributes; further ones are not looked at.
constexpr int kAttributeCount = 2;

constexpr uVQMINT64 kReadUnit = 10240;

} // namespace

std::map<std::string, std::string> CVQMDataConstants::m_DataCache;

CVQMDataConstants::CVQMDataConstants() = default;

CVQMDataConstants::~CVQMDataConstants() = default;

bool CVQMDataConstants::Initialize(std::string filePath)
{
    VQM_LOG_DEBUG("CVQMDataConstants::Initialize \n");
    if (filePath.empty()) {
        VQM_LOG_DEBUG("CVQMDataConstants::Initialize - filePath is empty\n");
        return false;
    }

    CVQMDataBufferObject document;
    const VQMTextFileResult result = VQMReadTextFile(filePath, kReadUnit, document);
    if (result == VQMTextFileResult::NotOpened) {
        VQM_LOG_DEBUG("CVQMDataConstants::Initialize - PIPEHANDLE handle is INVALID_HANDLE\n");
        return false;
    }
    if (result == VQMTextFileResult::NotRead) {
        VQM_LOG_DEBUG("CVQMDataConstants::Initialize - xml file read fail\n");
        return false;
    }

    CVQMDataConstants constants;
    CVQMXMLSerialize serializer;
    if (!serializer.Create()) {
        VQM_LOG_DEBUG("CVQMDataConstants::Initialize - xml serialize creation fail\n");
        return false;
    }
    const bool parsed = serializer.Deserialize(document.GetData(), &constants);
    serializer.Destroy();
    if (!parsed) {
        VQM_LOG_DEBUG("CVQMDataConstants::Initialize - xml Deserialize fail\n");
    }
    return parsed;
}

void CVQMDataConstants::GetValue(std::string key, std::string& value)
{
    if (!m_DataCache.empty()) {
        value = m_DataCache[key];
    }
}

void CVQMDataConstants::GetValue(std::string key, int& value)
{
    if (!m_DataCache.empty()) {
        CVQMDataBufferObject().StrToNumber(m_DataCache[key].c_str(), value);
    }
}

void CVQMDataConstants::GetValue(std::string key, uVQMINT64& value)
{
    if (!m_DataCache.empty()) {
        CVQMDataBufferObject().StrToNumber(m_DataCache[key].c_str(), value);
    }
}

void CVQMDataConstants::GetSturcture(void* /*pStructure*/) {}

void CVQMDataConstants::SetStructure(void* /*pStructure*/) {}

bool CVQMDataConstants::WriteTo(IVQMSerialize* /*pSerialize*/)
{
    return false;
}

bool CVQMDataConstants::ReadFrom(IVQMSerialize* pSerialize)
{
    auto* serializer = VQMAsXMLSerialize(pSerialize);
    if (serializer == nullptr) {
        return false;
    }
    switch (serializer->GetParsingStep()) {
    case PARSING_START_ELEMENT:
        if (serializer->GetParsingElementName() == nullptr) {
            VQM_LOG_DEBUG("CVQMDataConstants::ReadFrom - pElement is null\n");
            return false;
        }
        if (serializer->GetParsingAttributes() == nullptr) {
            VQM_LOG_DEBUG("CVQMDataConstants::ReadFrom - pAtt is null\n");
            return false;
        }
        OnStartElement(serializer->GetParsingElementName(), serializer->GetParsingAttributes());
        return true;
    case PARSING_END_ELEMENT:
        if (serializer->GetParsingElementName() == nullptr) {
            VQM_LOG_DEBUG("CVQMDataConstants::ReadFrom - pElement is null\n");
            return false;
        }
        OnEndElement(serializer->GetParsingElementName());
        return true;
    // The other reader's name in both texts is intended.
    case PARSING_ELEMENT_DATA:
        VQM_LOG_DEBUG("CVQMScheduleContainer::ReadFrom - TEXT step not used\n");
        return true;
    default:
        VQM_LOG_DEBUG("CVQMScheduleContainer::ReadFrom - Unknown parsing step\n");
        return true;
    }
}

void CVQMDataConstants::OnStartElement(const char* name, const char** attributes)
{
    if (name == nullptr || attributes == nullptr) {
        return;
    }
    if (std::strcmp(name, kEntryElement) != 0) {
        VQM_LOG_DEBUG("OnStartElement - Unknown Element\n");
        return;
    }

    std::string key;
    for (int slot = 0; slot < kAttributeCount; ++slot) {
        // The list ends with a null name: slots from there on count as missing.
        const char* attribute = *attributes;
        const char* value = attribute != nullptr ? attributes[1] : nullptr;
        if (attribute != nullptr) {
            attributes += 2;
        }
        if (attribute == nullptr || value == nullptr) {
            VQM_LOG_DEBUG("pAttribute or pValue is wrong"); // without a line end: intended
        } else if (std::strcmp(attribute, kKeyAttribute) == 0) {
            key = value;
        } else if (std::strcmp(attribute, kValueAttribute) == 0) {
            // The text is there before its key is.
            m_DataCache[key] = std::string(value);
        } else {
            VQM_LOG_DEBUG("OnStartElement - Unknown attribute\n");
        }
    }
}

void CVQMDataConstants::OnEndElement(const char* name)
{
    if (name == nullptr) {
        return;
    }
    if (std::strcmp(name, kEntryElement) == 0) {
        VQM_LOG_DEBUG("OnEndElement - Data element closed\n");
    } else {
        VQM_LOG_DEBUG("OnEndElement - Unknown Element\n");
    }
}

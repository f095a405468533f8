#include "Data/VQMScheduleContainer.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "Common/VQMLog.h"
#include "VQMSerialize/VQMXMLSerialize.h"

/// The container logs without a tag.
#define VQM_LOG_SCHEDULE(...) VQM_LOG(DLOG_DEBUG, nullptr, __VA_ARGS__)

namespace {

constexpr int kPolicySlots = 5;
constexpr int kProjectSlots = 5;
constexpr int kScheduleSlots = 2;
constexpr int kItemSlots = 2;
constexpr int kRechInfoSlots = 10;

struct Attribute {
    std::string_view name;
    const char* value;
};

/// Walks a fixed number of slots of an attribute list. Slots from the list's end on are missing.
class AttributeCursor {
public:
    /// Logs for the operation `function`.
    AttributeCursor(const char* function, const char** attributes, int slots)
        : function_(function), next_(attributes), slots_(slots)
    {
    }

    /// The next attribute that is not missing. Logs those that are.
    std::optional<Attribute> Next()
    {
        for (; slots_ > 0; --slots_) {
            const char* const name = next_ != nullptr ? next_[0] : nullptr;
            const char* const value = name != nullptr ? next_[1] : nullptr;
            if (name != nullptr) {
                next_ += 2;
            }
            if (value != nullptr) {
                --slots_;
                return Attribute{name, value};
            }
            VQM_LOG_AS(function_, DLOG_DEBUG, nullptr, "pAttribute or pValue is wrong");
        }
        return std::nullopt;
    }

private:
    const char* const function_;
    const char** next_;
    int slots_;
};

/// Of digits only; a number too large for the type gives the largest one.
long DigitsToLong(const std::string& digits)
{
    return std::strtol(digits.c_str(), nullptr, 10);
}

} // namespace

CVQMScheduleContainer::CVQMScheduleContainer() = default;

CVQMScheduleContainer::~CVQMScheduleContainer() = default;

void CVQMScheduleContainer::GetSturcture(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::GetSturcture - Error structure pointer null\n");
        return;
    }
    CopyPolicyMember(&m_stPolicy, static_cast<_VQMPolicy*>(pStructure));
}

_VQMPolicy CVQMScheduleContainer::TakePolicy() &&
{
    return std::move(m_stPolicy);
}

void CVQMScheduleContainer::SetStructure(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::SetStructure - Error structure pointer null\n");
        return;
    }
    CopyPolicyMember(static_cast<_VQMPolicy*>(pStructure), &m_stPolicy);
}

bool CVQMScheduleContainer::WriteTo(IVQMSerialize* /*pSerialize*/)
{
    return false;
}

bool CVQMScheduleContainer::ReadFrom(IVQMSerialize* pSerialize)
{
    if (pSerialize == nullptr) {
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pSerialize is null\n");
        return false;
    }
    auto* const pXML = VQMAsXMLSerialize(pSerialize);
    if (pXML == nullptr) {
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pSerialize is not the parent of CVQMXMLSerialize object\n");
        return false;
    }
    switch (pXML->GetParsingStep()) {
    case PARSING_START_ELEMENT:
        if (pXML->GetParsingElementName() == nullptr) {
            VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pElement is null\n");
            return false;
        }
        if (pXML->GetParsingAttributes() == nullptr) {
            VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pAtt is null\n");
            return false;
        }
        OnStartElement(pXML->GetParsingElementName(), pXML->GetParsingAttributes());
        return true;
    case PARSING_END_ELEMENT:
        if (pXML->GetParsingElementName() == nullptr) {
            VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pElement is null\n");
            return false;
        }
        OnEndElement(pXML->GetParsingElementName());
        return true;
    case PARSING_ELEMENT_DATA:
        if (pXML->GetParsingText() == nullptr) {
            VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - pText is null\n");
            return false;
        }
        OnElementData(pXML->GetParsingText());
        return true;
    default:
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::ReadFrom - Unknown parsing step\n");
        return true;
    }
}

void CVQMScheduleContainer::CopyPolicyMember(_VQMPolicy* pSource, _VQMPolicy* pDest)
{
    if (pSource == nullptr || pDest == nullptr) {
        VQM_LOG_SCHEDULE("CVQMScheduleContainer::CopyPolicyMember - Error pSource or pDest is Null \n");
        return;
    }
    // The copy is complete before it takes the place of what was there.
    _VQMPolicy copy(*pSource);
    *pDest = std::move(copy);
}

void CVQMScheduleContainer::OnStartElement(const char* pName, const char** ppAttributes)
{
    if (pName == nullptr || ppAttributes == nullptr) {
        return;
    }
    const std::string_view name = pName;
    if (name == "rsp") {
        if (ppAttributes[0] == nullptr || ppAttributes[1] == nullptr) {
            m_stPolicy.bError = true;
        } else if (std::string_view(ppAttributes[0]) == "state" && std::string_view(ppAttributes[1]) == "ok") {
            m_stPolicy.bError = false;
        }
    } else if (name == "policy") {
        ParsePolicyAttribute(ppAttributes);
    } else if (name == "project") {
        ParseProjectAttribute(ppAttributes);
    } else if (name == "schedule") {
        ParseScheduleAttribute(ppAttributes);
    } else if (name == "item" || name == "name" || name == "size" || name == "format") {
        StartItemElement(name, ppAttributes);
    } else if (name == "rech_info") {
        ParseRECHInfoElements(ppAttributes);
    } else {
        VQM_LOG_SCHEDULE("OnStartElement - Unknown Element\n");
    }
}

void CVQMScheduleContainer::OnEndElement(const char* pName)
{
    if (pName == nullptr) {
        return;
    }
    const std::string_view name = pName;
    if (name == "item") {
        CloseItem();
    } else if (name == "rsp") {
        // The document's end; the policy is complete.
    } else if (name == "schedule") {
        CloseSchedule();
    } else if (name == "name" && nElementState == ElementName) {
        VQM_LOG_SCHEDULE("OnEndElement - name closes \n");
        nElementState = ElementNone;
    } else if (name == "size" && nElementState == ElementSize) {
        VQM_LOG_SCHEDULE("OnEndElement - size closes \n");
        nElementState = ElementNone;
    } else if (name == "format" && nElementState == ElementFormat) {
        // The dot is added even to an empty name and before an empty format: intended.
        m_stContent.strName += '.';
        m_stContent.strName += m_stContent.strFormat;
        VQM_LOG_SCHEDULE("OnEndElement - format closes (%s) \n", m_stContent.strName.c_str());
        nElementState = ElementNone;
    } else {
        VQM_LOG_SCHEDULE("OnEndElement - Unknown element");
    }
}

void CVQMScheduleContainer::CloseItem()
{
    // A copy: it takes no more memory than it needs, and the next item's texts reuse this one's.
    m_stSchedule.listContents.push_back(m_stContent);
    m_stContent.strID.clear();
    m_stContent.strName.clear();
    m_stContent.nSize = 0;
    m_stContent.strFormat.clear();
    m_stContent.nOrder = 0;
    nElementState = ElementNone;
}

void CVQMScheduleContainer::CloseSchedule()
{
    m_stPolicy.listSchedule.push_back(std::move(m_stSchedule));
    m_stSchedule = _VQMSchdule();
}

void CVQMScheduleContainer::OnElementData(const char* pText)
{
    if (pText == nullptr) {
        return;
    }
    if (nElementState == ElementNone) { // most texts: the white space between elements
        VQM_LOG_SCHEDULE("OnElementData - Unknown Element \n");
    } else if (nElementState == ElementName) {
        m_stContent.strName += pText;
    } else if (nElementState == ElementFormat) {
        m_stContent.strFormat += pText;
    } else {
        // Of a size in several pieces only the last one counts: intended.
        StrToNumber(pText, m_stContent.nSize);
    }
}

void CVQMScheduleContainer::ParsePolicyAttribute(const char** ppAttributes)
{
    AttributeCursor cursor(__func__, ppAttributes, kPolicySlots);
    while (const std::optional<Attribute> attribute = cursor.Next()) {
        if (attribute->name == "period") {
            StrToNumber(attribute->value, m_stPolicy.nCheckPeriod);
            VQM_LOG_SCHEDULE("Policy: Check Period is %d minutes \n", m_stPolicy.nCheckPeriod);
        } else {
            VQM_LOG_SCHEDULE("Policy: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseProjectAttribute(const char** ppAttributes)
{
    AttributeCursor cursor(__func__, ppAttributes, kProjectSlots);
    while (const std::optional<Attribute> attribute = cursor.Next()) {
        const std::string_view name = attribute->name;
        if (name == "id") {
            StrToNumber(attribute->value, m_stPolicy.nProjectID);
            VQM_LOG_SCHEDULE("Project - id %llu\n", m_stPolicy.nProjectID);
        } else if (name == "version") {
            m_stPolicy.strVersion = attribute->value;
            VQM_LOG_SCHEDULE("Project - version %s\n", m_stPolicy.strVersion.c_str());
        } else if (name == "item_count") {
            StrToNumber(attribute->value, m_stPolicy.nItemCount);
            VQM_LOG_SCHEDULE("Project - item_count %d\n", m_stPolicy.nItemCount);
        } else if (name == "total_size") {
            StrToNumber(attribute->value, m_stPolicy.nTotalSize);
            VQM_LOG_SCHEDULE("Project - total_size %llu\n", m_stPolicy.nTotalSize);
        } else if (name == "expiration") {
            _VQMTime& date = m_stPolicy.stExpiration;
            ConvertYYYYMMDDDateToVQMTime(attribute->value, date);
            VQM_LOG_SCHEDULE("Project - Expiration %d-%d-%d \n", date.nYear, date.nMonth, date.nDay);
        } else {
            VQM_LOG_SCHEDULE("Project: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseScheduleAttribute(const char** ppAttributes)
{
    AttributeCursor cursor(__func__, ppAttributes, kScheduleSlots);
    while (const std::optional<Attribute> attribute = cursor.Next()) {
        const std::string_view name = attribute->name;
        if (name == "start_time") {
            _VQMTime& time = m_stSchedule.stStartTime;
            ConvertHHMMSSTimeToVQMTime(attribute->value, time);
            VQM_LOG_SCHEDULE("Schedule - start_time %d : %d : %d\n", time.nHour, time.nMinute, time.nSecond);
        } else if (name == "end_time") {
            _VQMTime& time = m_stSchedule.stEndTime;
            ConvertHHMMSSTimeToVQMTime(attribute->value, time);
            VQM_LOG_SCHEDULE("Schedule - end_time %d : %d : %d\n", time.nHour, time.nMinute, time.nSecond);
        } else {
            VQM_LOG_SCHEDULE("Schedule: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseItemElements(const char* pName, const char** ppAttributes)
{
    if (pName == nullptr || ppAttributes == nullptr) {
        return;
    }
    StartItemElement(pName, ppAttributes);
}

/// Logs for `ParseItemElements`.
void CVQMScheduleContainer::StartItemElement(std::string_view element, const char** ppAttributes)
{
    constexpr char kFunction[] = "ParseItemElements";
    if (element == "name") {
        nElementState = ElementName;
        return;
    }
    if (element == "size") {
        nElementState = ElementSize;
        return;
    }
    if (element == "format") {
        nElementState = ElementFormat;
        return;
    }
    if (element != "item") {
        VQM_LOG_AS(kFunction, DLOG_DEBUG, nullptr, "Unknown Element\n");
        return;
    }
    AttributeCursor cursor(kFunction, ppAttributes, kItemSlots);
    while (const std::optional<Attribute> attribute = cursor.Next()) {
        const std::string_view name = attribute->name;
        if (name == "id") {
            m_stContent.strID = attribute->value;
            VQM_LOG_AS(kFunction, DLOG_DEBUG, nullptr, "item - id %s \n", m_stContent.strID.c_str());
        } else if (name == "order") {
            StrToNumber(attribute->value, m_stContent.nOrder);
            VQM_LOG_AS(kFunction, DLOG_DEBUG, nullptr, "item - order %d \n", m_stContent.nOrder);
        } else {
            VQM_LOG_AS(kFunction, DLOG_DEBUG, nullptr, "item: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseRECHInfoElements(const char** ppAttributes)
{
    AttributeCursor cursor(__func__, ppAttributes, kRechInfoSlots);
    while (const std::optional<Attribute> attribute = cursor.Next()) {
        const std::string_view name = attribute->name;
        if (name == "IsMaster") {
            int nMaster = 0;
            StrToNumber(attribute->value, nMaster);
            m_stPolicy.IsMaster = nMaster == 1;
            VQM_LOG_SCHEDULE("rech_info - IsMaster %d\n", nMaster);
        } else if (name == "NumOfPlayer") {
            StrToNumber(attribute->value, m_stPolicy.NumOfPlayer);
            VQM_LOG_SCHEDULE("rech_info - NumOfPlayer %d\n", m_stPolicy.NumOfPlayer);
        } else if (name == "IPAddrOfMaster") {
            m_stPolicy.IPAddrOfMaster = attribute->value;
            VQM_LOG_SCHEDULE("rech_info - IPAddrOfMaster %s\n", m_stPolicy.IPAddrOfMaster.c_str());
        } else if (name == "IPType") {
            StrToNumber(attribute->value, m_stPolicy.IPType);
            VQM_LOG_SCHEDULE("rech_info - IPType %d\n", m_stPolicy.IPType);
        } else if (name == "IPAddr") {
            m_stPolicy.IPAddr = attribute->value;
            VQM_LOG_SCHEDULE("rech_info - IPAddr %s\n", m_stPolicy.IPAddr.c_str());
        } else if (name == "SubnetMask") {
            m_stPolicy.SubnetMask = attribute->value;
            VQM_LOG_SCHEDULE("rech_info - SubnetMask %s\n", m_stPolicy.SubnetMask.c_str());
        } else if (name == "Gateway") {
            m_stPolicy.Gateway = attribute->value;
            VQM_LOG_SCHEDULE("rech_info - Gateway %s\n", m_stPolicy.Gateway.c_str());
        } else if (name == "TypeOfNetwork") {
            StrToNumber(attribute->value, m_stPolicy.TypeOfNetwork);
            VQM_LOG_SCHEDULE("rech_info - TypeOfNetwork %d\n", m_stPolicy.TypeOfNetwork);
        } else if (name == "WirelessGroupName") {
            m_stPolicy.WirelessGroupName = attribute->value;
            // The group is logged under the gateway's name: intended.
            VQM_LOG_SCHEDULE("rech_info - Gateway %s\n", m_stPolicy.WirelessGroupName.c_str());
        } else if (name == "nImageDuration") {
            StrToNumber(attribute->value, m_stPolicy.nImageDuration);
            VQM_LOG_SCHEDULE("rech_info - nImageDuration %d\n", m_stPolicy.nImageDuration);
        } else {
            VQM_LOG_SCHEDULE("rech_info: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ConvertYYYYMMDDDateToVQMTime(const std::string& strDate, _VQMTime& stTime)
{
    stTime = _VQMTime();
    if (strDate.size() < 10) {
        VQM_LOG_SCHEDULE(" Wrong date size %d\n", static_cast<int>(strDate.size()));
        return;
    }
    StrToNumber(strDate.substr(0, 4).c_str(), stTime.nYear);
    StrToNumber(strDate.substr(5, 2).c_str(), stTime.nMonth);
    StrToNumber(strDate.substr(8, 2).c_str(), stTime.nDay);
}

void CVQMScheduleContainer::ConvertHHMMSSTimeToVQMTime(const std::string& strTime, _VQMTime& stTime)
{
    stTime = _VQMTime();
    const std::size_t last = strTime.size() - 1;
    const std::size_t first = strTime.find(':');
    if (first == std::string::npos || first == 0) {
        VQM_LOG_SCHEDULE("Cannot find first separator %s\n", strTime.c_str());
        return;
    }
    const std::string strHour = strTime.substr(0, first);
    if (!CheckStringHasOnlyNumber(strHour)) {
        VQM_LOG_SCHEDULE("Hour Has not number data %s\n", strTime.c_str());
        return;
    }
    const long nHour = DigitsToLong(strHour);
    if (nHour > 24) {
        VQM_LOG_SCHEDULE("hour wrong data\n");
        return;
    }
    if (first + 1 >= last) {
        VQM_LOG_SCHEDULE("No more data after parsing hour\n");
        return;
    }
    std::size_t second = strTime.find(':', first + 1);
    if (second == std::string::npos) {
        VQM_LOG_SCHEDULE("second separator can't be found\n");
        second = last; // and so the minute loses its last character: intended
    }
    const std::string strMinute = strTime.substr(first + 1, second - first - 1);
    if (!CheckStringHasOnlyNumber(strMinute)) {
        VQM_LOG_SCHEDULE("Minute Has not number data %s\n", strTime.c_str());
        return;
    }
    const long nMinute = DigitsToLong(strMinute);
    if (nMinute > 59) {
        VQM_LOG_SCHEDULE("minute wrong data\n");
        return;
    }
    stTime.nHour = static_cast<int>(nHour);
    stTime.nMinute = static_cast<int>(nMinute);
    if (second == last) {
        return;
    }
    const std::string strSecond = strTime.substr(second + 1);
    if (!CheckStringHasOnlyNumber(strSecond)) {
        VQM_LOG_SCHEDULE("Seconds Has not number data %s\n", strTime.c_str());
        return;
    }
    const long nSecond = DigitsToLong(strSecond);
    if (nSecond > 59) {
        VQM_LOG_SCHEDULE("Seconds wrong data\n");
        return;
    }
    stTime.nSecond = static_cast<int>(nSecond);
}

bool CVQMScheduleContainer::CheckStringHasOnlyNumber(const std::string& strNumber)
{
    return !strNumber.empty() && strNumber.find_first_not_of("0123456789") == std::string::npos;
}

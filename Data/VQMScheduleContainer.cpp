#include "Data/VQMScheduleContainer.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include "Common/VQMLog.h"
#include "Data/VQMAttributeCursor.h"
#include "Data/VQMScheduleFormat.h"
#include "VQMSerialize/VQMXMLSerialize.h"

/// The container logs without a tag.
#define VQM_LOG_SCHEDULE(...) VQM_LOG(DLOG_DEBUG, nullptr, __VA_ARGS__)

namespace {

using VQMScheduleFormat::Attribute;
using VQMScheduleFormat::Element;

constexpr char kParseItemElements[] = "ParseItemElements";

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
    const Element element = VQMScheduleFormat::ElementNamed(pName);
    switch (element) {
    case Element::kRsp:
        // The state counts as the first attribute only.
        if (ppAttributes[0] == nullptr || ppAttributes[1] == nullptr) {
            m_stPolicy.bError = true;
        } else if (VQMScheduleFormat::AttributeNamed<Element::kRsp>(ppAttributes[0]) == Attribute::kState &&
                   std::string_view(ppAttributes[1]) == "ok") {
            m_stPolicy.bError = false;
        }
        break;
    case Element::kPolicy:
        ParsePolicyAttribute(ppAttributes);
        break;
    case Element::kProject:
        ParseProjectAttribute(ppAttributes);
        break;
    case Element::kSchedule:
        ParseScheduleAttribute(ppAttributes);
        break;
    case Element::kItem:
    case Element::kName:
    case Element::kSize:
    case Element::kFormat:
        StartItemElement(element, ppAttributes);
        break;
    case Element::kRechInfo:
        ParseRECHInfoElements(ppAttributes);
        break;
    default:
        VQM_LOG_SCHEDULE("OnStartElement - Unknown Element\n");
        break;
    }
}

void CVQMScheduleContainer::OnEndElement(const char* pName)
{
    if (pName == nullptr) {
        return;
    }
    const Element element = VQMScheduleFormat::ElementNamed(pName);
    if (element == Element::kItem) {
        CloseItem();
    } else if (element == Element::kRsp) {
        // The document's end; the policy is complete.
    } else if (element == Element::kSchedule) {
        CloseSchedule();
    } else if (element == Element::kName && nElementState == ElementName) {
        VQM_LOG_SCHEDULE("OnEndElement - name closes \n");
        nElementState = ElementNone;
    } else if (element == Element::kSize && nElementState == ElementSize) {
        VQM_LOG_SCHEDULE("OnEndElement - size closes \n");
        nElementState = ElementNone;
    } else if (element == Element::kFormat && nElementState == ElementFormat) {
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
    } else {
        TakeItemText(pText);
    }
}

/// A function of its own, so that white space costs no saved registers.
[[gnu::noinline]] void CVQMScheduleContainer::TakeItemText(const char* pText)
{
    if (nElementState == ElementName) {
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
    CVQMAttributeCursor cursor(__func__, ppAttributes, VQMScheduleFormat::InfoOf(Element::kPolicy).slots);
    while (cursor.Next()) {
        if (VQMScheduleFormat::AttributeNamed<Element::kPolicy>(cursor.Name()) == Attribute::kPeriod) {
            StrToNumber(cursor.Value(), m_stPolicy.nCheckPeriod);
            VQM_LOG_SCHEDULE("Policy: Check Period is %d minutes \n", m_stPolicy.nCheckPeriod);
        } else {
            VQM_LOG_SCHEDULE("Policy: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseProjectAttribute(const char** ppAttributes)
{
    CVQMAttributeCursor cursor(__func__, ppAttributes, VQMScheduleFormat::InfoOf(Element::kProject).slots);
    while (cursor.Next()) {
        const Attribute attribute = VQMScheduleFormat::AttributeNamed<Element::kProject>(cursor.Name());
        if (attribute == Attribute::kId) {
            StrToNumber(cursor.Value(), m_stPolicy.nProjectID);
            VQM_LOG_SCHEDULE("Project - id %llu\n", m_stPolicy.nProjectID);
        } else if (attribute == Attribute::kVersion) {
            m_stPolicy.strVersion = cursor.Value();
            VQM_LOG_SCHEDULE("Project - version %s\n", m_stPolicy.strVersion.c_str());
        } else if (attribute == Attribute::kItemCount) {
            StrToNumber(cursor.Value(), m_stPolicy.nItemCount);
            VQM_LOG_SCHEDULE("Project - item_count %d\n", m_stPolicy.nItemCount);
        } else if (attribute == Attribute::kTotalSize) {
            StrToNumber(cursor.Value(), m_stPolicy.nTotalSize);
            VQM_LOG_SCHEDULE("Project - total_size %llu\n", m_stPolicy.nTotalSize);
        } else if (attribute == Attribute::kExpiration) {
            _VQMTime& date = m_stPolicy.stExpiration;
            ConvertYYYYMMDDDateToVQMTime(cursor.Value(), date);
            VQM_LOG_SCHEDULE("Project - Expiration %d-%d-%d \n", date.nYear, date.nMonth, date.nDay);
        } else {
            VQM_LOG_SCHEDULE("Project: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseScheduleAttribute(const char** ppAttributes)
{
    CVQMAttributeCursor cursor(__func__, ppAttributes, VQMScheduleFormat::InfoOf(Element::kSchedule).slots);
    while (cursor.Next()) {
        const Attribute attribute = VQMScheduleFormat::AttributeNamed<Element::kSchedule>(cursor.Name());
        if (attribute == Attribute::kStartTime) {
            _VQMTime& time = m_stSchedule.stStartTime;
            ConvertHHMMSSTimeToVQMTime(cursor.Value(), time);
            VQM_LOG_SCHEDULE("Schedule - start_time %d : %d : %d\n", time.nHour, time.nMinute, time.nSecond);
        } else if (attribute == Attribute::kEndTime) {
            _VQMTime& time = m_stSchedule.stEndTime;
            ConvertHHMMSSTimeToVQMTime(cursor.Value(), time);
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
    StartItemElement(VQMScheduleFormat::ElementNamed(pName), ppAttributes);
}

/// Logs for `ParseItemElements`.
void CVQMScheduleContainer::StartItemElement(Element element, const char** ppAttributes)
{
    switch (element) {
    case Element::kName:
        nElementState = ElementName;
        break;
    case Element::kSize:
        nElementState = ElementSize;
        break;
    case Element::kFormat:
        nElementState = ElementFormat;
        break;
    case Element::kItem:
        ParseItemAttribute(ppAttributes);
        break;
    default:
        VQM_LOG_AS(kParseItemElements, DLOG_DEBUG, nullptr, "Unknown Element\n");
        break;
    }
}

/// Logs for `ParseItemElements`.
void CVQMScheduleContainer::ParseItemAttribute(const char** ppAttributes)
{
    CVQMAttributeCursor cursor(kParseItemElements, ppAttributes, VQMScheduleFormat::InfoOf(Element::kItem).slots);
    while (cursor.Next()) {
        const Attribute attribute = VQMScheduleFormat::AttributeNamed<Element::kItem>(cursor.Name());
        if (attribute == Attribute::kId) {
            m_stContent.strID = cursor.Value();
            VQM_LOG_AS(kParseItemElements, DLOG_DEBUG, nullptr, "item - id %s \n", m_stContent.strID.c_str());
        } else if (attribute == Attribute::kOrder) {
            StrToNumber(cursor.Value(), m_stContent.nOrder);
            VQM_LOG_AS(kParseItemElements, DLOG_DEBUG, nullptr, "item - order %d \n", m_stContent.nOrder);
        } else {
            VQM_LOG_AS(kParseItemElements, DLOG_DEBUG, nullptr, "item: Unknown Attributes\n");
        }
    }
}

void CVQMScheduleContainer::ParseRECHInfoElements(const char** ppAttributes)
{
    CVQMAttributeCursor cursor(__func__, ppAttributes, VQMScheduleFormat::InfoOf(Element::kRechInfo).slots);
    while (cursor.Next()) {
        const Attribute attribute = VQMScheduleFormat::AttributeNamed<Element::kRechInfo>(cursor.Name());
        if (attribute == Attribute::kIsMaster) {
            int nMaster = 0;
            StrToNumber(cursor.Value(), nMaster);
            m_stPolicy.IsMaster = nMaster == 1;
            VQM_LOG_SCHEDULE("rech_info - IsMaster %d\n", nMaster);
        } else if (attribute == Attribute::kNumOfPlayer) {
            StrToNumber(cursor.Value(), m_stPolicy.NumOfPlayer);
            VQM_LOG_SCHEDULE("rech_info - NumOfPlayer %d\n", m_stPolicy.NumOfPlayer);
        } else if (attribute == Attribute::kIPAddrOfMaster) {
            m_stPolicy.IPAddrOfMaster = cursor.Value();
            VQM_LOG_SCHEDULE("rech_info - IPAddrOfMaster %s\n", m_stPolicy.IPAddrOfMaster.c_str());
        } else if (attribute == Attribute::kIPType) {
            StrToNumber(cursor.Value(), m_stPolicy.IPType);
            VQM_LOG_SCHEDULE("rech_info - IPType %d\n", m_stPolicy.IPType);
        } else if (attribute == Attribute::kIPAddr) {
            m_stPolicy.IPAddr = cursor.Value();
            VQM_LOG_SCHEDULE("rech_info - IPAddr %s\n", m_stPolicy.IPAddr.c_str());
        } else if (attribute == Attribute::kSubnetMask) {
            m_stPolicy.SubnetMask = cursor.Value();
            VQM_LOG_SCHEDULE("rech_info - SubnetMask %s\n", m_stPolicy.SubnetMask.c_str());
        } else if (attribute == Attribute::kGateway) {
            m_stPolicy.Gateway = cursor.Value();
            VQM_LOG_SCHEDULE("rech_info - Gateway %s\n", m_stPolicy.Gateway.c_str());
        } else if (attribute == Attribute::kTypeOfNetwork) {
            StrToNumber(cursor.Value(), m_stPolicy.TypeOfNetwork);
            VQM_LOG_SCHEDULE("rech_info - TypeOfNetwork %d\n", m_stPolicy.TypeOfNetwork);
        } else if (attribute == Attribute::kWirelessGroupName) {
            m_stPolicy.WirelessGroupName = cursor.Value();
            // The group is logged under the gateway's name: intended.
            VQM_LOG_SCHEDULE("rech_info - Gateway %s\n", m_stPolicy.WirelessGroupName.c_str());
        } else if (attribute == Attribute::kImageDuration) {
            StrToNumber(cursor.Value(), m_stPolicy.nImageDuration);
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

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "Benchmarks/Library/ParseInput.h"

namespace {

const char* Chars(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

bool Is(const xmlNode* node, const char* name)
{
    return node->type == XML_ELEMENT_NODE && std::strcmp(Chars(node->name), name) == 0;
}

const char* Attribute(const xmlNode* node, const char* name)
{
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (std::strcmp(Chars(attribute->name), name) == 0) {
            return attribute->children != nullptr ? Chars(attribute->children->content) : "";
        }
    }
    return "";
}

int Number(const xmlNode* node, const char* name)
{
    return static_cast<int>(std::strtol(Attribute(node, name), nullptr, 10));
}

uVQMINT64 LargeNumber(const char* text)
{
    return std::strtoull(text, nullptr, 10);
}

const char* Text(const xmlNode* node)
{
    return node->children != nullptr ? Chars(node->children->content) : "";
}

_VQMTime Time(const char* text)
{
    _VQMTime time;
    std::sscanf(text, "%d:%d:%d", &time.nHour, &time.nMinute, &time.nSecond);
    return time;
}

_VQMContentInfo Content(const xmlNode* item)
{
    _VQMContentInfo content;
    content.strID = Attribute(item, "id");
    content.nOrder = Number(item, "order");
    for (const xmlNode* child = item->children; child != nullptr; child = child->next) {
        if (Is(child, "name")) {
            content.strName = Text(child);
        } else if (Is(child, "size")) {
            content.nSize = LargeNumber(Text(child));
        } else if (Is(child, "format")) {
            content.strFormat = Text(child);
        }
    }
    content.strName += "." + content.strFormat;
    return content;
}

void FillProject(const xmlNode* project, _VQMPolicy& policy)
{
    policy.nProjectID = LargeNumber(Attribute(project, "id"));
    policy.strVersion = Attribute(project, "version");
    policy.nItemCount = Number(project, "item_count");
    policy.nTotalSize = LargeNumber(Attribute(project, "total_size"));
    _VQMTime& date = policy.stExpiration;
    std::sscanf(Attribute(project, "expiration"), "%d-%d-%d", &date.nYear, &date.nMonth, &date.nDay);
}

void FillSchedule(const xmlNode* schedule, _VQMSchdule& period)
{
    period.stStartTime = Time(Attribute(schedule, "start_time"));
    period.stEndTime = Time(Attribute(schedule, "end_time"));
    for (const xmlNode* item = schedule->children; item != nullptr; item = item->next) {
        if (Is(item, "item")) {
            period.listContents.push_back(Content(item));
        }
    }
}

void FillNetwork(const xmlNode* rech, _VQMPolicy& policy)
{
    policy.IsMaster = Number(rech, "IsMaster") == 1;
    policy.NumOfPlayer = Number(rech, "NumOfPlayer");
    policy.IPAddrOfMaster = Attribute(rech, "IPAddrOfMaster");
    policy.IPType = Number(rech, "IPType");
    policy.IPAddr = Attribute(rech, "IPAddr");
    policy.SubnetMask = Attribute(rech, "SubnetMask");
    policy.Gateway = Attribute(rech, "Gateway");
    policy.TypeOfNetwork = Number(rech, "TypeOfNetwork");
    policy.WirelessGroupName = Attribute(rech, "WirelessGroupName");
    policy.nImageDuration = Number(rech, "nImageDuration");
}

void Fill(const xmlNode* rsp, _VQMPolicy& policy)
{
    policy.bError = std::strcmp(Attribute(rsp, "state"), "ok") != 0;
    for (const xmlNode* child = rsp->children; child != nullptr; child = child->next) {
        if (Is(child, "policy")) {
            policy.nCheckPeriod = Number(child, "period");
        } else if (Is(child, "project")) {
            FillProject(child, policy);
        } else if (Is(child, "schedule")) {
            FillSchedule(child, policy.listSchedule.emplace_back());
        } else if (Is(child, "rech_info")) {
            FillNetwork(child, policy);
        }
    }
}

} // namespace

Work ParseWithLibxml2(std::size_t size, Layout layout)
{
    return ParsingWork(size, layout, [](const std::string& text, _VQMPolicy& policy) {
        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "schedule.xml", nullptr,
                          XML_PARSE_HUGE | XML_PARSE_NOBLANKS | XML_PARSE_COMPACT),
            xmlFreeDoc);
        if (document == nullptr) {
            throw std::runtime_error("the document was not read");
        }
        Fill(xmlDocGetRootElement(document.get()), policy);
    });
}

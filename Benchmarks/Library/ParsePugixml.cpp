#include <cstdio>
#include <pugixml.hpp>

#include "Benchmarks/Library/ParseInput.h"

namespace {

_VQMTime Time(const char* text)
{
    _VQMTime time;
    std::sscanf(text, "%d:%d:%d", &time.nHour, &time.nMinute, &time.nSecond);
    return time;
}

_VQMContentInfo Content(const pugi::xml_node& item)
{
    _VQMContentInfo content;
    content.strID = item.attribute("id").value();
    content.nOrder = item.attribute("order").as_int();
    content.strFormat = item.child_value("format");
    content.strName = std::string(item.child_value("name")) + "." + content.strFormat;
    content.nSize = item.child("size").text().as_ullong();
    return content;
}

void Fill(const pugi::xml_node& rsp, _VQMPolicy& policy)
{
    policy.bError = std::string_view(rsp.attribute("state").value()) != "ok";
    policy.nCheckPeriod = rsp.child("policy").attribute("period").as_int();
    const pugi::xml_node project = rsp.child("project");
    policy.nProjectID = project.attribute("id").as_ullong();
    policy.strVersion = project.attribute("version").value();
    policy.nItemCount = project.attribute("item_count").as_int();
    policy.nTotalSize = project.attribute("total_size").as_ullong();
    _VQMTime& date = policy.stExpiration;
    std::sscanf(project.attribute("expiration").value(), "%d-%d-%d", &date.nYear, &date.nMonth, &date.nDay);
    for (const pugi::xml_node schedule : rsp.children("schedule")) {
        _VQMSchdule& period = policy.listSchedule.emplace_back();
        period.stStartTime = Time(schedule.attribute("start_time").value());
        period.stEndTime = Time(schedule.attribute("end_time").value());
        for (const pugi::xml_node item : schedule.children("item")) {
            period.listContents.push_back(Content(item));
        }
    }
    const pugi::xml_node rech = rsp.child("rech_info");
    policy.IsMaster = rech.attribute("IsMaster").as_int() == 1;
    policy.NumOfPlayer = rech.attribute("NumOfPlayer").as_int();
    policy.IPAddrOfMaster = rech.attribute("IPAddrOfMaster").value();
    policy.IPType = rech.attribute("IPType").as_int();
    policy.IPAddr = rech.attribute("IPAddr").value();
    policy.SubnetMask = rech.attribute("SubnetMask").value();
    policy.Gateway = rech.attribute("Gateway").value();
    policy.TypeOfNetwork = rech.attribute("TypeOfNetwork").as_int();
    policy.WirelessGroupName = rech.attribute("WirelessGroupName").value();
    policy.nImageDuration = rech.attribute("nImageDuration").as_int();
}

} // namespace

Work ParseWithPugixml(std::size_t size, Layout layout)
{
    return ParsingWork(size, layout, [](const std::string& text, _VQMPolicy& policy) {
        pugi::xml_document document;
        if (!document.load_buffer(text.data(), text.size())) {
            throw std::runtime_error("the document was not read");
        }
        Fill(document.child("rsp"), policy);
    });
}

#include "Benchmarks/Library/ScheduleDocument.h"

#include <cstdio>

namespace {

constexpr std::size_t kMinutesOfADay = 24UL * 60;
constexpr std::size_t kBytesOfAnItem = 210;

std::string Time(std::size_t minute)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02zu:%02zu:00", minute / 60 % 24, minute % 60);
    return text;
}

} // namespace

std::string ItemName(std::size_t item)
{
    char text[96];
    std::snprintf(text, sizeof text, "autumn-collection-%07zu-for-shop-windows-portrait-full-hd-without-sound", item);
    return text;
}

std::string ScheduleDocument(std::size_t items, std::size_t itemSize, Layout layout, std::size_t itemsOfAPeriod,
                             std::size_t files)
{
    const char* const childLine = layout == Layout::LineForElement ? "\n      " : "";
    const char* const endLine = layout == Layout::LineForElement ? "\n    " : "";
    const std::string size = std::to_string(itemSize);
    std::string text;
    text.reserve(items * kBytesOfAnItem + 1000);
    text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rsp state=\"ok\">\n  <policy period=\"30\"/>\n"
            "  <project id=\"1001\" version=\"1.2\" item_count=\"";
    text += std::to_string(items) + "\" total_size=\"" + std::to_string(items * itemSize);
    text += "\" expiration=\"2030-12-31\"/>\n";
    for (std::size_t item = 0; item < items; ++item) {
        if (item % itemsOfAPeriod == 0) {
            const std::size_t minute = item / itemsOfAPeriod % kMinutesOfADay;
            text += "  <schedule start_time=\"" + Time(minute) + "\" end_time=\"" + Time(minute + 1) + "\">\n";
        }
        text += "    <item id=\"A" + std::to_string(item) + "\" order=\"" + std::to_string(item) + "\">";
        text += childLine;
        text += "<name>" + ItemName(files == 0 ? item : item % files) + "</name>";
        text += childLine;
        text += "<size>" + size + "</size>";
        text += childLine;
        text += "<format>mp4</format>";
        text += endLine;
        text += "</item>\n";
        if (item % itemsOfAPeriod == itemsOfAPeriod - 1 || item == items - 1) {
            text += "  </schedule>\n";
        }
    }
    text += "  <rech_info IsMaster=\"1\" NumOfPlayer=\"2\" IPAddrOfMaster=\"192.168.0.10\" IPType=\"0\" "
            "IPAddr=\"192.168.0.10\" SubnetMask=\"255.255.255.0\" Gateway=\"192.168.0.1\" TypeOfNetwork=\"0\" "
            "WirelessGroupName=\"group1\" nImageDuration=\"10\"/>\n</rsp>\n";
    return text;
}

#include "Tests/Fuzz/StrictReading.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include <expat.h>

namespace {

struct Node {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;
    std::vector<std::unique_ptr<Node>> children;
};

[[noreturn]] void Refuse(const std::string& what)
{
    throw std::runtime_error(what);
}

// The tree.

struct Builder {
    Node document;
    std::vector<Node*> open = {&document};
};

void OnStart(void* data, const char* name, const char** attributes)
{
    auto& builder = *static_cast<Builder*>(data);
    auto node = std::make_unique<Node>();
    node->name = name;
    for (; *attributes != nullptr; attributes += 2) {
        node->attributes[attributes[0]] = attributes[1];
    }
    Node* const added = node.get();
    builder.open.back()->children.push_back(std::move(node));
    builder.open.push_back(added);
}

void OnEnd(void* data, const char* /*name*/)
{
    static_cast<Builder*>(data)->open.pop_back();
}

void OnText(void* data, const char* text, int size)
{
    static_cast<Builder*>(data)->open.back()->text.append(text, static_cast<std::size_t>(size));
}

void Build(std::string_view document, Builder& builder)
{
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    XML_SetUserData(parser.get(), &builder);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    if (XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE) != XML_STATUS_OK) {
        Refuse("not well-formed");
    }
}

// Values.

bool IsDigits(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

template <typename Number>
Number ToNumber(const std::string& text)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        Refuse("number " + text);
    }
    return number;
}

/// Hours, minutes and seconds; empty seconds are none.
_VQMTime ToTime(const std::string& text)
{
    const std::size_t first = text.find(':');
    const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (second == std::string::npos) {
        Refuse("time " + text);
    }
    const std::string hour = text.substr(0, first);
    const std::string minute = text.substr(first + 1, second - first - 1);
    const std::string seconds = text.substr(second + 1);
    if (!IsDigits(hour) || !IsDigits(minute) || !(seconds.empty() || IsDigits(seconds))) {
        Refuse("time " + text);
    }
    _VQMTime time;
    time.nHour = ToNumber<int>(hour);
    time.nMinute = ToNumber<int>(minute);
    time.nSecond = seconds.empty() ? 0 : ToNumber<int>(seconds);
    if (time.nHour > 24 || time.nMinute > 59 || time.nSecond > 59) {
        Refuse("time " + text);
    }
    return time;
}

_VQMTime ToDate(const std::string& text)
{
    if (text.size() != 10) {
        Refuse("date " + text);
    }
    _VQMTime date;
    date.nYear = ToNumber<int>(text.substr(0, 4));
    date.nMonth = ToNumber<int>(text.substr(5, 2));
    date.nDay = ToNumber<int>(text.substr(8, 2));
    return date;
}

// The vocabulary. Each reader takes what it knows and refuses the rest.

class Attributes {
public:
    explicit Attributes(const Node& node) : name_(node.name), left_(node.attributes) {}

    /// Calls `use` with the attribute's value, if there is one.
    template <typename Use>
    Attributes& Take(const char* name, Use use)
    {
        const auto found = left_.find(name);
        if (found != left_.end()) {
            use(found->second);
            left_.erase(found);
        }
        return *this;
    }

    Attributes& Take(const char* name, std::string& out)
    {
        return Take(name, [&out](const std::string& text) { out = text; });
    }

    Attributes& Take(const char* name, int& out)
    {
        return Take(name, [&out](const std::string& text) { out = ToNumber<int>(text); });
    }

    Attributes& Take(const char* name, uVQMINT64& out)
    {
        return Take(name, [&out](const std::string& text) { out = ToNumber<uVQMINT64>(text); });
    }

    void End() const
    {
        if (!left_.empty()) {
            Refuse("attribute " + left_.begin()->first + " of " + name_);
        }
    }

private:
    std::string name_;
    std::map<std::string, std::string> left_;
};

void RefuseText(const Node& node)
{
    if (node.text.find_first_not_of(" \t\r\n") != std::string::npos) {
        Refuse("text in " + node.name);
    }
}

void RefuseChildren(const Node& node)
{
    if (!node.children.empty()) {
        Refuse("element in " + node.name);
    }
}

_VQMContentInfo ReadItem(const Node& node)
{
    RefuseText(node);
    _VQMContentInfo item;
    Attributes(node).Take("id", item.strID).Take("order", item.nOrder).End();
    std::map<std::string, std::string> texts;
    for (const auto& child : node.children) {
        RefuseChildren(*child);
        Attributes(*child).End();
        if ((child->name != "name" && child->name != "size" && child->name != "format") ||
            !texts.emplace(child->name, child->text).second) {
            Refuse("child " + child->name);
        }
    }
    item.strFormat = texts.at("format");
    item.strName = texts.at("name") + "." + item.strFormat;
    item.nSize = ToNumber<uVQMINT64>(texts.at("size"));
    return item;
}

_VQMSchdule ReadSchedule(const Node& node)
{
    RefuseText(node);
    _VQMSchdule schedule;
    Attributes(node)
        .Take("start_time", [&](const std::string& text) { schedule.stStartTime = ToTime(text); })
        .Take("end_time", [&](const std::string& text) { schedule.stEndTime = ToTime(text); })
        .End();
    for (const auto& child : node.children) {
        if (child->name != "item") {
            Refuse("element " + child->name + " in schedule");
        }
        schedule.listContents.push_back(ReadItem(*child));
    }
    return schedule;
}

void ReadLeaf(const Node& node, _VQMPolicy& policy)
{
    RefuseText(node);
    RefuseChildren(node);
    Attributes attributes(node);
    if (node.name == "policy") {
        attributes.Take("period", policy.nCheckPeriod);
    } else if (node.name == "project") {
        attributes.Take("id", policy.nProjectID)
            .Take("version", policy.strVersion)
            .Take("item_count", policy.nItemCount)
            .Take("total_size", policy.nTotalSize)
            .Take("expiration", [&](const std::string& text) { policy.stExpiration = ToDate(text); });
    } else if (node.name == "rech_info") {
        attributes.Take("IsMaster", [&](const std::string& text) { policy.IsMaster = ToNumber<int>(text) == 1; })
            .Take("NumOfPlayer", policy.NumOfPlayer)
            .Take("IPAddrOfMaster", policy.IPAddrOfMaster)
            .Take("IPType", policy.IPType)
            .Take("IPAddr", policy.IPAddr)
            .Take("SubnetMask", policy.SubnetMask)
            .Take("Gateway", policy.Gateway)
            .Take("TypeOfNetwork", policy.TypeOfNetwork)
            .Take("WirelessGroupName", policy.WirelessGroupName)
            .Take("nImageDuration", policy.nImageDuration);
    } else {
        Refuse("element " + node.name);
    }
    attributes.End();
}

} // namespace

_VQMPolicy ReadStrictly(std::string_view document)
{
    const std::size_t zero = std::min(document.find('\0'), document.size());
    if (document.find_first_not_of(std::string_view("\0 \t\r\n", 5), zero) != std::string_view::npos) {
        Refuse("text after a zero byte");
    }
    Builder builder;
    Build(document.substr(0, zero), builder);
    const Node& root = *builder.document.children.at(0);
    if (root.name != "rsp") {
        Refuse("root " + root.name);
    }
    RefuseText(root);
    _VQMPolicy policy;
    Attributes(root).Take("state", [&](const std::string& text) { policy.bError = text != "ok"; }).End();
    if (policy.bError) {
        Refuse("no state 'ok'");
    }
    std::map<std::string, int> seen;
    for (const auto& child : root.children) {
        if (child->name == "schedule") {
            policy.listSchedule.push_back(ReadSchedule(*child));
        } else if (++seen[child->name] == 1) {
            ReadLeaf(*child, policy);
        } else {
            Refuse("second " + child->name);
        }
    }
    return policy;
}

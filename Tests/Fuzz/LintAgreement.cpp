#include "Tests/Fuzz/LintAgreement.h"

#include <sstream>
#include <stdexcept>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Fuzz/StrictReading.h"
#include "Tools/Lint/Lint.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

/// Every field of a policy, one a line.
class Description {
public:
    explicit Description(const _VQMPolicy& policy)
    {
        Add("bError", policy.bError);
        Add("period", policy.nCheckPeriod);
        Add("id", policy.nProjectID);
        Add("version", policy.strVersion);
        Add("item_count", policy.nItemCount);
        Add("total_size", policy.nTotalSize);
        Add("expiration", policy.stExpiration);
        for (const _VQMSchdule& schedule : policy.listSchedule) {
            Add("start_time", schedule.stStartTime);
            Add("end_time", schedule.stEndTime);
            for (const _VQMContentInfo& item : schedule.listContents) {
                Add("item", item.strID);
                Add("order", item.nOrder);
                Add("name", item.strName);
                Add("size", item.nSize);
                Add("format", item.strFormat);
            }
        }
        Add("IsMaster", policy.IsMaster);
        Add("NumOfPlayer", policy.NumOfPlayer);
        Add("IPAddrOfMaster", policy.IPAddrOfMaster);
        Add("IPType", policy.IPType);
        Add("IPAddr", policy.IPAddr);
        Add("SubnetMask", policy.SubnetMask);
        Add("Gateway", policy.Gateway);
        Add("TypeOfNetwork", policy.TypeOfNetwork);
        Add("WirelessGroupName", policy.WirelessGroupName);
        Add("nImageDuration", policy.nImageDuration);
    }

    std::string Text() const { return text_.str(); }

private:
    template <typename Value>
    void Add(const char* name, const Value& value)
    {
        text_ << name << ' ' << value << '\n';
    }

    void Add(const char* name, const _VQMTime& time)
    {
        text_ << name << ' ' << time.nYear << '-' << time.nMonth << '-' << time.nDay << ' ' << time.nHour << ':'
              << time.nMinute << ':' << time.nSecond << ' ' << time.nSpare << '\n';
    }

    std::ostringstream text_;
};

std::string Describe(const _VQMPolicy& policy)
{
    return Description(policy).Text();
}

} // namespace

bool IsClean(std::string_view document, const std::set<lint::Rule>& ignored)
{
    lint::Options options;
    options.ignored = ignored;
    options.today = {2026, 6, 1};
    const lint::Counts counts = lint::Lint(document, options).counts;
    return counts.errors + counts.warnings == 0;
}

std::string FindDisagreement(std::string_view document, const std::set<lint::Rule>& ignored)
{
    if (!IsClean(document, ignored)) {
        return "";
    }
    CVQMScheduleContainer container;
    CVQMXMLSerialize serializer;
    if (!serializer.Create() || !serializer.Deserialize(std::string(document).c_str(), &container)) {
        return "the parser rejects the document";
    }
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    try {
        const std::string expected = Describe(ReadStrictly(document));
        const std::string actual = Describe(policy);
        return expected == actual ? "" : "the document says\n" + expected + "the parser has\n" + actual;
    } catch (const std::runtime_error& error) {
        return std::string("a strict reader refuses: ") + error.what();
    } catch (const std::out_of_range&) {
        return "a strict reader misses a child of an item";
    }
}

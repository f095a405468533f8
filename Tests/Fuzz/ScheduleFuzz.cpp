// A schedule document up to the first zero byte; what follows says where it is cut, and how its
// texts are split. The policy that the product reads is held against a plain model's.

#include <algorithm>
#include <cstdint>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Fuzz/Check.h"
#include "Tests/Fuzz/PolicyText.h"
#include "Tests/Fuzz/ScheduleModel.h"

namespace {

constexpr std::size_t kMaxCuts = 4;

_VQMPolicy PolicyOf(CVQMScheduleContainer& container)
{
    _VQMPolicy policy;
    container.GetSturcture(&policy);
    return policy;
}

/// A parser that splits texts as it likes. Only the size of an item depends on that.
class SplittingSource : public CVQMXMLSerialize, public EventListener {
public:
    explicit SplittingSource(std::size_t pieceSize) : pieceSize_(pieceSize) {}

    void Start(const char* name, const char** attributes) override { Deliver(PARSING_START_ELEMENT, name, attributes); }
    void End(const char* name) override { Deliver(PARSING_END_ELEMENT, name, nullptr); }
    void Text(std::string_view text) override
    {
        for (; !text.empty(); text.remove_prefix(std::min(pieceSize_, text.size()))) {
            const std::string piece(text.substr(0, pieceSize_));
            m_pText = piece.c_str();
            Deliver(PARSING_ELEMENT_DATA, nullptr, nullptr);
            m_pText = nullptr;
        }
    }

    _VQMPolicy Policy() { return PolicyOf(container_); }

private:
    void Deliver(int step, const char* name, const char** attributes)
    {
        m_nParsingStep = step;
        m_pElementName = name;
        m_ppAttributes = attributes;
        Check(container_.ReadFrom(this), "an event is refused");
    }

    std::size_t pieceSize_;
    CVQMScheduleContainer container_;
};

std::string DescribeWithoutSizes(_VQMPolicy policy)
{
    for (_VQMSchdule& schedule : policy.listSchedule) {
        for (_VQMContentInfo& item : schedule.listContents) {
            item.nSize = 0;
        }
    }
    return Describe(policy);
}

bool IsTimeOfDay(const _VQMTime& time)
{
    return time.nYear == 0 && time.nMonth == 0 && time.nDay == 0 && time.nSpare == 0 && time.nHour >= 0 &&
           time.nHour <= 24 && time.nMinute >= 0 && time.nMinute <= 59 && time.nSecond >= 0 && time.nSecond <= 59;
}

bool IsDate(const _VQMTime& time)
{
    return time.nHour == 0 && time.nMinute == 0 && time.nSecond == 0 && time.nSpare == 0 && time.nYear >= -999 &&
           time.nYear <= 9999 && time.nMonth >= -9 && time.nMonth <= 99 && time.nDay >= -9 && time.nDay <= 99;
}

/// Checks what must hold for every policy, from any document.
void CheckRanges(const _VQMPolicy& policy)
{
    Check(IsDate(policy.stExpiration), "the expiration is not a date");
    for (const _VQMSchdule& schedule : policy.listSchedule) {
        Check(IsTimeOfDay(schedule.stStartTime), "the start is not a time of day");
        Check(IsTimeOfDay(schedule.stEndTime), "the end is not a time of day");
    }
}

/// Returns how many schedules the document closes.
std::size_t CheckDocument(std::string_view document, std::size_t pieceSize)
{
    ScheduleModel model;
    EventDigest expectedEvents;
    SplittingSource split(pieceSize);
    const Verdict verdict = ParseWithExpat(document, {&model, &expectedEvents, &split});
    const bool wellFormed = verdict == Verdict::WellFormed;
    Check(expectedEvents.TextSize() <= LargestText(document.size()), "entities unfold without bounds");

    EarlyBombSerializer serializer;
    EventDigest events;
    ListeningTarget listener(events);
    CheckEqual(wellFormed, serializer.Read(document, listener), "the verdict");
    CheckEqual(expectedEvents.Value(), events.Value(), "the events");

    CVQMScheduleContainer container;
    CheckEqual(wellFormed, serializer.Read(document, container), "the verdict of the container's parse");
    _VQMPolicy policy = PolicyOf(container);
    const std::string description = Describe(policy);
    CheckEqual(Describe(model.Policy()), description, "the policy");
    CheckEqual(DescribeWithoutSizes(policy), DescribeWithoutSizes(split.Policy()), "the policy of texts in pieces");
    CheckRanges(policy);

    // The product's own serializer, which is slow in unfolding a bomb.
    CVQMScheduleContainer fresh;
    if (verdict != Verdict::Bomb) {
        CVQMXMLSerialize ownSerializer;
        Check(ownSerializer.Create(), "no parser");
        CheckEqual(wellFormed, ownSerializer.Deserialize(std::string(document).c_str(), &fresh), "the second verdict");
        CheckEqual(description, Describe(PolicyOf(fresh)), "the policy read again");
    }
    fresh.SetStructure(&policy);
    CheckEqual(description, Describe(PolicyOf(fresh)), "the policy set and taken");

    // A container goes on from where it is, with the item and the schedule that are open.
    ParseWithExpat(document, {&model});
    CheckEqual(wellFormed, serializer.Read(document, container), "the third verdict");
    CheckEqual(Describe(model.Policy()), Describe(PolicyOf(container)), "the policy of the document read twice");
    return policy.listSchedule.size();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t length = std::min(input.find('\0'), size);
    const std::string_view document = input.substr(0, length);
    const std::string_view cuts = input.substr(std::min(length + 1, size));
    const std::size_t pieceSize = cuts.empty() ? length + 1 : 1 + static_cast<unsigned char>(cuts.front()) % 7;

    const std::size_t schedules = CheckDocument(document, pieceSize);
    for (std::size_t i = 0; i + 1 < cuts.size() && i < 2 * kMaxCuts; i += 2) {
        const std::size_t place = static_cast<unsigned char>(cuts[i]) * 256U + static_cast<unsigned char>(cuts[i + 1]);
        Check(CheckDocument(document.substr(0, place % (length + 1)), pieceSize) <= schedules,
              "a part closes more schedules than the whole");
    }
    return 0;
}

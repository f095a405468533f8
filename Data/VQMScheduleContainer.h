#pragma once

#include <string>

#include "Common/VQMDataObject.h"
#include "Data/VQMScheduleRecords.h"

namespace VQMScheduleFormat {
enum class Element;
}

/// Reads a schedule document into a `_VQMPolicy`: the target of one
/// `CVQMXMLSerialize::Deserialize`. Docs/schedule-format.md describes the document.
///
/// Reading never fails over content. What is odd is logged, without a tag, and leaves 0, empty
/// text or an all-zero time. A second document adds its schedules to the first one's and
/// overwrites the other fields that it names. Exhausted memory throws `std::bad_alloc`.
///
/// Threads: a container belongs to the thread that parses.
class CVQMScheduleContainer : public CVQMDataSerializableObject {
public:
    CVQMScheduleContainer();
    ~CVQMScheduleContainer() override;

    /// Copies what was read into the `_VQMPolicy` at `pStructure`, which the caller owns. Null is
    /// logged. The name's spelling is the interface.
    void GetSturcture(void* pStructure) override;

    /// What was read, moved out of a container that is of no use afterwards:
    /// `std::move(container).TakePolicy()`.
    _VQMPolicy TakePolicy() &&;

    /// Replaces what was read by a copy of the `_VQMPolicy` at `pStructure`, which stays the
    /// caller's. An item or a schedule that is still open is kept. Null is logged.
    void SetStructure(void* pStructure) override;

    /// The document is read-only here: false.
    bool WriteTo(IVQMSerialize* pSerialize) override;

    /// Takes the current step of a `CVQMXMLSerialize`. False only when that is null, of another
    /// class, or lacks what belongs to the step.
    bool ReadFrom(IVQMSerialize* pSerialize) override;

    /// Copies all fields of `*pSource`, schedules and their contents included, over those of
    /// `*pDest`. With a null pointer nothing is copied, which is logged. Without memory for the copy
    /// `*pDest` stays as it was.
    void CopyPolicyMember(_VQMPolicy* pSource, _VQMPolicy* pDest);

    // The steps of a parse, for `ReadFrom` and for sources of events other than the serializer.
    // Texts end with a NUL and stay the caller's. An attribute list holds names and values in turns
    // and ends with a null name. What is not of the format is logged at debug priority and ignored.

    /// A start tag. Null does nothing.
    void OnStartElement(const char* pName, const char** ppAttributes);

    /// An end tag: that of an item adds it to the open schedule, that of a schedule adds it to the
    /// policy. Null does nothing.
    void OnEndElement(const char* pName);

    /// A piece of text. Pieces of a name and of a format add up; of a size, the last piece counts.
    /// Null does nothing.
    void OnElementData(const char* pText);

    // What the start tags of these elements bring. Each looks at a fixed number of attributes, from
    // the first one on: missing ones are logged, further ones ignored. In a null list all are missing.

    void ParsePolicyAttribute(const char** ppAttributes);   ///< of 5
    void ParseProjectAttribute(const char** ppAttributes);  ///< of 5
    void ParseScheduleAttribute(const char** ppAttributes); ///< of 2

    /// Of 2 for "item". "name", "size" and "format" have none; they say what the text that follows
    /// is. Null does nothing.
    void ParseItemElements(const char* pName, const char** ppAttributes);

    void ParseRECHInfoElements(const char** ppAttributes); ///< of 10

    /// "2016-12-31" to a date. The digits' places are fixed, separators and ranges are not
    /// checked; fewer than 10 characters give all zeros.
    void ConvertYYYYMMDDDateToVQMTime(const std::string& strDate, _VQMTime& stTime);

    /// "09:30:00" to a time of day; up to "24:59:59". What is wrong with the hour or the minute
    /// gives all zeros, what is wrong with the second leaves hour and minute. Without the second
    /// ':' the last character is lost: "09:30" gives 9:03:00, "09:30:" gives 9:30:00.
    void ConvertHHMMSSTimeToVQMTime(const std::string& strTime, _VQMTime& stTime);

    /// Whether the text is one or more decimal digits.
    bool CheckStringHasOnlyNumber(const std::string& strNumber);

private:
    void StartItemElement(VQMScheduleFormat::Element element, const char** ppAttributes);
    void ParseItemAttribute(const char** ppAttributes);
    void TakeItemText(const char* pText);
    void CloseItem();
    void CloseSchedule();

    /// The child of an item whose text is being read.
    enum _ElementState { ElementNone = 0, ElementName = 1, ElementSize = 2, ElementFormat = 3 };

    _VQMPolicy m_stPolicy;
    int nElementState = ElementNone;
    _VQMSchdule m_stSchedule;    ///< the open schedule, with the items closed so far
    _VQMContentInfo m_stContent; ///< the open item
};

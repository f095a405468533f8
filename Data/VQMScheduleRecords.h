#pragma once

#include <list>
#include <string>

#include "Common/VQMDataObject.h"

// The plain records of a schedule. They own what they hold and copy deeply; nothing in them is
// checked, they hold what the document said.

/// A date or a time of day; the fields of the other kind are 0.
struct _VQMTime {
    int nYear = 0;
    int nMonth = 0;
    int nDay = 0;
    int nHour = 0; ///< up to 24
    int nMinute = 0;
    int nSecond = 0;
    int nSpare = 0;
};

/// One file to play.
struct _VQMContentInfo {
    std::string strID;
    std::string strName;   ///< file name; with its extension once the item's format was read
    uVQMINT64 nSize = 0;   ///< bytes
    std::string strFormat; ///< extension without the dot
    int nOrder = 0;        ///< play position
};

/// One period of the day and what plays in it.
struct _VQMSchdule {
    _VQMTime stStartTime;
    _VQMTime stEndTime;
    std::list<_VQMContentInfo> listContents; ///< in document order
};

/// A whole schedule document. The fields from `IsMaster` on have the names of the document's
/// attributes; addresses stay text and codes stay numbers, nothing here interprets them.
struct _VQMPolicy {
    bool bError = true;   ///< until the document says its state is "ok"
    int nCheckPeriod = 0; ///< minutes
    uVQMINT64 nProjectID = 0;
    std::string strVersion;
    int nItemCount = 0;                  ///< as announced, not counted
    uVQMINT64 nTotalSize = 0;            ///< bytes, as announced
    _VQMTime stExpiration;               ///< a date
    std::list<_VQMSchdule> listSchedule; ///< in document order
    bool IsMaster = false;
    int NumOfPlayer = 0;
    std::string IPAddrOfMaster;
    int IPType = 0;
    std::string IPAddr; ///< of this player
    std::string SubnetMask;
    std::string Gateway;
    int TypeOfNetwork = 0;
    std::string WirelessGroupName;
    int nImageDuration = 0;
};

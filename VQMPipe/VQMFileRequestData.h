#pragma once

#include <string>

#include "Common/VQMDataObject.h"
#include "VQMPipe/IVQMPipe.h"

class IVQMSerialize;

/// Carries the description of a file transfer across the pipe interface. Load a
/// `_VQMFileRequest` with `SetStructure`, and hand this object to the pipe.
///
/// Threads: one object belongs to one thread at a time.
class CVQMFileRequestData : public CVQMDataStructureObject {
public:
    /// One file transfer. The record owns its path and its callback; every other pointer stays
    /// the caller's and must outlive the request that uses it.
    struct _VQMFileRequest {
        std::string strDestURI; ///< path of the file
        int eRequestCommand = REQUEST_WRITE;
        VQMPipeCallback fnCallback;
        CVQMDataObject* pSerializableData = nullptr;   ///< what a write writes
        CVQMDataObject* pDeSerializableData = nullptr; ///< what a read fills
        IVQMSerialize* pSerializer = nullptr;          ///< null: raw bytes
        void* hPipe = nullptr;                         ///< an open handle; null: `Request` opens the file
        uVQMINT64 nReadUnitSize = 10240;               ///< bytes per read step; 0: the whole file at once
        uVQMINT64 nStartOffset = 0;                    ///< where reading starts; only `CreatePipe` heeds it
        int nUserValue = 0;                            ///< carried along, never looked at
        bool bAddNewLine = false;                      ///< ends each append write with "\r\n"
        int nRequestID = -1;                           ///< the callback's first argument; -1: none
    };

    /// An empty request, as `Init` leaves it: its read unit is 0, the whole file, not the record's
    /// own default of 10240.
    CVQMFileRequestData();
    ~CVQMFileRequestData() override;

    /// Empties the request; the command stays as it is.
    void Init();

    /// Copies the record at `pData` into this object. Null is logged and changes nothing. Throws
    /// `std::bad_alloc` and changes nothing.
    void SetData(_VQMFileRequest* pData);

    /// Copies this object's record to `pData`. Null is logged, at error priority, and changes
    /// nothing. Throws `std::bad_alloc` and changes nothing.
    void GetData(_VQMFileRequest* pData);

    /// `GetData` and `SetData` with a `_VQMFileRequest*` as untyped pointer. Null is logged and
    /// changes nothing. The first name's spelling is the interface.
    void GetSturcture(void* pStructure) override;
    void SetStructure(void* pStructure) override;

protected:
    _VQMFileRequest m_stRequest;
};

#include "VQMPipe/VQMFileRequestData.h"

#include "VQMPipe/VQMFilePipeLog.h"

namespace {

/// Allocates first, so that a failed copy changes nothing. The path reuses the old one's memory if it
/// fits.
void Copy(const CVQMFileRequestData::_VQMFileRequest& from, CVQMFileRequestData::_VQMFileRequest& to)
{
    VQMPipeCallback callback(from.fnCallback);
    to.strDestURI = from.strDestURI;
    to.fnCallback.swap(callback);
    to.eRequestCommand = from.eRequestCommand;
    to.pSerializableData = from.pSerializableData;
    to.pDeSerializableData = from.pDeSerializableData;
    to.pSerializer = from.pSerializer;
    to.hPipe = from.hPipe;
    to.nReadUnitSize = from.nReadUnitSize;
    to.nStartOffset = from.nStartOffset;
    to.nUserValue = from.nUserValue;
    to.bAddNewLine = from.bAddNewLine;
    to.nRequestID = from.nRequestID;
}

} // namespace

CVQMFileRequestData::CVQMFileRequestData()
{
    Init();
}

CVQMFileRequestData::~CVQMFileRequestData() = default;

void CVQMFileRequestData::Init()
{
    const int command = m_stRequest.eRequestCommand;
    m_stRequest = _VQMFileRequest();
    m_stRequest.eRequestCommand = command;
    m_stRequest.nReadUnitSize = 0;
}

void CVQMFileRequestData::SetData(_VQMFileRequest* pData)
{
    if (pData == nullptr) {
        VQM_LOG_PIPE("CVQMFileRequestData::SetData  - pData point is null \n");
        return;
    }
    Copy(*pData, m_stRequest);
}

void CVQMFileRequestData::GetData(_VQMFileRequest* pData)
{
    if (pData == nullptr) {
        // Error, where its counterpart logs at debug priority: intended.
        VQM_LOG_IN("VQMFilePipe.cpp", __func__, DLOG_ERROR, VQM_LOG_TAG,
                   "CVQMFileRequestData::GetData  - pData point is null \n");
        return;
    }
    Copy(m_stRequest, *pData);
}

void CVQMFileRequestData::SetStructure(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_PIPE("CVQMFileRequestData::SetStructure  - structure point is null \n");
        return;
    }
    SetData(static_cast<_VQMFileRequest*>(pStructure));
}

void CVQMFileRequestData::GetSturcture(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_PIPE("CVQMFileRequestData::GetSturcture  - structure point is null \n");
        return;
    }
    GetData(static_cast<_VQMFileRequest*>(pStructure));
}

#include "VQMPipe/VQMFilePipe.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <sys/stat.h>

#include "Common/VQMLog.h"
#include "VQMPipe/VQMFileStream.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

// The codes of what the pipe throws.
constexpr int kStandardError = 0x100001;
constexpr int kOpenError = 0x100005;
constexpr int kWriteError = 0x100006;
constexpr int kReadError = 0x100007;

template <typename Stream>
void Open(Stream& stream, const std::string& path, std::ios_base::openmode mode, const char* kind)
{
    stream.open(path, mode);
    if ((stream.rdstate() & std::ios_base::failbit) != 0) {
        throw CVQMException(kOpenError, kind + (" open Error : " + path));
    }
}

} // namespace

/// Shows `look` the record under the lock, if there is one, in the name of `GetPipeInfo`. What
/// needs no copy of it takes no memory, and cannot fail.
template <typename Look>
void CVQMFilePipe::LookAtPipeInfo(void* handle, const Look& look)
{
    if (handle == nullptr) {
        VQM_LOG_AS("GetPipeInfo", DLOG_DEBUG, VQM_LOG_TAG, "CVQMFilePipe::GetPipeInfo - Invalid Handle \n");
        return;
    }
    boost::mutex::scoped_lock lock(m_pipeMutex);
    const auto found = m_pipeInfoMap.find(handle);
    if (found != m_pipeInfoMap.end()) {
        look(found->second);
    }
}

CVQMFilePipe::CVQMFilePipe() = default;

CVQMFilePipe::~CVQMFilePipe() // NOLINT(bugprone-exception-escape): a failed lock is fatal here
{
    // Declared before the lock: what the callbacks own is released after it.
    std::map<void*, _PipeInfo> closed;
    boost::mutex::scoped_lock lock(m_pipeMutex);
    for (const auto& entry : m_pipeInfoMap) {
        CloseStream(entry.second);
    }
    closed.swap(m_pipeInfoMap);
}

void CVQMFilePipe::CloseStream(const _PipeInfo& info)
{
    if (info.pFileStream != nullptr) {
        VQMCloseStream(info.pFileStream, info.nOpenMode);
    }
}

void* CVQMFilePipe::CreatePipe(CVQMDataStructureObject* pRequest)
{
    auto* fileRequest = dynamic_cast<CVQMFileRequestData*>(pRequest);
    if (fileRequest == nullptr) {
        return nullptr;
    }
    try {
        CVQMFileRequestData::_VQMFileRequest request;
        fileRequest->GetSturcture(&request);
        if (request.strDestURI.empty()) {
            return nullptr;
        }
        _PipeInfo info;
        DescribeTransfer(request, info);
        info.nStartOffset = request.nStartOffset;
        return FOpen(info);
    } catch (const CVQMException& error) {
        VQM_LOG_DEBUG("CVQMFilePipe::CreatePipe - error %s \n", error.GetErrorText());
    } catch (const std::exception& error) {
        VQM_LOG_DEBUG("CVQMFilePipe::CreatePipe - error %s \n", error.what());
    }
    return nullptr;
}

void* CVQMFilePipe::Request(CVQMDataStructureObject* pRequest)
{
    if (pRequest == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::Request - prequest is NULL\n");
        return nullptr;
    }
    auto* fileRequest = dynamic_cast<CVQMFileRequestData*>(pRequest);
    if (fileRequest == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::Request - pFileRequest is NULL\n");
        return nullptr;
    }
    try {
        CVQMFileRequestData::_VQMFileRequest request;
        fileRequest->GetSturcture(&request);
        void* handle = request.hPipe;
        int command = request.eRequestCommand;
        if (handle == nullptr) {
            if (request.strDestURI.empty()) {
                VQM_LOG_DEBUG("CVQMFilePipe::Request - info.strDestURI is empty\n");
                return nullptr;
            }
            _PipeInfo info;
            DescribeTransfer(request, info);
            handle = FOpen(info);
        } else if (ExistHandle(handle)) {
            command = RetargetTransfer(handle, request);
        }

        bool done = false;
        switch (command) {
        case REQUEST_WRITE:
        case REQUEST_APPEND:
            done = FWrite(handle);
            break;
        case REQUEST_READ:
            done = FRead(handle);
            break;
        default:
            VQM_LOG_DEBUG("CVQMFilePipe::Request - Unsupported Request command\n");
            return handle;
        }
        if (done) {
            return handle;
        }
        DeletePipeInfo(handle);
    } catch (const CVQMException& error) {
        VQM_LOG_DEBUG("CVQMFilePipe::Request - error %s \n", error.GetErrorText());
    } catch (const std::exception& error) {
        VQM_LOG_DEBUG("CVQMFilePipe::Request - error %s \n", error.what());
    }
    return nullptr;
}

void CVQMFilePipe::DisconnectPipe(void* handle)
{
    if (handle != nullptr) {
        DeletePipeInfo(handle);
    }
}

uVQMINT64 CVQMFilePipe::GetFileSize(const char* pFilePath)
{
    if (pFilePath == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::GetFileSize - pFilePath is NULL\n");
        return 0;
    }
    struct stat64 status = {};
    if (stat64(pFilePath, &status) != 0) {
        VQM_LOG_DEBUG("CVQMFilePipe::GetFileSize - _stati64 is not valid \n");
        return 0;
    }
    const auto size = static_cast<uVQMINT64>(status.st_size);
    VQM_LOG_DEBUG("CVQMFilePipe::GetFileSize - (%s) : %llu \n", pFilePath, size);
    return size;
}

uVQMINT64 CVQMFilePipe::GetFileSizeToRead(void* handle)
{
    uVQMINT64 size = 0;
    LookAtPipeInfo(handle, [&size](const _PipeInfo& info) { size = info.nFileSize; });
    return size;
}

uVQMINT64 CVQMFilePipe::GetCurretFileReadByNow(void* handle)
{
    uVQMINT64 position = 0;
    LookAtPipeInfo(handle, [&position](const _PipeInfo& info) {
        position = info.eRequestCommand == REQUEST_READ ? info.nReadSize : 0;
    });
    return position;
}

bool CVQMFilePipe::CheckCompleteFileRead(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::CheckCompleteFileRead - Invalid Handle \n");
        return false;
    }
    bool complete = true; // nothing is left to read of what is not open
    LookAtPipeInfo(handle, [&complete](const _PipeInfo& info) { complete = info.nReadSize == info.nFileSize; });
    return complete;
}

void CVQMFilePipe::InitPipeInfo(_PipeInfo& info)
{
    // Path and open mode stay: opening the file sets both.
    _PipeInfo fresh;
    fresh.strDestURI = std::move(info.strDestURI);
    fresh.nOpenMode = info.nOpenMode;
    info = std::move(fresh);
}

void CVQMFilePipe::CopyPipeInfo(_PipeInfo& from, _PipeInfo& to)
{
    to = from;
}

bool CVQMFilePipe::ExistHandle(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::ExistHandle - Invalid Handle \n");
        return false;
    }
    boost::mutex::scoped_lock lock(m_pipeMutex);
    return m_pipeInfoMap.count(handle) != 0;
}

void CVQMFilePipe::AddPipeInfo(void* handle, _PipeInfo& info)
{
    if (handle == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::AddPipeInfo - Invalid Handle \n");
        return;
    }
    // A swap, so that a record that is replaced goes after the lock, and its callback with it.
    _PipeInfo record(info);
    boost::mutex::scoped_lock lock(m_pipeMutex);
    std::swap(m_pipeInfoMap[handle], record);
}

void CVQMFilePipe::GetPipeInfo(void* handle, _PipeInfo& info)
{
    LookAtPipeInfo(handle, [&info](const _PipeInfo& record) { info = record; });
}

void CVQMFilePipe::UpdatePipeInfo(void* handle, _PipeInfo& info)
{
    AddPipeInfo(handle, info);
}

void CVQMFilePipe::DeletePipeInfo(void* handle)
{
    // Declared before the lock: the stream, the buffer and what the callback owns go after it.
    std::map<void*, _PipeInfo>::node_type closed;
    boost::mutex::scoped_lock lock(m_pipeMutex);
    closed = m_pipeInfoMap.extract(handle);
    if (!closed.empty()) {
        CloseStream(closed.mapped());
    }
}

/// Stores the record after a step, unless a callback or another thread has closed the handle.
/// `info` is of no use afterwards.
void CVQMFilePipe::StoreIfOpen(void* handle, _PipeInfo& info)
{
    boost::mutex::scoped_lock lock(m_pipeMutex);
    const auto found = m_pipeInfoMap.find(handle);
    if (found != m_pipeInfoMap.end()) {
        std::swap(found->second, info);
    }
}

/// Everything of the request except the start offset.
void CVQMFilePipe::DescribeTransfer(const CVQMFileRequestData::_VQMFileRequest& request, _PipeInfo& info)
{
    InitPipeInfo(info);
    info.strDestURI = request.strDestURI;
    info.eRequestCommand = request.eRequestCommand;
    info.pSerializableData = request.pSerializableData;
    info.pDeSerializableData = request.pDeSerializableData;
    info.fnCallback = request.fnCallback;
    info.pSerializer = request.pSerializer;
    info.nReadUnitSize = request.nReadUnitSize;
    info.nUserValue = request.nUserValue;
    info.bAddNewLine = request.bAddNewLine;
    info.nRequestID = request.nRequestID;
}

/// Lets the next step of an open transfer use the request's objects. Returns the transfer's command.
int CVQMFilePipe::RetargetTransfer(void* handle, const CVQMFileRequestData::_VQMFileRequest& request)
{
    _PipeInfo info;
    GetPipeInfo(handle, info);
    info.fnCallback = request.fnCallback;
    info.pSerializableData = request.pSerializableData;
    info.pDeSerializableData = request.pDeSerializableData;
    info.pSerializer = request.pSerializer;
    if (request.nRequestID != -1) {
        info.nRequestID = request.nRequestID;
    }
    const int command = info.eRequestCommand;
    StoreIfOpen(handle, info);
    return command;
}

void* CVQMFilePipe::FOpen(_PipeInfo& info)
{
    VQM_LOG_DEBUG("CVQMFilePipe::FOpen\n");
    try {
        switch (info.eRequestCommand) {
        case REQUEST_WRITE:
            VQM_LOG_DEBUG("CVQMFilePipe::FOpen - RequestCommand is Write\n");
            OpenForWriting(info, kVQMWriteMode);
            break;
        case REQUEST_READ:
            VQM_LOG_DEBUG("CVQMFilePipe::FOpen - RequestCommand is Read\n");
            OpenForReading(info);
            break;
        case REQUEST_APPEND:
            OpenForWriting(info, kVQMAppendMode);
            break;
        default:
            VQM_LOG_DEBUG("CVQMFilePipe::FOpen - wrong command \n");
            throw CVQMException(kOpenError, "Wrong file command : " + info.strDestURI);
        }

        _PipeInfo record;
        CopyPipeInfo(info, record);
        record.nFileSize = info.eRequestCommand == REQUEST_WRITE ? 0 : GetFileSize(info.strDestURI.c_str());
        AddPipeInfo(info.pFileStream, record);
        return info.pFileStream;
    } catch (const std::ios_base::failure& failure) {
        // The capital P is intended.
        VQM_LOG_DEBUG("FOPen error - %s\n", failure.what());
        throw CVQMException(kStandardError, failure.what());
    } catch (const std::exception& error) {
        throw CVQMException(kStandardError, error.what());
    }
}

void CVQMFilePipe::OpenForReading(_PipeInfo& info)
{
    auto stream = std::make_shared<std::ifstream>();
    Open(*stream, info.strDestURI, kVQMReadMode, "ifstream");
    if (info.nStartOffset != 0) {
        if (info.nStartOffset >= GetFileSize(info.strDestURI.c_str())) {
            throw CVQMException(kOpenError, "Point to start reading is over than file size");
        }
        stream->seekg(static_cast<std::streamoff>(info.nStartOffset), std::ios_base::beg);
        info.nReadSize = info.nStartOffset;
    }
    info.nOpenMode = kVQMReadMode;
    info.pFileStream = stream.get();
    info.pStreamOwner = std::move(stream);
}

void CVQMFilePipe::OpenForWriting(_PipeInfo& info, std::ios_base::openmode mode)
{
    auto stream = std::make_shared<std::ofstream>();
    if (mode == kVQMWriteMode) {
        stream->exceptions(std::ios_base::failbit);
    }
    Open(*stream, info.strDestURI, mode, "ofstream");
    info.nOpenMode = mode;
    info.pFileStream = stream.get();
    info.pStreamOwner = std::move(stream);
}

bool CVQMFilePipe::FWrite(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::FWrite - Invalid Handle \n");
        return false;
    }
    try {
        _PipeInfo info;
        GetPipeInfo(handle, info);
        if (info.pFileStream == nullptr) {
            VQM_LOG_DEBUG("CVQMFilePipe::FWrite - Invalid File Handle \n");
            return false;
        }
        if (info.pSerializableData == nullptr) {
            VQM_LOG_DEBUG("CVQMFilePipe::FWrite - Invalid Source buffer \n");
            return false;
        }

        CVQMDataBufferObject* source = nullptr;
        if (info.pSerializer != nullptr) {
            if (!SerializeSource(info)) {
                ForgetDataBuffer(handle);
                return false;
            }
            source = info.pDataBuffer;
        } else {
            source = dynamic_cast<CVQMDataBufferObject*>(info.pSerializableData);
            if (source == nullptr) {
                VQM_LOG_DEBUG("CVQMFilePipe::FWrite - Invalid Source buffer \n");
                return false;
            }
        }

        if (info.eRequestCommand == REQUEST_APPEND && info.bAddNewLine) {
            source->InsertData("\r\n", 2);
        }
        auto& stream = *static_cast<std::ofstream*>(info.pFileStream);
        stream.write(source->GetData(), static_cast<std::streamsize>(source->GetDataSize()));
        if (VQMTransferHasFailed(stream)) {
            throw CVQMException(kWriteError, "File Write Error : " + info.strDestURI);
        }
        info.nFileSize += source->GetDataSize();
        StoreIfOpen(handle, info);
        return true;
    } catch (const std::exception& error) {
        throw CVQMException(kStandardError, error.what());
    }
}

/// Fills the record's buffer with the source's text.
bool CVQMFilePipe::SerializeSource(_PipeInfo& info)
{
    if (info.pDataBuffer == nullptr) {
        CreateDataBuffer(info);
    } else {
        info.pDataBuffer->Clear();
    }
    const auto* source = dynamic_cast<CVQMDataSerializableObject*>(info.pSerializableData);
    if (source == nullptr) {
        VQM_LOG_AS("FWrite", DLOG_DEBUG, VQM_LOG_TAG,
                   "CVQMFilePipe::FWrite -  info.pSerializableData is not a type of CVQMDataSerializableObject\n");
        return false;
    }
    if (!info.pSerializer->Serialize(source, info.pDataBuffer)) {
        VQM_LOG_AS("FWrite", DLOG_DEBUG, VQM_LOG_TAG, "CVQMFilePipe::FWrite - Fail to serialize\n");
        return false;
    }
    return true;
}

bool CVQMFilePipe::FRead(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_DEBUG("CVQMFilePipe::FRead - Invalid Handle \n");
        return false;
    }
    try {
        _PipeInfo info;
        GetPipeInfo(handle, info);
        if (info.pFileStream == nullptr) {
            VQM_LOG_DEBUG("CVQMFilePipe::FRead - Invalid File Handle \n");
            return false;
        }
        if (info.nFileSize == 0) {
            VQM_LOG_DEBUG("CVQMFilePipe::FRead - the size of file to read is 0 \n");
            return false;
        }

        const uVQMINT64 size =
            info.nReadUnitSize == 0 ? info.nFileSize : std::min(info.nFileSize - info.nReadSize, info.nReadUnitSize);
        auto& stream = *static_cast<std::ifstream*>(info.pFileStream);
        const std::unique_ptr<char[]> bytes = VQMReadBytes(stream, size);
        if (VQMTransferHasFailed(stream)) {
            throw CVQMException(kReadError, "File Read Error : " + info.strDestURI);
        }
        info.nReadSize += size;
        return info.pSerializer != nullptr ? TakeDocumentBytes(handle, info, bytes.get(), size)
                                           : TakeRawBytes(handle, info, bytes.get(), size);
    } catch (const std::exception& error) {
        throw CVQMException(kStandardError, error.what());
    }
}

/// Collects the document's bytes, and deserializes it once it is complete.
bool CVQMFilePipe::TakeDocumentBytes(void* handle, _PipeInfo& info, const char* bytes, uVQMINT64 size)
{
    if (info.pDeSerializableData == nullptr) {
        VQM_LOG_AS("FRead", DLOG_DEBUG, VQM_LOG_TAG, "CVQMFilePipe::FRead - pDeSerializableData buffer is null \n");
        return false;
    }
    if (info.pDataBuffer == nullptr) {
        CreateDataBuffer(info);
    }
    info.pDataBuffer->InsertPart(bytes, size, info.nFileSize - info.nReadSize + 1);
    if (info.nReadSize != info.nFileSize) {
        StoreIfOpen(handle, info);
        return true;
    }

    info.pDataBuffer->InsertData("", 1);
    auto* destination = dynamic_cast<CVQMDataSerializableObject*>(info.pDeSerializableData);
    if (destination == nullptr) {
        // The wrong operation's name is intended.
        VQM_LOG_AS("FRead", DLOG_DEBUG, VQM_LOG_TAG,
                   "CVQMFilePipe::FWrite -  info.pDeSerializableData is not a type of CVQMDataSerializableObject\n");
        ForgetDataBuffer(handle);
        return false;
    }
    if (!info.pSerializer->Deserialize(info.pDataBuffer->GetData(), destination)) {
        ForgetDataBuffer(handle);
        VQM_LOG_AS("FRead", DLOG_DEBUG, VQM_LOG_TAG, "CVQMFilePipe::FRead - Deserialize Fail \n");
        return false;
    }
    info.pDataBuffer->Clear();
    if (info.fnCallback) {
        info.fnCallback(info.nRequestID, reinterpret_cast<char*>(destination), 0, this, handle);
    }
    StoreIfOpen(handle, info);
    return true;
}

/// Hands the step's bytes to the destination, if it can take them, and to the callback.
bool CVQMFilePipe::TakeRawBytes(void* handle, _PipeInfo& info, char* bytes, uVQMINT64 size)
{
    auto* destination = dynamic_cast<CVQMDataBufferObject*>(info.pDeSerializableData);
    if (destination != nullptr) {
        // A reader of text puts a zero byte behind it.
        destination->InsertPart(bytes, size, info.nFileSize - info.nReadSize + 1);
    }
    if (info.fnCallback) {
        info.fnCallback(info.nRequestID, bytes, size, this, handle);
    }
    StoreIfOpen(handle, info);
    return true;
}

void CVQMFilePipe::CreateDataBuffer(_PipeInfo& info)
{
    info.pBufferOwner = std::make_shared<CVQMDataBufferObject>();
    info.pDataBuffer = info.pBufferOwner.get();
}

/// The text of a failed step is of no use to a later one.
void CVQMFilePipe::ForgetDataBuffer(void* handle)
{
    std::shared_ptr<CVQMDataBufferObject> forgotten;
    boost::mutex::scoped_lock lock(m_pipeMutex);
    const auto found = m_pipeInfoMap.find(handle);
    if (found != m_pipeInfoMap.end()) {
        forgotten.swap(found->second.pBufferOwner);
        found->second.pDataBuffer = nullptr;
    }
}

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
        VQM_LOG_DEBUG("CVQMFileRequestData::SetData  - pData point is null \n");
        return;
    }
    m_stRequest = _VQMFileRequest(*pData); // a copy that fails changes nothing
}

void CVQMFileRequestData::GetData(_VQMFileRequest* pData)
{
    if (pData == nullptr) {
        // Error, where its counterpart logs at debug priority: intended.
        VQM_LOG_ERROR("CVQMFileRequestData::GetData  - pData point is null \n");
        return;
    }
    *pData = _VQMFileRequest(m_stRequest); // a copy that fails changes nothing
}

void CVQMFileRequestData::SetStructure(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_DEBUG("CVQMFileRequestData::SetStructure  - structure point is null \n");
        return;
    }
    SetData(static_cast<_VQMFileRequest*>(pStructure));
}

void CVQMFileRequestData::GetSturcture(void* pStructure)
{
    if (pStructure == nullptr) {
        VQM_LOG_DEBUG("CVQMFileRequestData::GetSturcture  - structure point is null \n");
        return;
    }
    GetData(static_cast<_VQMFileRequest*>(pStructure));
}

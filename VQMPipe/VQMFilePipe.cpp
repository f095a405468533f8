#include "VQMPipe/VQMFilePipe.h"

#include <exception>
#include <utility>

#include <sys/stat.h>

#include "VQMPipe/VQMFilePipeLog.h"
#include "VQMPipe/VQMFilePipeStep.h"
#include "VQMPipe/VQMFileStream.h"

namespace {

/// About the size of a stream's own buffer.
constexpr uVQMINT64 kStreamBuffer = 8192;

template <typename Stream>
void Open(Stream& stream, const std::string& path, std::ios_base::openmode mode, const char* kind)
{
    stream.open(path, mode);
    if ((stream.rdstate() & std::ios_base::failbit) != 0) {
        throw CVQMException(kVQMOpenError, kind + (" open Error : " + path));
    }
}

} // namespace

/// Calls `use` with the record, if there is one, under the lock. Logs for `GetPipeInfo`.
template <typename Use>
void CVQMFilePipe::WithPipeInfo(void* handle, const Use& use)
{
    if (handle == nullptr) {
        VQM_LOG_PIPE_AS("GetPipeInfo", "CVQMFilePipe::GetPipeInfo - Invalid Handle \n");
        return;
    }
    boost::mutex::scoped_lock lock(m_pipeMutex);
    const auto found = m_pipeInfoMap.find(handle);
    if (found != m_pipeInfoMap.end()) {
        use(found->second);
    }
}

CVQMFilePipe::CVQMFilePipe() = default;

CVQMFilePipe::~CVQMFilePipe() // NOLINT(bugprone-exception-escape): a failed lock is fatal here
{
    // Declared before the lock, so that objects that the callbacks own are released after it.
    std::map<void*, _PipeInfo> closed;
    boost::mutex::scoped_lock lock(m_pipeMutex);
    for (auto& entry : m_pipeInfoMap) {
        CloseStream(entry.second);
        ReleaseBuffer(entry.second);
    }
    closed.swap(m_pipeInfoMap);
}

void CVQMFilePipe::CloseStream(const _PipeInfo& info)
{
    if (info.pFileStream != nullptr) {
        VQMCloseStream(info.pFileStream, info.nOpenMode);
    }
}

void CVQMFilePipe::ReleaseBuffer(_PipeInfo& info)
{
    std::unique_ptr<CVQMDataBufferObject>(info.pDataBuffer).reset();
    info.pDataBuffer = nullptr;
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
        VQM_LOG_PIPE("CVQMFilePipe::CreatePipe - error %s \n", error.GetErrorText());
    } catch (const std::exception& error) {
        VQM_LOG_PIPE("CVQMFilePipe::CreatePipe - error %s \n", error.what());
    }
    return nullptr;
}

void* CVQMFilePipe::Request(CVQMDataStructureObject* pRequest)
{
    if (pRequest == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::Request - prequest is NULL\n");
        return nullptr;
    }
    auto* fileRequest = dynamic_cast<CVQMFileRequestData*>(pRequest);
    if (fileRequest == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::Request - pFileRequest is NULL\n");
        return nullptr;
    }
    try {
        CVQMFileRequestData::_VQMFileRequest request;
        fileRequest->GetSturcture(&request);
        if (request.hPipe != nullptr) {
            return MoveStep(request.hPipe, &request);
        }
        if (request.strDestURI.empty()) {
            VQM_LOG_PIPE("CVQMFilePipe::Request - info.strDestURI is empty\n");
            return nullptr;
        }
        _PipeInfo info;
        DescribeTransfer(request, info);
        return MoveStep(FOpen(info), nullptr);
    } catch (const CVQMException& error) {
        VQM_LOG_PIPE("CVQMFilePipe::Request - error %s \n", error.GetErrorText());
    } catch (const std::exception& error) {
        VQM_LOG_PIPE("CVQMFilePipe::Request - error %s \n", error.what());
    }
    return nullptr;
}

/// Moves one step, for `Request`, with what the request brings for it, if any.
void* CVQMFilePipe::MoveStep(void* handle, CVQMFileRequestData::_VQMFileRequest* pRequest)
{
    _Step step(*this, handle, pRequest);
    bool done = false;
    switch (step.info.eRequestCommand) {
    case REQUEST_WRITE:
    case REQUEST_APPEND:
        done = Write(step);
        break;
    case REQUEST_READ:
        done = Read(step);
        break;
    default:
        // Not a failure: the handle stays open and is the result.
        VQM_LOG_PIPE_AS("Request", "CVQMFilePipe::Request - Unsupported Request command\n");
        return handle;
    }
    if (!done) {
        DeletePipeInfo(handle);
        return nullptr;
    }
    return handle;
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
        VQM_LOG_PIPE("CVQMFilePipe::GetFileSize - pFilePath is NULL\n");
        return 0;
    }
    struct stat64 status = {};
    if (stat64(pFilePath, &status) != 0) {
        VQM_LOG_PIPE("CVQMFilePipe::GetFileSize - _stati64 is not valid \n");
        return 0;
    }
    const auto size = static_cast<uVQMINT64>(status.st_size);
    VQM_LOG_PIPE("CVQMFilePipe::GetFileSize - (%s) : %llu \n", pFilePath, size);
    return size;
}

uVQMINT64 CVQMFilePipe::GetFileSizeToRead(void* handle)
{
    uVQMINT64 size = 0;
    WithPipeInfo(handle, [&size](const _PipeInfo& info) { size = info.nFileSize; });
    return size;
}

uVQMINT64 CVQMFilePipe::GetCurretFileReadByNow(void* handle)
{
    uVQMINT64 position = 0;
    WithPipeInfo(handle, [&position](const _PipeInfo& info) {
        position = info.eRequestCommand == REQUEST_READ ? info.nReadSize : 0;
    });
    return position;
}

bool CVQMFilePipe::CheckCompleteFileRead(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::CheckCompleteFileRead - Invalid Handle \n");
        return false;
    }
    bool complete = true; // a handle that is not open has nothing left to read
    WithPipeInfo(handle, [&complete](const _PipeInfo& info) { complete = info.nReadSize == info.nFileSize; });
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
        VQM_LOG_PIPE("CVQMFilePipe::ExistHandle - Invalid Handle \n");
        return false;
    }
    boost::mutex::scoped_lock lock(m_pipeMutex);
    return m_pipeInfoMap.count(handle) != 0;
}

void CVQMFilePipe::AddPipeInfo(void* handle, _PipeInfo& info)
{
    if (handle == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::AddPipeInfo - Invalid Handle \n");
        return;
    }
    _PipeInfo record(info);
    Store(handle, record);
}

/// `record` is of no use afterwards.
void CVQMFilePipe::Store(void* handle, _PipeInfo& record)
{
    boost::mutex::scoped_lock lock(m_pipeMutex);
    const auto found = m_pipeInfoMap.find(handle);
    if (found == m_pipeInfoMap.end()) {
        m_pipeInfoMap.emplace(handle, std::move(record));
    } else {
        std::swap(found->second, record); // the caller releases the old record and its callback, after the lock
    }
}

void CVQMFilePipe::GetPipeInfo(void* handle, _PipeInfo& info)
{
    WithPipeInfo(handle, [&info](const _PipeInfo& record) { info = record; });
}

void CVQMFilePipe::UpdatePipeInfo(void* handle, _PipeInfo& info)
{
    AddPipeInfo(handle, info);
}

void CVQMFilePipe::DeletePipeInfo(void* handle)
{
    // Declared before the lock, so that the stream and the callback's objects are released after it.
    std::map<void*, _PipeInfo>::node_type removed;
    boost::mutex::scoped_lock lock(m_pipeMutex);
    removed = m_pipeInfoMap.extract(handle);
    if (removed.empty()) {
        return;
    }
    CloseStream(removed.mapped());
    // A weak reference keeps the stream's memory, and so its address, from being reused by the next streams.
    m_closedStreams[m_nClosedStreams++ % m_closedStreams.size()] = removed.mapped().pStreamOwner;
    if (_Step* const step = _Step::Find(*this, handle)) {
        step->Keep(std::move(removed));
        return;
    }
    lock.unlock();
    ReleaseBuffer(removed.mapped());
}

/// Everything of the request except the start offset. The request is of no use afterwards.
void CVQMFilePipe::DescribeTransfer(CVQMFileRequestData::_VQMFileRequest& request, _PipeInfo& info)
{
    info.strDestURI = std::move(request.strDestURI);
    info.eRequestCommand = request.eRequestCommand;
    info.pSerializableData = request.pSerializableData;
    info.pDeSerializableData = request.pDeSerializableData;
    info.fnCallback = std::move(request.fnCallback);
    info.pSerializer = request.pSerializer;
    info.nReadUnitSize = request.nReadUnitSize;
    info.nUserValue = request.nUserValue;
    info.bAddNewLine = request.bAddNewLine;
    info.nRequestID = request.nRequestID;
}

void* CVQMFilePipe::FOpen(_PipeInfo& info)
{
    VQM_LOG_PIPE("CVQMFilePipe::FOpen\n");
    try {
        switch (info.eRequestCommand) {
        case REQUEST_WRITE:
            VQM_LOG_PIPE("CVQMFilePipe::FOpen - RequestCommand is Write\n");
            OpenForWriting(info, kVQMWriteMode);
            break;
        case REQUEST_READ:
            VQM_LOG_PIPE("CVQMFilePipe::FOpen - RequestCommand is Read\n");
            OpenForReading(info);
            break;
        case REQUEST_APPEND:
            OpenForWriting(info, kVQMAppendMode);
            break;
        default:
            VQM_LOG_PIPE("CVQMFilePipe::FOpen - wrong command \n");
            throw CVQMException(kVQMOpenError, "Wrong file command : " + info.strDestURI);
        }

        // Only the stored record gets the size. A file that is opened to be written has just been emptied.
        _PipeInfo record(info);
        record.nFileSize = info.eRequestCommand == REQUEST_WRITE ? 0 : GetFileSize(info.strDestURI.c_str());
        Store(info.pFileStream, record);
        return info.pFileStream;
    } catch (const std::ios_base::failure& failure) {
        // The capital P is intended.
        VQM_LOG_PIPE("FOPen error - %s\n", failure.what());
        throw CVQMException(kVQMStandardError, failure.what());
    } catch (const std::exception& error) {
        throw CVQMException(kVQMStandardError, error.what());
    }
}

void CVQMFilePipe::OpenForReading(_PipeInfo& info)
{
    auto stream = std::make_shared<std::ifstream>();
    if (info.nReadUnitSize == 0 || info.nReadUnitSize >= kStreamBuffer) {
        stream->rdbuf()->pubsetbuf(nullptr, 0); // each step has its own memory: no need to copy through the buffer
    }
    Open(*stream, info.strDestURI, kVQMReadMode, "ifstream");
    if (info.nStartOffset != 0) {
        if (info.nStartOffset >= GetFileSize(info.strDestURI.c_str())) {
            throw CVQMException(kVQMOpenError, "Point to start reading is over than file size");
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
    // Only this mode throws by itself; appending and reading check the state after each operation.
    if (mode == kVQMWriteMode) {
        stream->exceptions(std::ios_base::failbit);
    }
    Open(*stream, info.strDestURI, mode, "ofstream");
    info.nOpenMode = mode;
    info.pFileStream = stream.get();
    info.pStreamOwner = std::move(stream);
}

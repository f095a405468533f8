// The steps of a transfer: what moves bytes.

#include "VQMPipe/VQMFilePipeStep.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "VQMPipe/VQMFilePipeLog.h"
#include "VQMPipe/VQMFileStream.h"
#include "VQMSerialize/VQMXMLSerialize.h"

namespace {

[[noreturn]] void ThrowTransferError(int command, const std::string& path)
{
    if (command == REQUEST_READ) {
        throw CVQMException(kVQMReadError, "File Read Error : " + path);
    }
    throw CVQMException(kVQMWriteError, "File Write Error : " + path);
}

} // namespace

CVQMFilePipe::_Step::_Step(CVQMFilePipe& pipe, void* pHandle, CVQMFileRequestData::_VQMFileRequest* pRequest)
    : handle(pHandle), m_pipe(pipe)
{
    boost::mutex::scoped_lock lock(pipe.m_pipeMutex);
    const auto found = pipe.m_pipeInfoMap.find(handle);
    if (found == pipe.m_pipeInfoMap.end()) {
        // The step will fail for want of a stream; the command decides which operation logs that.
        info.eRequestCommand = pRequest != nullptr ? pRequest->eRequestCommand : REQUEST_WRITE;
        return;
    }
    _PipeInfo& record = found->second;
    if (Find(pipe, handle) != nullptr) {
        ThrowTransferError(record.eRequestCommand, record.strDestURI);
    }
    if (pRequest != nullptr) {
        Retarget(record, *pRequest);
    }
    info = record;
    m_pNext = pipe.m_pSteps;
    pipe.m_pSteps = this;
    m_bLinked = true;
}

CVQMFilePipe::_Step::~_Step() // NOLINT(bugprone-exception-escape): a failed lock is fatal here
{
    if (m_bLinked) {
        boost::mutex::scoped_lock lock(m_pipe.m_pipeMutex);
        Unlink();
    }
    if (!m_removed.empty()) {
        ReleaseBuffer(m_removed.mapped());
    }
}

/// Swaps the callbacks, so that the request releases the old one after the lock.
void CVQMFilePipe::_Step::Retarget(_PipeInfo& record, CVQMFileRequestData::_VQMFileRequest& request)
{
    record.fnCallback.swap(request.fnCallback);
    record.pSerializableData = request.pSerializableData;
    record.pDeSerializableData = request.pDeSerializableData;
    record.pSerializer = request.pSerializer;
    if (request.nRequestID != -1) {
        record.nRequestID = request.nRequestID;
    }
}

CVQMDataBufferObject& CVQMFilePipe::_Step::Buffer()
{
    if (info.pDataBuffer == nullptr) {
        m_pNewBuffer = std::make_unique<CVQMDataBufferObject>();
        info.pDataBuffer = m_pNewBuffer.get();
    }
    return *info.pDataBuffer;
}

void CVQMFilePipe::_Step::DropBuffer()
{
    if (m_pNewBuffer == nullptr) {
        boost::mutex::scoped_lock lock(m_pipe.m_pipeMutex);
        const auto found = m_pipe.m_pipeInfoMap.find(handle);
        // A derived class may have stored another buffer meanwhile: that one stays with the record.
        if (found != m_pipe.m_pipeInfoMap.end() && found->second.pDataBuffer == info.pDataBuffer) {
            m_pNewBuffer.reset(found->second.pDataBuffer);
            found->second.pDataBuffer = nullptr;
        }
    }
    m_pNewBuffer.reset();
    info.pDataBuffer = nullptr;
}

void CVQMFilePipe::_Step::Store()
{
    boost::mutex::scoped_lock lock(m_pipe.m_pipeMutex);
    const auto found = m_pipe.m_pipeInfoMap.find(handle);
    if (found != m_pipe.m_pipeInfoMap.end()) {
        std::swap(found->second, info);            // the step releases the old record, after the lock
        static_cast<void>(m_pNewBuffer.release()); // the record owns it from here on
    }
    Unlink();
}

void CVQMFilePipe::_Step::Keep(std::map<void*, _PipeInfo>::node_type record)
{
    m_removed = std::move(record);
}

CVQMFilePipe::_Step* CVQMFilePipe::_Step::Find(const CVQMFilePipe& pipe, void* handle)
{
    _Step* step = pipe.m_pSteps;
    while (step != nullptr && step->handle != handle) {
        step = step->m_pNext;
    }
    return step;
}

void CVQMFilePipe::_Step::Unlink()
{
    _Step** link = &m_pipe.m_pSteps;
    while (*link != this) {
        link = &(*link)->m_pNext;
    }
    *link = m_pNext;
    m_bLinked = false;
}

bool CVQMFilePipe::FWrite(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::FWrite - Invalid Handle \n");
        return false;
    }
    try {
        _Step step(*this, handle, nullptr);
        return Write(step);
    } catch (const std::exception& error) {
        throw CVQMException(kVQMStandardError, error.what());
    }
}

bool CVQMFilePipe::FRead(void* handle)
{
    if (handle == nullptr) {
        VQM_LOG_PIPE("CVQMFilePipe::FRead - Invalid Handle \n");
        return false;
    }
    try {
        _Step step(*this, handle, nullptr);
        return Read(step);
    } catch (const std::exception& error) {
        throw CVQMException(kVQMStandardError, error.what());
    }
}

/// Logs for `FWrite`.
bool CVQMFilePipe::Write(_Step& step)
{
    _PipeInfo& info = step.info;
    if (info.pFileStream == nullptr) {
        VQM_LOG_PIPE_AS("FWrite", "CVQMFilePipe::FWrite - Invalid File Handle \n");
        return false;
    }
    if (info.pSerializableData == nullptr) {
        VQM_LOG_PIPE_AS("FWrite", "CVQMFilePipe::FWrite - Invalid Source buffer \n");
        return false;
    }

    CVQMDataBufferObject* source = nullptr;
    if (info.pSerializer != nullptr) {
        if (!SerializeSource(step)) {
            step.DropBuffer();
            return false;
        }
        source = info.pDataBuffer;
    } else {
        source = dynamic_cast<CVQMDataBufferObject*>(info.pSerializableData);
        if (source == nullptr) {
            VQM_LOG_PIPE_AS("FWrite", "CVQMFilePipe::FWrite - Invalid Source buffer \n");
            return false;
        }
    }

    if (info.eRequestCommand == REQUEST_APPEND && info.bAddNewLine) {
        source->InsertData("\r\n", 2); // into the source itself, where it stays: intended
    }
    auto& stream = *static_cast<std::ofstream*>(info.pFileStream);
    stream.write(source->GetData(), static_cast<std::streamsize>(source->GetDataSize()));
    if (VQMTransferHasFailed(stream)) {
        ThrowTransferError(REQUEST_WRITE, info.strDestURI);
    }
    info.nFileSize += source->GetDataSize();
    step.Store();
    return true;
}

/// Fills the transfer's buffer with the source's text.
bool CVQMFilePipe::SerializeSource(_Step& step)
{
    CVQMDataBufferObject& text = step.Buffer();
    text.Clear();
    const auto* source = dynamic_cast<CVQMDataSerializableObject*>(step.info.pSerializableData);
    if (source == nullptr) {
        VQM_LOG_PIPE_AS("FWrite",
                        "CVQMFilePipe::FWrite -  info.pSerializableData is not a type of CVQMDataSerializableObject\n");
        return false;
    }
    if (!step.info.pSerializer->Serialize(source, &text)) {
        VQM_LOG_PIPE_AS("FWrite", "CVQMFilePipe::FWrite - Fail to serialize\n");
        return false;
    }
    return true;
}

/// Logs for `FRead`.
bool CVQMFilePipe::Read(_Step& step)
{
    _PipeInfo& info = step.info;
    if (info.pFileStream == nullptr) {
        VQM_LOG_PIPE_AS("FRead", "CVQMFilePipe::FRead - Invalid File Handle \n");
        return false;
    }
    if (info.nFileSize == 0) {
        VQM_LOG_PIPE_AS("FRead", "CVQMFilePipe::FRead - the size of file to read is 0 \n");
        return false;
    }

    // A whole read from an offset leaves the position past the end. There the difference wraps around,
    // and the step is as long as its unit: intended.
    const uVQMINT64 size =
        info.nReadUnitSize == 0 ? info.nFileSize : std::min(info.nFileSize - info.nReadSize, info.nReadUnitSize);
    auto& stream = *static_cast<std::ifstream*>(info.pFileStream);
    const std::unique_ptr<char[]> bytes = VQMReadBytes(stream, size);
    if (VQMTransferHasFailed(stream)) {
        ThrowTransferError(REQUEST_READ, info.strDestURI);
    }
    info.nReadSize += size;
    return info.pSerializer != nullptr ? TakeDocumentBytes(step, bytes.get(), size)
                                       : TakeRawBytes(step, bytes.get(), size);
}

/// The bytes that later steps will read, if the file keeps its length.
uVQMINT64 CVQMFilePipe::BytesToCome(const _PipeInfo& info)
{
    return info.nReadSize < info.nFileSize ? info.nFileSize - info.nReadSize : 0;
}

/// Collects the document's bytes, and deserializes it once it is complete.
bool CVQMFilePipe::TakeDocumentBytes(_Step& step, const char* bytes, uVQMINT64 size)
{
    _PipeInfo& info = step.info;
    if (info.pDeSerializableData == nullptr) {
        VQM_LOG_PIPE_AS("FRead", "CVQMFilePipe::FRead - pDeSerializableData buffer is null \n");
        return false;
    }
    CVQMDataBufferObject& text = step.Buffer();
    text.AppendReserving(bytes, size, BytesToCome(info) + 1);
    if (info.nReadSize != info.nFileSize) {
        step.Store();
        return true;
    }

    text.InsertData("", 1);
    auto* destination = dynamic_cast<CVQMDataSerializableObject*>(info.pDeSerializableData);
    if (destination == nullptr) {
        // The wrong operation's name is intended.
        VQM_LOG_PIPE_AS(
            "FRead", "CVQMFilePipe::FWrite -  info.pDeSerializableData is not a type of CVQMDataSerializableObject\n");
        step.DropBuffer();
        return false;
    }
    if (!info.pSerializer->Deserialize(text.GetData(), destination)) {
        step.DropBuffer();
        VQM_LOG_PIPE_AS("FRead", "CVQMFilePipe::FRead - Deserialize Fail \n");
        return false;
    }
    // Before the callback: the text's memory is kept for the next document, its bytes are not.
    text.Clear();
    if (info.fnCallback) {
        info.fnCallback(info.nRequestID, reinterpret_cast<char*>(destination), 0, this, step.handle);
    }
    step.Store();
    return true;
}

/// Passes the step's bytes to the destination, if it can take them, and to the callback.
bool CVQMFilePipe::TakeRawBytes(_Step& step, char* bytes, uVQMINT64 size)
{
    _PipeInfo& info = step.info;
    auto* destination = dynamic_cast<CVQMDataBufferObject*>(info.pDeSerializableData);
    if (destination != nullptr) {
        // Before the callback, which may look at the destination. One byte more is expected, because readers
        // of text append a zero byte.
        destination->AppendReserving(bytes, size, BytesToCome(info) + 1);
    }
    if (info.fnCallback) {
        info.fnCallback(info.nRequestID, bytes, size, this, step.handle);
    }
    step.Store();
    return true;
}

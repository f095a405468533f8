#pragma once

#include <map>
#include <memory>

#include "VQMPipe/VQMFilePipe.h"

// The codes of what the pipe throws.
constexpr int kVQMStandardError = 0x100001;
constexpr int kVQMOpenError = 0x100005;
constexpr int kVQMWriteError = 0x100006;
constexpr int kVQMReadError = 0x100007;

/// A step in progress. It lies on the stack of the thread that makes it.
///
/// The step works on a copy of the record, without the lock. While it lives, its handle takes no
/// other step. If the handle is disconnected meanwhile, the objects that the step uses stay until it ends.
class CVQMFilePipe::_Step {
public:
    /// Looks the record up and, if there is a request, puts the request's callback and objects into
    /// it. Without a record, `info` has no stream. Throws `CVQMException` when the handle has a step
    /// in progress.
    _Step(CVQMFilePipe& pipe, void* handle, CVQMFileRequestData::_VQMFileRequest* pRequest);
    ~_Step(); // NOLINT(bugprone-exception-escape): a failed lock is fatal here

    _Step(const _Step&) = delete;
    _Step& operator=(const _Step&) = delete;

    /// The transfer's buffer, which the record gets with `Store` if it has none yet.
    CVQMDataBufferObject& Buffer();

    /// Deletes the buffer, also the record's: a later step cannot use the text of a failed one.
    void DropBuffer();

    /// Ends the step: `info` becomes the record, unless the handle was disconnected meanwhile.
    void Store();

    /// Takes over the record that its handle's disconnection has removed. Under the lock.
    void Keep(std::map<void*, _PipeInfo>::node_type record);

    /// The step in progress of a handle, or null. Under the lock.
    static _Step* Find(const CVQMFilePipe& pipe, void* handle);

    void* const handle;
    _PipeInfo info;

private:
    static void Retarget(_PipeInfo& record, CVQMFileRequestData::_VQMFileRequest& request);
    void Unlink();

    CVQMFilePipe& m_pipe;
    bool m_bLinked = false;
    _Step* m_pNext = nullptr; ///< in the pipe's list
    std::unique_ptr<CVQMDataBufferObject> m_pNewBuffer;
    std::map<void*, _PipeInfo>::node_type m_removed;
};

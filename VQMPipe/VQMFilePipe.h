#pragma once

#include <ios>
#include <map>
#include <memory>
#include <string>

#include <boost/thread/mutex.hpp>

#include "VQMPipe/IVQMPipe.h"
#include "VQMPipe/VQMFileRequestData.h"

/// Writes and reads files in steps, through a serializer or raw.
///
/// A reader fills a `CVQMFileRequestData` (command read, path, destination, bytes per step), calls
/// `CreatePipe`, puts the handle into the request, calls `Request` until `CheckCompleteFileRead`,
/// and then `DisconnectPipe`. Docs/file-pipe.md shows it as a program.
///
/// The pipe owns the open files. Data objects, serializers and what a callback refers to stay the
/// caller's. No operation throws `CVQMException` or a standard exception except for a failed
/// lock: failures are logged at debug priority and give null, false or 0. One transfer's failure
/// leaves all others alone.
///
/// Threads: any number of threads may use one pipe at a time, each with handles of its own. A
/// single handle belongs to one thread at a time; how far it has come, any thread may ask.
class CVQMFilePipe : public IVQMPipe {
public:
    CVQMFilePipe();

    /// Closes every file that is still open; a close that fails is silent.
    ~CVQMFilePipe() override; // NOLINT(bugprone-exception-escape): a failed lock is fatal here

    /// Opens the file that a `CVQMFileRequestData` describes; its handle field is not looked at.
    /// A reader starts at `nStartOffset`, which must lie inside the file. A FIFO opens once its
    /// other side does; it measures 0, as devices do, and so nothing of it is read.
    /// Null: not a `CVQMFileRequestData`, no path, or the file cannot be opened as wanted.
    void* CreatePipe(CVQMDataStructureObject* pRequest) override;

    /// Moves one step of the transfer that the request's handle stands for; a request without a
    /// handle opens the file first and reads from its start.
    ///
    /// With an open handle the request's callback, data objects and serializer take the place of
    /// the earlier ones, and so does its id unless it is -1; path, command, read unit and the rest
    /// stay as they were when the file was opened. With a handle that is not open the request
    /// fails.
    ///
    /// A write step writes the source object once: serialized, or the bytes of a
    /// `CVQMDataBufferObject`. It does not flush. What is written to a full disk may seem to
    /// succeed and be lost at the close, which is silent: whoever must know compares `GetFileSize`
    /// after `DisconnectPipe` with `GetFileSizeToRead` before it.
    ///
    /// A read step reads up to `nReadUnitSize` bytes (0: the size of the whole file). Raw bytes go
    /// to the destination if it is a `CVQMDataBufferObject`, and to the callback. A document is
    /// collected, and deserialized into the destination by the step that completes it. A file that
    /// has become shorter since it was opened reads as zero bytes where it ends.
    ///
    /// Returns the handle. Null: the step failed; the handle is closed then, except after an error
    /// that was logged as "error ...", which leaves it to the caller's `DisconnectPipe`.
    void* Request(CVQMDataStructureObject* pRequest) override;

    /// Closes the file and forgets the handle, whatever the close says. Null or a handle that is
    /// not open does nothing.
    void DisconnectPipe(void* handle) override;

    /// The size of a file in bytes; 0 if it cannot be examined.
    uVQMINT64 GetFileSize(const char* pFilePath);

    /// Reading: the file's size when it was opened. Writing: the bytes written so far, and on
    /// append the size before them too. 0 for a handle that is not open.
    uVQMINT64 GetFileSizeToRead(void* handle);

    /// How far into the file reading has come, a start offset included; 0 when not reading.
    /// The spelling is the interface.
    uVQMINT64 GetCurretFileReadByNow(void* handle);

    /// Whether reading has come exactly to the file's end. True as well for a handle that is not
    /// open; false for null.
    bool CheckCompleteFileRead(void* handle);

protected:
    /// One open transfer. A copy shares the stream and the buffer with its original: both live as
    /// long as any copy, so that a step outlives the removal of its record.
    struct _PipeInfo {
        void* pFileStream = nullptr; ///< `std::ifstream` or `std::ofstream`; its address is the handle
        bool bAddNewLine = false;
        std::string strDestURI;
        int eRequestCommand = REQUEST_WRITE;
        int nOpenMode = 0; ///< `std::ios_base::openmode`
        int nRequestID = -1;
        uVQMINT64 nReadUnitSize = 0;
        uVQMINT64 nStartOffset = 0;
        uVQMINT64 nFileSize = 0; ///< when opened, and what write steps added
        uVQMINT64 nReadSize = 0; ///< the position after the last read step
        VQMPipeCallback fnCallback;
        CVQMDataObject* pSerializableData = nullptr;
        CVQMDataObject* pDeSerializableData = nullptr;
        IVQMSerialize* pSerializer = nullptr;
        int nUserValue = 0;
        CVQMDataBufferObject* pDataBuffer = nullptr; ///< the text of a serialized transfer

        std::shared_ptr<void> pStreamOwner;                 ///< owns `pFileStream`
        std::shared_ptr<CVQMDataBufferObject> pBufferOwner; ///< owns `pDataBuffer`
    };

    // The table of open transfers. Each operation takes the lock for itself; none is called with
    // the lock held.

    void InitPipeInfo(_PipeInfo& info);
    void CopyPipeInfo(_PipeInfo& from, _PipeInfo& to);
    bool ExistHandle(void* handle);
    void AddPipeInfo(void* handle, _PipeInfo& info);
    void GetPipeInfo(void* handle, _PipeInfo& info);
    void UpdatePipeInfo(void* handle, _PipeInfo& info);
    void DeletePipeInfo(void* handle);

    // The steps. They throw `CVQMException`, also in place of any standard exception.

    void* FOpen(_PipeInfo& info);
    bool FWrite(void* handle);
    bool FRead(void* handle);

    std::map<void*, _PipeInfo> m_pipeInfoMap;
    boost::mutex m_pipeMutex; ///< guards `m_pipeInfoMap`

private:
    template <typename Look>
    void LookAtPipeInfo(void* handle, const Look& look);
    void StoreIfOpen(void* handle, _PipeInfo& info);
    void ForgetDataBuffer(void* handle);

    void DescribeTransfer(const CVQMFileRequestData::_VQMFileRequest& request, _PipeInfo& info);
    int RetargetTransfer(void* handle, const CVQMFileRequestData::_VQMFileRequest& request);
    void OpenForReading(_PipeInfo& info);
    bool TakeDocumentBytes(void* handle, _PipeInfo& info, const char* bytes, uVQMINT64 size);
    bool TakeRawBytes(void* handle, _PipeInfo& info, char* bytes, uVQMINT64 size);

    static void OpenForWriting(_PipeInfo& info, std::ios_base::openmode mode);
    static void CloseStream(const _PipeInfo& info);
    static bool SerializeSource(_PipeInfo& info);
    static void CreateDataBuffer(_PipeInfo& info);
};

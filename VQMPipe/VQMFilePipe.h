#pragma once

#include <array>
#include <cstddef>
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
/// Threads: any number of threads may use one pipe at a time, each with its own handles. A single
/// handle belongs to one thread at a time; any thread may ask for its progress.
class CVQMFilePipe : public IVQMPipe {
public:
    CVQMFilePipe();

    /// Closes every file that is still open; errors of closing are not reported.
    ~CVQMFilePipe() override; // NOLINT(bugprone-exception-escape): a failed lock is fatal here

    /// Opens the file that a `CVQMFileRequestData` describes; its handle field is ignored.
    /// A reader starts at `nStartOffset`, which must lie inside the file. A FIFO opens once its
    /// other end does; like a device it has size 0, so nothing of it is read.
    /// Null: not a `CVQMFileRequestData`, no path, or the file cannot be opened.
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
    /// `CVQMDataBufferObject`. It does not flush: a write to a full disk may seem to succeed and be
    /// lost at the close, which is not reported. To find out, compare `GetFileSize` after
    /// `DisconnectPipe` with `GetFileSizeToRead` before it.
    ///
    /// A read step reads up to `nReadUnitSize` bytes (0: the size of the whole file). Raw bytes go
    /// to the destination if it is a `CVQMDataBufferObject`, and to the callback. A document is
    /// collected, and deserialized into the destination by the step that completes it. A file that
    /// has become shorter since it was opened reads as zero bytes where it ends.
    ///
    /// Steps do not nest: while a step runs, its callback, serializer and data objects may make
    /// requests for every handle but its own. A request for that one fails like a read or write
    /// error of the file, and changes nothing.
    ///
    /// Returns the handle. Null: the step failed; the handle is closed then, except after an error
    /// that was logged as "error ...", which leaves it to the caller's `DisconnectPipe`.
    void* Request(CVQMDataStructureObject* pRequest) override;

    /// Closes the file and forgets the handle; an error of the close is not reported. Null or a
    /// handle that is not open does nothing. The next 16 transfers that the pipe opens get other
    /// handles; a later one may get this value again, and a stale copy of the handle then reads,
    /// writes or closes that transfer.
    void DisconnectPipe(void* handle) override;

    /// The size of a file in bytes; 0 if it cannot be examined.
    uVQMINT64 GetFileSize(const char* pFilePath);

    /// Reading: the file's size when it was opened. Writing: the bytes written so far, and on
    /// append the size before them too. 0 for a handle that is not open.
    uVQMINT64 GetFileSizeToRead(void* handle);

    /// The position of reading in the file, a start offset included; 0 when not reading.
    /// The spelling is the interface.
    uVQMINT64 GetCurretFileReadByNow(void* handle);

    /// Whether reading has reached exactly the file's end. Also true for a handle that is not open;
    /// false for null.
    bool CheckCompleteFileRead(void* handle);

protected:
    /// One open transfer. A copy shares the stream with its original, which lives as long as any
    /// copy, and points to the original's buffer.
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

        /// The text of a serialized transfer; the pipe deletes it with the record, also one that a
        /// derived class made with `new` and stored.
        CVQMDataBufferObject* pDataBuffer = nullptr;

        std::shared_ptr<void> pStreamOwner; ///< owns `pFileStream`, unless a derived class stored its own
    };

    // The table of open transfers. Each operation takes the lock for itself; none is called with
    // the lock held. `handle` is the key; null is logged and does nothing.

    /// Empties the record, except for its path and its open mode.
    void InitPipeInfo(_PipeInfo& info);
    void CopyPipeInfo(_PipeInfo& from, _PipeInfo& to);
    bool ExistHandle(void* handle);

    /// Stores a copy of the record, in the place of one that is there. That one's buffer is not
    /// deleted, because the new record may point to it as well.
    void AddPipeInfo(void* handle, _PipeInfo& info);

    /// Copies the record to `info`, which stays as it is when there is none.
    void GetPipeInfo(void* handle, _PipeInfo& info);

    /// `AddPipeInfo` by another name.
    void UpdatePipeInfo(void* handle, _PipeInfo& info);

    /// Closes the stream and removes the record. What a step in progress uses of it is released
    /// when that step ends.
    void DeletePipeInfo(void* handle);

    // The steps. They throw `CVQMException`, also in place of any standard exception.

    /// Opens the file, completes `info` and stores a copy of it. Returns the handle.
    void* FOpen(_PipeInfo& info);

    /// One write step and one read step with the record as it is. False, logged: the step could
    /// not be made.
    bool FWrite(void* handle);
    bool FRead(void* handle);

    std::map<void*, _PipeInfo> m_pipeInfoMap;
    boost::mutex m_pipeMutex; ///< guards all members

private:
    class _Step;

    template <typename Use>
    void WithPipeInfo(void* handle, const Use& use);
    void Store(void* handle, _PipeInfo& record);

    static void DescribeTransfer(CVQMFileRequestData::_VQMFileRequest& request, _PipeInfo& info);
    void OpenForReading(_PipeInfo& info);
    static void OpenForWriting(_PipeInfo& info, std::ios_base::openmode mode);
    static void CloseStream(const _PipeInfo& info);
    static void ReleaseBuffer(_PipeInfo& info);

    void* MoveStep(void* handle, CVQMFileRequestData::_VQMFileRequest* pRequest);
    bool Write(_Step& step);
    static bool SerializeSource(_Step& step);
    bool Read(_Step& step);
    static uVQMINT64 BytesToCome(const _PipeInfo& info);
    bool TakeDocumentBytes(_Step& step, const char* bytes, uVQMINT64 size);
    bool TakeRawBytes(_Step& step, char* bytes, uVQMINT64 size);

    _Step* m_pSteps = nullptr; ///< the steps in progress

    /// Keeps the memory of the last closed streams, so that no new stream gets their address, which is its
    /// handle.
    std::array<std::weak_ptr<void>, 16> m_closedStreams;
    std::size_t m_nClosedStreams = 0;
};

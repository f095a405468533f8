#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/Descriptors.h"
#include "Tests/VQMPipe/FilePipeTest.h"

constexpr char kNoMemory[] = "std::bad_alloc";
constexpr std::size_t kNever = 1000000;

/// Of so many closed streams a pipe keeps the memory.
constexpr int kKeptStreams = 16;

/// More than a stream keeps to itself.
inline const std::string kLargeText(20000, 'x');

/// A callback that owns something, so that copying it takes memory.
inline VQMPipeCallback LargeCallback()
{
    return [text = kLargeText](int, char*, uVQMINT64, IVQMPipe*, void*) { EXPECT_EQ(text.size(), kLargeText.size()); };
}

/// The fields of a transfer's record that must not change.
struct Remembered {
    explicit Remembered(const OpenPipe::_PipeInfo& record) : info(record), text(TextOf(record.pDataBuffer)) {}

    static std::string TextOf(const CVQMDataBufferObject* buffer)
    {
        return buffer != nullptr ? std::string(buffer->GetData(), static_cast<std::size_t>(buffer->GetDataSize())) : "";
    }

    void ExpectSame(const OpenPipe::_PipeInfo& now) const
    {
        EXPECT_EQ(now.pFileStream, info.pFileStream);
        EXPECT_EQ(now.strDestURI, info.strDestURI);
        EXPECT_EQ(now.nFileSize, info.nFileSize);
        EXPECT_EQ(now.nReadSize, info.nReadSize);
        EXPECT_EQ(now.nRequestID, info.nRequestID);
        EXPECT_EQ(static_cast<bool>(now.fnCallback), static_cast<bool>(info.fnCallback));
        EXPECT_EQ(now.pSerializer, info.pSerializer);
        EXPECT_EQ(now.pDataBuffer, info.pDataBuffer);
        EXPECT_EQ(TextOf(now.pDataBuffer), text);
    }

    OpenPipe::_PipeInfo info;
    std::string text;
};

/// One operation on a third transfer.
struct Operation {
    std::string name;
    std::function<FileRequest()> prepare;  ///< the request, with everything that it needs
    bool create = false;                   ///< `CreatePipe`; else `Request`
    bool succeeds = true;                  ///< with all the memory it wants
    std::function<void(bool done)> verify; ///< what the operation did; `done` is false after a fault
};

class FilePipeMemory : public FilePipe {
protected:
    FilePipeMemory()
    {
        reader_ = RequestFor(REQUEST_READ, MakeFile("bystander to read", "0123456789"));
        reader_.pSerializer = &serializer_;
        reader_.pDeSerializableData = &read_;
        reader_.nReadUnitSize = 4;
        reader_.fnCallback = LargeCallback();
        Opened(reader_);
        EXPECT_NE(Step(reader_), nullptr);

        writer_ = RequestFor(REQUEST_APPEND, MakeFile("bystander to write", "old "));
        writer_.pSerializer = &serializer_;
        writer_.pSerializableData = &written_;
        written_.text = "some text that does not fit into a string object ";
        Opened(writer_);
        EXPECT_NE(Step(writer_), nullptr);
        for (int i = 0; i < kKeptStreams; ++i) { // from here on a stream that is closed takes another's place
            pipe_.DisconnectPipe(Create(RequestFor(REQUEST_READ, reader_.strDestURI)));
        }
        recorder::Clear();
        for (const auto& [handle, info] : pipe_.m_pipeInfoMap) {
            bystanders_.emplace(handle, info);
        }
    }

    void ExpectBystandersUnchanged()
    {
        for (const auto& [handle, before] : bystanders_) {
            ASSERT_EQ(pipe_.m_pipeInfoMap.count(handle), 1U);
            before.ExpectSame(pipe_.m_pipeInfoMap[handle]);
        }
        EXPECT_TRUE(pipe_.m_pipeMutex.try_lock());
        pipe_.m_pipeMutex.unlock();
    }

    void ExpectBystandersWork()
    {
        bystanders_.clear();
        while (!pipe_.CheckCompleteFileRead(reader_.hPipe)) {
            ASSERT_EQ(Step(reader_), reader_.hPipe);
        }
        EXPECT_EQ(read_.text, "0123456789");
        EXPECT_EQ(Step(writer_), writer_.hPipe);
        pipe_.DisconnectPipe(writer_.hPipe);
        EXPECT_EQ(ContentOf(writer_.strDestURI), "old " + written_.text + written_.text);
    }

    /// Runs it with the n-th allocation failing. Whether one did.
    bool RunWithFault(const Operation& operation, std::size_t n, const std::optional<Lines>& whole)
    {
        FileRequest request = operation.prepare();
        auto data = std::make_unique<CVQMFileRequestData>();
        data->SetStructure(&request);
        void* const opened = request.hPipe;
        const std::size_t records = pipe_.m_pipeInfoMap.size();
        recorder::Clear();

        void* result = nullptr;
        allocation_fault::FailNth(n);
        EXPECT_NO_THROW(result = operation.create ? pipe_.CreatePipe(data.get()) : pipe_.Request(data.get()));
        const bool failed = allocation_fault::HasFailed();
        allocation_fault::FailNth(0);

        const Lines lines = recorder::Take();
        const bool cutShort = failed && result == nullptr; // else it did without that memory
        if (cutShort) {
            ExpectCutShort(lines, whole, operation);
        } else {
            EXPECT_EQ(result != nullptr, operation.succeeds);
            EXPECT_EQ(lines, whole.value_or(lines));
            lines_ = lines;
        }
        cutShort_ += cutShort ? 1 : 0;
        if (operation.verify) {
            operation.verify(!cutShort);
        }
        ExpectBystandersUnchanged();
        // A file that a failed request had opened itself is the pipe's until its end.
        EXPECT_LE(pipe_.m_pipeInfoMap.size(), records + (operation.create && cutShort ? 0 : 1));
        if (opened != nullptr && cutShort && operation.succeeds) {
            EXPECT_TRUE(pipe_.ExistHandle(opened)) << "left to the caller";
        }
        for (auto entry = pipe_.m_pipeInfoMap.begin(); entry != pipe_.m_pipeInfoMap.end();) {
            void* const handle = (entry++)->first;
            if (bystanders_.count(handle) == 0) {
                pipe_.DisconnectPipe(handle);
            }
        }
        return failed;
    }

    /// The lines are those of the whole operation up to somewhere, and then what went wrong.
    static void ExpectCutShort(Lines lines, const std::optional<Lines>& whole, const Operation& operation)
    {
        ASSERT_FALSE(lines.empty());
        const std::string function = operation.create ? "CreatePipe" : "Request";
        const std::string error = "CVQMFilePipe::" + function + " - error ";
        if (whole && !whole->empty() && lines.back() == whole->back() && !operation.succeeds) {
            return; // the error that it was to have anyhow
        }
        EXPECT_EQ(lines.back(), Debug(function, error + kNoMemory + " \n"));
        lines.pop_back();
        if (whole) {
            ASSERT_LE(lines.size(), whole->size());
            EXPECT_EQ(lines, Lines(whole->begin(), whole->begin() + static_cast<std::ptrdiff_t>(lines.size())));
        }
    }

    void Exhaust(const Operation& operation)
    {
        SCOPED_TRACE(operation.name);
        EXPECT_FALSE(RunWithFault(operation, kNever, {}));
        const Lines whole = std::exchange(lines_, {});
        cutShort_ = 0;
        const std::size_t descriptors = OpenDescriptors();
        const std::size_t blocks = allocation_fault::BlocksInUse();
        std::size_t n = 1;
        for (bool failed = true; failed; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            ASSERT_LT(n, 1000U);
            failed = RunWithFault(operation, n, whole);
            lines_ = Lines(); // which keeps no memory
            EXPECT_EQ(OpenDescriptors(), descriptors);
            EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
            if (HasFailure()) {
                return; // the first says enough
            }
        }
        EXPECT_GT(cutShort_, 0) << "nothing failed, and so nothing is shown";
    }

    PlainSerializer serializer_;
    Document read_;
    Document written_;
    FileRequest reader_;
    FileRequest writer_;
    std::map<void*, Remembered> bystanders_;
    Lines lines_;      ///< what the last operation that got through has logged
    int cutShort_ = 0; ///< how many did not
};

#include <memory>
#include <optional>

#include "Tests/Platform/AllocationFault.h"
#include "Tests/VQMPipe/FilePipeTest.h"
#include "VQMPipe/VQMTextFile.h"

// Every allocation of every operation fails in turn, until the operation gets through. Two other
// transfers of the same pipe are under way meanwhile.

namespace {

using PipeInfo = OpenPipe::_PipeInfo;

constexpr char kNoMemory[] = "std::bad_alloc";
constexpr std::size_t kNever = 1000000;

/// More than a stream keeps to itself.
const std::string kLargeText(20000, 'x');

/// A callback with something of its own, so that copying it takes memory.
VQMPipeCallback LargeCallback()
{
    return [text = kLargeText](int, char*, uVQMINT64, IVQMPipe*, void*) { EXPECT_EQ(text.size(), kLargeText.size()); };
}

/// What must not change in the record of a transfer.
struct Remembered {
    explicit Remembered(const PipeInfo& record) : info(record), text(TextOf(record.pDataBuffer)) {}

    static std::string TextOf(const CVQMDataBufferObject* buffer)
    {
        return buffer != nullptr ? std::string(buffer->GetData(), static_cast<std::size_t>(buffer->GetDataSize())) : "";
    }

    void ExpectSame(const PipeInfo& now) const
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

    PipeInfo info;
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
        written_.text = "some text that takes memory of its own ";
        Opened(writer_);
        EXPECT_NE(Step(writer_), nullptr);
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

TEST_F(FilePipeMemory, OpeningFailsWholly)
{
    const std::string content = "some content";
    for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
        for (const uVQMINT64 offset : {0ULL, 5ULL}) {
            Exhaust({"open " + std::to_string(command) + " at " + std::to_string(offset),
                     [&] {
                         FileRequest request = RequestFor(command, MakeFile("file", content));
                         request.nStartOffset = offset;
                         request.fnCallback = LargeCallback();
                         return request;
                     },
                     true, true,
                     [&](bool) {
                         const std::string now = ContentOf(Path("file"));
                         EXPECT_TRUE(now == content || (command == REQUEST_WRITE && now.empty())) << now;
                     }});
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, WhatCannotBeOpenedSaysWhyOrThatMemoryIsShort)
{
    MakeFile("short", "0123");
    const struct {
        int command;
        const char* name;
        uVQMINT64 offset;
    } cases[] = {{REQUEST_WRITE, "no/such/file", 0},
                 {REQUEST_READ, "no/such/file", 0},
                 {REQUEST_APPEND, "no/such/file", 0},
                 {REQUEST_READ, "short", 4},
                 {3, "short", 0}};
    for (const auto& test : cases) {
        for (const bool create : {true, false}) {
            if (!create && test.offset != 0) {
                continue; // heeded by `CreatePipe` only
            }
            Exhaust({std::string(create ? "create " : "request ") + test.name + ' ' + std::to_string(test.command),
                     [&] {
                         FileRequest request = RequestFor(test.command, Path(test.name));
                         request.nStartOffset = test.offset;
                         request.fnCallback = LargeCallback();
                         return request;
                     },
                     create,
                     false,
                     {}});
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AReadStepFailsWhollyIntoEachKindOfDestination)
{
    const std::string content(300, 'c');
    const std::string path = MakeFile("file", content);
    CVQMDataBufferObject buffer;
    Document document;
    OtherData other;
    int calls = 0;
    const struct {
        const char* name;
        CVQMDataObject* destination;
        IVQMSerialize* serializer;
    } destinations[] = {{"buffer", &buffer, nullptr},
                        {"none", nullptr, nullptr},
                        {"other", &other, nullptr},
                        {"document", &document, &serializer_}};
    for (const auto& destination : destinations) {
        for (const uVQMINT64 unit : {0ULL, 100ULL}) {
            for (const int earlierSteps : {-1, 0, 1, 2}) { // -1: the request opens the file itself
                if (unit == 0 && earlierSteps > 0) {
                    continue;
                }
                std::string before;
                Exhaust({std::string(destination.name) + " unit " + std::to_string(unit) + " after " +
                             std::to_string(earlierSteps),
                         [&] {
                             FileRequest request = RequestFor(REQUEST_READ, path);
                             request.pDeSerializableData = destination.destination;
                             request.pSerializer = destination.serializer;
                             request.nReadUnitSize = unit;
                             request.fnCallback = [&calls, large = kLargeText](int, char*, uVQMINT64, IVQMPipe*,
                                                                               void*) { ++calls; };
                             buffer = {};
                             document.text = "before";
                             if (earlierSteps >= 0) {
                                 Opened(request);
                             }
                             for (int step = 0; step < earlierSteps; ++step) {
                                 EXPECT_NE(Step(request), nullptr);
                             }
                             before = TextOf(buffer);
                             calls = 0;
                             return request;
                         },
                         false, true,
                         [&](bool done) {
                             const bool complete = unit == 0 || earlierSteps == 2;
                             const bool delivered = destination.serializer == nullptr || complete;
                             EXPECT_EQ(calls, done && delivered ? 1 : 0);
                             if (!done) {
                                 EXPECT_EQ(TextOf(buffer), before);
                                 EXPECT_EQ(document.text, "before");
                             }
                             buffer = {};
                             document.text = {};
                         }});
            }
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AStepWhoseCallbackRunsOutOfMemoryIsNotCounted)
{
    const std::string path = MakeFile("file", std::string(300, 'c'));
    std::string copy;
    FileRequest request;
    Exhaust({"callback",
             [&] {
                 request = RequestFor(REQUEST_READ, path);
                 request.nReadUnitSize = 100;
                 request.fnCallback = [&copy](int, char* data, uVQMINT64 size, IVQMPipe*, void*) {
                     copy.assign(data, static_cast<std::size_t>(size));
                 };
                 Opened(request);
                 copy = std::string();
                 return request;
             },
             false, true,
             [&](bool done) {
                 EXPECT_EQ(pipe_.GetCurretFileReadByNow(request.hPipe), done ? 100U : 0U);
                 EXPECT_EQ(copy.size(), done ? 100U : 0U);
                 copy = std::string();
                 request = FileRequest();
             }});
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AWriteStepWritesAllOrNothing)
{
    CVQMDataBufferObject buffer;
    Document document;
    const struct {
        const char* name;
        CVQMDataObject* source;
        IVQMSerialize* serializer;
    } sources[] = {{"buffer", &buffer, nullptr}, {"document", &document, &serializer_}};
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        for (const auto& source : sources) {
            for (const int earlierSteps : {-1, 0, 1}) {
                std::string before;
                const std::string text = kLargeText + (command == REQUEST_APPEND ? "\r\n" : "");
                Exhaust({std::string(source.name) + " command " + std::to_string(command) + " after " +
                             std::to_string(earlierSteps),
                         [&] {
                             FileRequest request = RequestFor(command, MakeFile("file", "old"));
                             request.pSerializableData = source.source;
                             request.pSerializer = source.serializer;
                             request.bAddNewLine = true;
                             request.fnCallback = LargeCallback();
                             document.text = "a text that takes memory";
                             buffer = {};
                             Fill(buffer, document.text);
                             if (earlierSteps >= 0) {
                                 Opened(request);
                             }
                             for (int step = 0; step < earlierSteps; ++step) {
                                 EXPECT_NE(Step(request), nullptr);
                             }
                             document.text = kLargeText;
                             buffer = {};
                             Fill(buffer, document.text);
                             before = ContentOf(Path("file"));
                             return request;
                         },
                         false, true,
                         [&](bool done) {
                             const std::string now = ContentOf(Path("file"));
                             if (done) {
                                 EXPECT_EQ(now.substr(now.size() - text.size()), text);
                             } else {
                                 EXPECT_TRUE(now == before || (now.empty() && command == REQUEST_WRITE));
                                 EXPECT_EQ(TextOf(buffer), kLargeText) << "no line end is left in it";
                             }
                             document.text = {};
                             buffer = {};
                         }});
            }
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, StepsThatFailSayWhyOrThatMemoryIsShort)
{
    const std::string path = MakeFile("file", "0123456789");
    CVQMDataBufferObject buffer;
    Fill(buffer, kLargeText);
    Document document;
    PlainSerializer refusing;
    refusing.onSerialize = [](CVQMDataBufferObject*) { return false; };
    refusing.onDeserialize = [](const char*) { return false; };
    const struct {
        const char* name;
        int command;
        std::string path;
        CVQMDataObject* data;
        IVQMSerialize* serializer;
    } cases[] = {
        {"a full disk", REQUEST_WRITE, "/dev/full", &buffer, nullptr},
        {"a full disk to append to", REQUEST_APPEND, "/dev/full", &buffer, nullptr},
        {"a directory", REQUEST_READ, std::filesystem::current_path().string(), &buffer, nullptr},
        {"a text that is none", REQUEST_WRITE, Path("out"), &buffer, &serializer_},
        {"no text", REQUEST_WRITE, Path("out"), &document, &refusing},
        {"a document that is none", REQUEST_READ, path, &buffer, &serializer_},
        {"no document", REQUEST_READ, path, &document, &refusing},
    };
    for (const auto& test : cases) {
        Exhaust({test.name,
                 [&] {
                     FileRequest request = RequestFor(test.command, test.path);
                     request.pSerializableData = request.pDeSerializableData = test.data;
                     request.pSerializer = test.serializer;
                     request.nReadUnitSize = 0;
                     Opened(request);
                     if (test.command == REQUEST_READ && pipe_.GetFileSizeToRead(request.hPipe) == 0) {
                         pipe_.m_pipeInfoMap[request.hPipe].nFileSize = 1; // an empty directory
                     }
                     return request;
                 },
                 false,
                 false,
                 {}});
    }
    ExpectBystandersWork();
}

/// Runs `work` with its first allocation failing, if it has any: it must have none.
template <typename Work>
void ExpectNoAllocation(const char* name, const Work& work)
{
    allocation_fault::FailNth(1);
    EXPECT_NO_THROW(work()) << name;
    EXPECT_FALSE(allocation_fault::HasFailed()) << name;
    allocation_fault::FailNth(0);
}

TEST_F(FilePipeMemory, AskingAndClosingTakeNoMemory)
{
    CVQMDataBufferObject buffer;
    Fill(buffer, kLargeText);
    for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
        FileRequest request = RequestFor(command, MakeFile("file", "0123456789"));
        request.nReadUnitSize = 4;
        request.pSerializableData = &buffer;
        request.fnCallback = LargeCallback();
        void* const handle = Opened(request);
        EXPECT_NE(Step(request), nullptr);
        uVQMINT64 size = 99;
        uVQMINT64 position = 99;
        bool complete = true;
        recorder::Clear();
        ExpectNoAllocation("size", [&] { size = pipe_.GetFileSizeToRead(handle); });
        ExpectNoAllocation("position", [&] { position = pipe_.GetCurretFileReadByNow(handle); });
        ExpectNoAllocation("completion", [&] { complete = pipe_.CheckCompleteFileRead(handle); });
        ExpectNoAllocation("existence", [&] { EXPECT_TRUE(pipe_.ExistHandle(handle)); });
        const std::string path = Path("file");
        ExpectNoAllocation("file size", [&] { pipe_.GetFileSize(path.c_str()); });
        EXPECT_EQ(size, command == REQUEST_READ ? 10U : (command == REQUEST_WRITE ? 0U : 10U) + kLargeText.size());
        EXPECT_EQ(position, command == REQUEST_READ ? 4U : 0U);
        EXPECT_FALSE(complete);
        ExpectNoAllocation("close", [&] { pipe_.DisconnectPipe(handle); });
        EXPECT_FALSE(pipe_.ExistHandle(handle));
        EXPECT_EQ(recorder::Take().size(), 1U) << "the size of the file, and nothing else";
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, APipeEndsWithoutMemory)
{
    const std::size_t descriptors = OpenDescriptors();
    const std::size_t blocks = allocation_fault::BlocksInUse();
    {
        CVQMDataBufferObject buffer;
        Fill(buffer, "not written yet");
        Document document;
        document.text = "a text that takes memory";
        Document destination;
        std::optional<CVQMFilePipe> pipe(std::in_place);
        for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
            for (const bool serialized : {false, true}) {
                FileRequest request = RequestFor(command, MakeFile("file" + std::to_string(command), "0123456789"));
                request.nReadUnitSize = 4;
                request.pSerializer = serialized ? &serializer_ : nullptr;
                request.pSerializableData = serialized ? static_cast<CVQMDataObject*>(&document) : &buffer;
                request.pDeSerializableData = &destination;
                request.fnCallback = LargeCallback();
                CVQMFileRequestData data;
                data.SetStructure(&request);
                EXPECT_NE(pipe->Request(&data), nullptr);
            }
        }
        recorder::Clear();
        ExpectNoAllocation("end", [&] { pipe.reset(); });
        EXPECT_EQ(ContentOf(Path("file2")), "0123456789not written yeta text that takes memory");
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
}

// What a request opened and then failed to move cannot be closed by the caller, who has no handle.
TEST_F(FilePipeMemory, AFileThatARequestOpenedAndLeftEndsWithThePipe)
{
    const std::string path = MakeFile("file", "0123456789");
    const std::size_t descriptors = OpenDescriptors();
    const std::size_t blocks = allocation_fault::BlocksInUse();
    std::size_t left = 0;
    {
        OpenPipe pipe;
        bool failed = true;
        for (std::size_t n = 1; failed; ++n) {
            FileRequest request = RequestFor(REQUEST_READ, path);
            CVQMFileRequestData data;
            data.SetStructure(&request);
            allocation_fault::FailNth(n);
            void* const handle = pipe.Request(&data);
            failed = allocation_fault::HasFailed();
            allocation_fault::FailNth(0);
            EXPECT_EQ(handle == nullptr, failed);
        }
        left = pipe.m_pipeInfoMap.size() - 1; // the last one got through
        EXPECT_EQ(OpenDescriptors(), descriptors + left + 1);
        recorder::Clear();
    }
    EXPECT_GT(left, 0U);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
    ExpectBystandersWork();
}

TEST(FileRequestMemory, ARequestIsLoadedAndReadWhollyOrNotAtAll)
{
    int data = 0;
    FileRequest full;
    full.strDestURI = "a path that takes memory of its own";
    full.eRequestCommand = REQUEST_APPEND;
    full.fnCallback = LargeCallback();
    full.hPipe = &data;
    full.nReadUnitSize = 7;
    full.nRequestID = 4;
    FileRequest other;
    other.strDestURI = "x";
    other.eRequestCommand = REQUEST_READ;
    other.nReadUnitSize = 8;
    const auto expectOther = [](const FileRequest& record) {
        EXPECT_EQ(record.strDestURI, "x");
        EXPECT_EQ(record.eRequestCommand, REQUEST_READ);
        EXPECT_FALSE(record.fnCallback);
        EXPECT_EQ(record.hPipe, nullptr);
        EXPECT_EQ(record.nReadUnitSize, 8U);
        EXPECT_EQ(record.nRequestID, -1);
    };
    for (const bool loading : {true, false}) {
        std::size_t n = 1;
        for (bool failed = true; failed; ++n) {
            FileRequest record = other;
            CVQMFileRequestData object;
            object.SetStructure(loading ? &other : &full);
            allocation_fault::FailNth(n);
            try {
                loading ? object.SetStructure(&full) : object.GetSturcture(&record);
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(allocation_fault::HasFailed());
            }
            failed = allocation_fault::HasFailed();
            allocation_fault::FailNth(0);
            if (loading) {
                object.GetSturcture(&record);
            }
            if (failed) {
                expectOther(record);
            } else {
                EXPECT_EQ(record.strDestURI, full.strDestURI);
                EXPECT_TRUE(record.fnCallback);
                EXPECT_EQ(record.nRequestID, 4);
            }
        }
        EXPECT_GT(n, 3U);
    }
}

TEST_F(FilePipeMemory, ATextFileIsReadWholeOrSaysThatItIsNot)
{
    const std::string content(25000, 't');
    const std::string path = MakeFile("file", content);
    const std::size_t descriptors = OpenDescriptors();
    std::map<VQMTextFileResult, int> results;
    int thrown = 0;
    bool failed = true;
    const std::size_t blocks = allocation_fault::BlocksInUse();
    for (std::size_t n = 1; failed; ++n) {
        SCOPED_TRACE(n);
        CVQMDataBufferObject text;
        std::optional<VQMTextFileResult> result;
        allocation_fault::FailNth(n);
        try {
            result = VQMReadTextFile(path, 10240, text);
        } catch (const std::bad_alloc&) {
            ++thrown; // outside the pipe: the callers' callers hear of it
        }
        failed = allocation_fault::HasFailed();
        allocation_fault::FailNth(0);
        const allocation_fault::Spared spared;
        const std::string read = TextOf(text);
        if (result == VQMTextFileResult::Complete) {
            EXPECT_EQ(read, content + '\0');
        } else {
            EXPECT_EQ(content.compare(0, read.size(), read), 0) << "what was read so far, without a zero byte";
        }
        if (result) {
            ++results[*result];
        }
        EXPECT_EQ(OpenDescriptors(), descriptors);
        recorder::Clear();
    }
    EXPECT_GT(results[VQMTextFileResult::NotOpened], 2);
    EXPECT_GT(results[VQMTextFileResult::NotRead], 5);
    EXPECT_GE(results[VQMTextFileResult::Complete], 1);
    EXPECT_GT(thrown, 1);
    results.clear();
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
    ExpectBystandersWork();
}

} // namespace

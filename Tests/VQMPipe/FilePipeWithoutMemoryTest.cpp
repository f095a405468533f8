#include "Tests/VQMPipe/FilePipeMemoryTest.h"
#include "VQMPipe/VQMTextFile.h"

// Operations that need no memory, the state after it ran out, and the pipe's neighbours: the request
// and the reader of text files.

namespace {

/// Runs `work` with its first allocation failing, if it has any: it must have none.
template <typename Work>
void ExpectNoAllocation(const char* name, const Work& work)
{
    allocation_fault::FailNth(1);
    EXPECT_NO_THROW(work()) << name;
    EXPECT_FALSE(allocation_fault::HasFailed()) << name;
    allocation_fault::FailNth(0);
}

TEST_F(FilePipeMemory, QueriesAndDisconnectTakeNoMemory)
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

TEST_F(FilePipeMemory, DestroyingAPipeTakesNoMemory)
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
                const std::string name = (serialized ? "text " : "bytes ") + std::to_string(command);
                FileRequest request = RequestFor(command, MakeFile(name, "0123456789"));
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
        EXPECT_EQ(ContentOf(Path("bytes 0")), "not written yet");
        EXPECT_EQ(ContentOf(Path("text 0")), "a text that takes memory");
        EXPECT_EQ(ContentOf(Path("bytes 2")), "0123456789not written yet");
        EXPECT_EQ(ContentOf(Path("text 2")), "0123456789a text that takes memory");
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
}

// If a request opens a file and its step fails, the caller cannot close the file, because it has no handle.
TEST_F(FilePipeMemory, AFileOpenedByAFailedRequestClosesWithThePipe)
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

TEST(FileRequestMemory, ARequestIsCopiedCompletelyOrNotAtAll)
{
    int data = 0;
    FileRequest full;
    full.strDestURI = "a path that does not fit into a string object";
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

TEST_F(FilePipeMemory, ATextFileIsReadCompletelyOrReportedAsNotRead)
{
    const std::string content(25000, 't');
    const std::string path = MakeFile("file", content);
    const std::size_t descriptors = OpenDescriptors();
    std::map<VQMTextFileResult, int> results;
    int thrown = 0;
    bool failed = true;
    SCOPED_TRACE("allocation"); // the first trace of a thread takes memory for good
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

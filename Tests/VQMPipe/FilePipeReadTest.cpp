#include "Tests/VQMPipe/FilePipeTest.h"

// Reading: what each step reads, counts, delivers and stores.

namespace {

/// The arguments of a callback, the data as text.
struct Call {
    int id;
    std::string data;
    uVQMINT64 size;
    IVQMPipe* pipe;
    void* handle;

    bool operator==(const Call& other) const
    {
        return id == other.id && data == other.data && size == other.size && pipe == other.pipe &&
               handle == other.handle;
    }
};

std::ostream& operator<<(std::ostream& out, const Call& call)
{
    return out << call.id << " '" << call.data << "' " << call.size;
}

VQMPipeCallback Into(std::vector<Call>& calls)
{
    return [&calls](int id, char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle) {
        EXPECT_EQ(data[size], '\0') << "a zero byte ends the step's bytes";
        calls.push_back({id, std::string(data, static_cast<std::size_t>(size)), size, pipe, handle});
    };
}

/// Raw reads.

TEST_F(FilePipe, EachUnitReadsTheWholeFileInItsOwnSteps)
{
    const std::string path = MakeFile("file", std::string("01\0003456789", 10));
    const std::string content = ContentOf(path);
    const struct {
        uVQMINT64 unit;
        std::vector<std::size_t> steps;
    } cases[] = {
        {0, {10}},     {1, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}, {4, {4, 4, 2}}, {5, {5, 5}}, {10, {10}}, {11, {10}},
        {~0ULL, {10}},
    };
    for (const auto& test : cases) {
        std::vector<Call> calls;
        CVQMDataBufferObject destination;
        FileRequest request = RequestFor(REQUEST_READ, path);
        request.nReadUnitSize = test.unit;
        request.nRequestID = 42;
        request.pDeSerializableData = &destination;
        request.fnCallback = Into(calls);
        void* handle = Opened(request);

        std::vector<Call> expected;
        std::size_t position = 0;
        for (const std::size_t step : test.steps) {
            EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle));
            EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), position);
            EXPECT_EQ(Step(request), handle);
            expected.push_back({42, content.substr(position, step), step, &pipe_, handle});
            position += step;
        }
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 10U);
        EXPECT_EQ(calls, expected) << test.unit;
        EXPECT_EQ(TextOf(destination), content);
        EXPECT_EQ(recorder::Take(), Lines()) << "reading is silent";
    }
}

TEST_F(FilePipe, ReadingStartsAtTheOffset)
{
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123456789"));
    request.nReadUnitSize = 3;
    request.nStartOffset = 5;
    request.pDeSerializableData = &destination;
    void* handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(Step(request), handle);
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(TextOf(destination), "56789");
}

TEST_F(FilePipe, TheWholeFileFromAnOffsetNeverCompletes)
{
    std::vector<Call> calls;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123456789"));
    request.nReadUnitSize = 0;
    request.nStartOffset = 7;
    request.fnCallback = Into(calls);
    void* handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(calls, (std::vector<Call>{{-1, "789" + std::string(7, '\0'), 10, &pipe_, handle}}));
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 17U);
    EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 27U);
    EXPECT_EQ(calls.back().data, std::string(10, '\0'));
}

TEST_F(FilePipe, AnEmptyFileOpensAndFailsAtItsFirstStep)
{
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", ""));
    void* handle = Opened(request);
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - the size of file to read is 0 \n")});
    EXPECT_FALSE(pipe_.ExistHandle(handle));
}

TEST_F(FilePipe, AFileThatBecameShorterReadsAsZeroBytes)
{
    const std::string path = MakeFile("file", "0123456789");
    std::vector<Call> calls;
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.nReadUnitSize = 4;
    request.pDeSerializableData = &destination;
    request.fnCallback = Into(calls);
    void* handle = Opened(request);
    std::filesystem::resize_file(path, 6);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Step(request), handle);
    }
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle)) << "a short read counts as a whole one";
    EXPECT_EQ(calls, (std::vector<Call>{{-1, "0123", 4, &pipe_, handle},
                                        {-1, std::string("45\0\0", 4), 4, &pipe_, handle},
                                        {-1, std::string(2, '\0'), 2, &pipe_, handle}}));
    EXPECT_EQ(TextOf(destination), "012345" + std::string(4, '\0'));
}

TEST_F(FilePipe, AFileThatGrewIsReadInItsOldSize)
{
    const std::string path = MakeFile("file", "0123");
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.pDeSerializableData = &destination;
    void* handle = Opened(request);
    std::ofstream(path, std::ios::app) << "4567";
    EXPECT_EQ(Step(request), handle);
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(TextOf(destination), "0123");
}

TEST_F(FilePipe, AStepPastTheEndReadsNothingButCallsBack)
{
    std::vector<Call> calls;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123"));
    request.fnCallback = Into(calls);
    void* handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(calls, (std::vector<Call>{{-1, "0123", 4, &pipe_, handle}, {-1, "", 0, &pipe_, handle}}));
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
}

TEST_F(FilePipe, OnlyABufferTakesRawBytes)
{
    OtherData other;
    Document document;
    for (CVQMDataObject* destination : {static_cast<CVQMDataObject*>(nullptr), static_cast<CVQMDataObject*>(&other),
                                        static_cast<CVQMDataObject*>(&document)}) {
        std::vector<Call> calls;
        FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123"));
        request.pDeSerializableData = destination;
        request.fnCallback = Into(calls);
        void* handle = Opened(request);
        EXPECT_EQ(Step(request), handle) << "anything else is skipped silently";
        EXPECT_EQ(calls, (std::vector<Call>{{-1, "0123", 4, &pipe_, handle}}));
        EXPECT_EQ(recorder::Take(), Lines());
    }
}

TEST_F(FilePipe, TheBytesAreAppendedBeforeTheCallback)
{
    CVQMDataBufferObject destination;
    Fill(destination, "before ");
    std::string seen;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123"));
    request.pDeSerializableData = &destination;
    request.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void*) { seen = TextOf(destination); };
    Opened(request);
    EXPECT_NE(Step(request), nullptr);
    EXPECT_EQ(seen, "before 0123");
}

TEST_F(FilePipe, AReadErrorIsLoggedAndLeavesTheRecord)
{
    FileRequest request = RequestFor(REQUEST_READ, directory_);
    void* handle = Opened(request);
    if (pipe_.GetFileSizeToRead(handle) == 0) {
        pipe_.m_pipeInfoMap[handle].nFileSize = 1; // directories measure 0 on some file systems
    }
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{RequestError("File Read Error : " + directory_)});
    EXPECT_TRUE(pipe_.ExistHandle(handle));
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U);
}

TEST_F(FilePipe, OnlyTheExactErrorStatesAreReadErrors)
{
    const std::string path = MakeFile("file", "0123456789");
    const struct {
        std::ios::iostate state;
        bool fails;
    } cases[] = {
        {std::ios::failbit, true}, // reading sets the failbit again, alone
        {std::ios::eofbit, false},
        {std::ios::badbit, false}, // reading adds the failbit
        {std::ios::failbit | std::ios::eofbit, false},
        {std::ios::badbit | std::ios::failbit, false},
    };
    for (const auto& test : cases) {
        FileRequest request = RequestFor(REQUEST_READ, path);
        request.nReadUnitSize = 4;
        auto* stream = static_cast<std::ifstream*>(Opened(request));
        stream->setstate(test.state);
        if (!test.fails) {
            EXPECT_EQ(Step(request), stream) << test.state;
            EXPECT_EQ(pipe_.GetCurretFileReadByNow(stream), 4U);
            continue;
        }
        try {
            pipe_.FRead(stream);
            ADD_FAILURE() << test.state;
        } catch (const CVQMException& error) {
            EXPECT_EQ(error.GetErrorCode(), 0x100007);
            EXPECT_EQ(error.GetErrorMsg(), "File Read Error : " + path);
        }
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Read Error : " + path)});
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(stream), 0U);
    }
}

TEST_F(FilePipe, AReadLargerThanMemoryIsAnError)
{
    const std::string path = MakeFile("file", "0123");
    for (const uVQMINT64 size : {(1ULL << 63) - 1, ~0ULL}) {
        FileRequest request = RequestFor(REQUEST_READ, path);
        request.nReadUnitSize = 0;
        void* handle = Opened(request);
        pipe_.m_pipeInfoMap[handle].nFileSize = size;
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{RequestError(std::bad_array_new_length().what())});
        EXPECT_TRUE(pipe_.ExistHandle(handle));
    }
}

/// Reads through a serializer.

class FilePipeDocument : public FilePipe {
protected:
    FilePipeDocument()
    {
        request_ = RequestFor(REQUEST_READ, MakeFile("file", "0123456789"));
        request_.pSerializer = &serializer_;
        request_.pDeSerializableData = &document_;
        request_.nRequestID = 42;
        request_.fnCallback = [this](int id, char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle) {
            ++calls_;
            EXPECT_EQ(id, 42);
            EXPECT_EQ(reinterpret_cast<CVQMDataSerializableObject*>(data), &document_);
            EXPECT_EQ(size, 0U);
            EXPECT_EQ(pipe, &pipe_);
            EXPECT_EQ(handle, request_.hPipe);
            EXPECT_EQ(document_.text, "0123456789");
        };
    }

    CVQMDataBufferObject* StoredBuffer() { return pipe_.m_pipeInfoMap[request_.hPipe].pDataBuffer; }

    PlainSerializer serializer_;
    Document document_;
    FileRequest request_;
    int calls_ = 0;
};

TEST_F(FilePipeDocument, IsCollectedAndDeserializedByTheLastStep)
{
    for (const uVQMINT64 unit : {0ULL, 1ULL, 4ULL, 10ULL, 100ULL}) {
        document_.text = "untouched";
        calls_ = 0;
        request_.nReadUnitSize = unit;
        void* handle = Opened(request_);
        while (!pipe_.CheckCompleteFileRead(handle)) {
            EXPECT_EQ(document_.text, "untouched");
            EXPECT_EQ(calls_, 0);
            ASSERT_EQ(Step(request_), handle);
        }
        EXPECT_EQ(document_.text, "0123456789");
        EXPECT_EQ(calls_, 1);
        ASSERT_NE(StoredBuffer(), nullptr);
        EXPECT_EQ(StoredBuffer()->GetDataSize(), 0U) << "cleared, not released";
        EXPECT_EQ(recorder::Take(), Lines());
    }
}

TEST_F(FilePipeDocument, NeedsNoCallback)
{
    request_.fnCallback = nullptr;
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_EQ(document_.text, "0123456789");
}

TEST_F(FilePipeDocument, EndsWithAZeroByte)
{
    uVQMINT64 size = 0;
    serializer_.onDeserialize = [&](const char* data) {
        size = std::string(data).size();
        EXPECT_EQ(data[10], '\0');
        return true;
    };
    request_.fnCallback = nullptr;
    Opened(request_);
    EXPECT_NE(Step(request_), nullptr);
    EXPECT_EQ(size, 10U);
}

TEST_F(FilePipeDocument, IsClearedBeforeTheCallback)
{
    request_.nReadUnitSize = 5;
    uVQMINT64 size = 99;
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void*) { size = StoredBuffer()->GetDataSize(); };
    Opened(request_);
    EXPECT_NE(Step(request_), nullptr);
    EXPECT_EQ(StoredBuffer()->GetDataSize(), 5U);
    EXPECT_NE(Step(request_), nullptr);
    EXPECT_EQ(size, 0U);
}

TEST_F(FilePipeDocument, WithoutADestinationFailsAndCountsNothing)
{
    request_.nReadUnitSize = 4;
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    pipe_.m_pipeInfoMap[handle].pDeSerializableData = nullptr;
    EXPECT_FALSE(pipe_.FRead(handle));
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - pDeSerializableData buffer is null \n")});
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 4U);

    request_.pDeSerializableData = nullptr;
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_FALSE(pipe_.ExistHandle(handle));
}

TEST_F(FilePipeDocument, AWrongDestinationFailsOnlyAtTheLastStep)
{
    CVQMDataBufferObject buffer;
    request_.pDeSerializableData = &buffer;
    request_.nReadUnitSize = 5;
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_EQ(recorder::Take(),
              Lines{Debug("FRead", "CVQMFilePipe::FWrite -  info.pDeSerializableData is not a type of "
                                   "CVQMDataSerializableObject\n")});
    EXPECT_FALSE(pipe_.ExistHandle(handle));
    EXPECT_EQ(calls_, 0);
}

TEST_F(FilePipeDocument, AParseErrorFailsTheStepAndReleasesTheTextOnce)
{
    serializer_.onDeserialize = [](const char*) { return false; };
    for (const uVQMINT64 unit : {0ULL, 4ULL}) { // the buffer is the step's, or stored by an earlier one
        request_.nReadUnitSize = unit;
        void* handle = Opened(request_);
        void* result = handle;
        while (result != nullptr) {
            result = Step(request_);
        }
        EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Deserialize Fail \n")});
        EXPECT_FALSE(pipe_.ExistHandle(handle));
    }
    EXPECT_EQ(calls_, 0);
}

TEST_F(FilePipeDocument, AFailedStepLeavesNoBufferInTheRecord)
{
    OtherData other;
    int buffers = 0;
    for (const bool wrongType : {false, true}) {
        serializer_.onDeserialize = [](const char*) { return false; };
        request_.nReadUnitSize = 5;
        void* handle = Opened(request_);
        pipe_.m_pipeInfoMap[handle].pDataBuffer = new CountedBuffer(buffers);
        EXPECT_EQ(Step(request_), handle);
        EXPECT_EQ(buffers, 1);
        if (wrongType) {
            pipe_.m_pipeInfoMap[handle].pDeSerializableData = &other;
        }
        EXPECT_FALSE(pipe_.FRead(handle));
        EXPECT_EQ(StoredBuffer(), nullptr);
        EXPECT_EQ(buffers, 0);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 5U) << "the step's count is not stored";
        pipe_.DisconnectPipe(handle);
    }
}

TEST_F(FilePipeDocument, AShrunkFileEndsTheDocumentAtItsLastByte)
{
    request_.fnCallback = nullptr;
    Opened(request_);
    std::filesystem::resize_file(Path("file"), 6);
    EXPECT_NE(Step(request_), nullptr);
    EXPECT_EQ(document_.text, "012345");
}

} // namespace

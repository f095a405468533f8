#include "Tests/VQMPipe/FilePipeTest.h"

// Which of the request's fields count, and what a failed step leaves behind.

namespace {

TEST_F(FilePipe, ObjectsThatAreNotRequestsAreLogged)
{
    OtherRequest other;
    EXPECT_EQ(pipe_.Request(nullptr), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("Request", "CVQMFilePipe::Request - prequest is NULL\n")});
    EXPECT_EQ(pipe_.Request(&other), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("Request", "CVQMFilePipe::Request - pFileRequest is NULL\n")});
    EXPECT_EQ(Step(RequestFor(REQUEST_READ, "")), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("Request", "CVQMFilePipe::Request - info.strDestURI is empty\n")});
}

TEST_F(FilePipe, ARequestWithoutAHandleOpensTheFileAndMovesTheFirstStep)
{
    const std::string path = MakeFile("file", "0123456789");
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.pDeSerializableData = &destination;
    request.nReadUnitSize = 4;
    void* handle = Step(request);
    EXPECT_EQ(recorder::Take(),
              (Lines{Debug("FOpen", "CVQMFilePipe::FOpen\n"),
                     Debug("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"), SizeLine(path, 10)}));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 4U);
    EXPECT_EQ(TextOf(destination), "0123");
}

TEST_F(FilePipe, ARequestWithoutAHandleReadsFromTheStart)
{
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123456789"));
    request.pDeSerializableData = &destination;
    request.nStartOffset = 5;
    void* handle = Step(request);
    EXPECT_EQ(TextOf(destination), "0123456789");
    EXPECT_EQ(pipe_.m_pipeInfoMap[handle].nStartOffset, 0U);
    request.nStartOffset = 500; // far behind the end
    EXPECT_NE(Step(request), nullptr);
}

TEST_F(FilePipe, OnAnOpenHandleObjectsAreTheRequestsAndTheRestIsTheRecords)
{
    const std::string path = MakeFile("file", "0123456789");
    std::vector<std::string> heard;
    CVQMDataBufferObject first;
    CVQMDataBufferObject second;
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.nReadUnitSize = 4;
    request.nRequestID = 5;
    request.nUserValue = 6;
    request.pDeSerializableData = &first;
    request.fnCallback = [&](int id, char*, uVQMINT64, IVQMPipe*, void*) {
        heard.push_back("first " + std::to_string(id));
    };
    void* handle = Opened(request);

    request.strDestURI = "/somewhere/else";
    request.eRequestCommand = REQUEST_WRITE;
    request.nReadUnitSize = 1;
    request.nStartOffset = 9;
    request.nUserValue = 60;
    request.bAddNewLine = true;
    request.pDeSerializableData = &second;
    request.fnCallback = [&](int id, char*, uVQMINT64, IVQMPipe*, void*) {
        heard.push_back("second " + std::to_string(id));
    };
    request.nRequestID = 50;
    EXPECT_EQ(Step(request), handle);
    request.nRequestID = -1; // none: keeps the earlier one
    EXPECT_EQ(Step(request), handle);
    request.nRequestID = 0;
    EXPECT_EQ(Step(request), handle);

    EXPECT_EQ(heard, (std::vector<std::string>{"second 50", "second 50", "second 0"}));
    EXPECT_EQ(TextOf(first), "");
    EXPECT_EQ(TextOf(second), "0123456789");
    const OpenPipe::_PipeInfo& info = pipe_.m_pipeInfoMap[handle];
    EXPECT_EQ(info.strDestURI, path);
    EXPECT_EQ(info.eRequestCommand, REQUEST_READ);
    EXPECT_EQ(info.nReadUnitSize, 4U);
    EXPECT_EQ(info.nStartOffset, 0U);
    EXPECT_EQ(info.nUserValue, 6);
    EXPECT_FALSE(info.bAddNewLine);
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipe, NullObjectsOfARequestReplaceTheRecordsToo)
{
    CVQMDataBufferObject destination;
    int calls = 0;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123"));
    request.pDeSerializableData = &destination;
    request.fnCallback = [&calls](int, char*, uVQMINT64, IVQMPipe*, void*) { ++calls; };
    Opened(request);
    request.pDeSerializableData = nullptr;
    request.fnCallback = nullptr;
    EXPECT_NE(Step(request), nullptr);
    EXPECT_EQ(TextOf(destination), "");
    EXPECT_EQ(calls, 0);
}

TEST_F(FilePipe, AHandleThatIsNotOpenFailsByTheRequestsCommand)
{
    int unknown = 0;
    FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
    request.hPipe = &unknown;
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        request.eRequestCommand = command;
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Invalid File Handle \n")});
    }
    request.eRequestCommand = REQUEST_READ;
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Invalid File Handle \n")});
    for (const int command : {3, -1}) {
        request.eRequestCommand = command;
        EXPECT_EQ(Step(request), &unknown) << "nothing is done, the handle comes back";
        EXPECT_EQ(recorder::Take(), Lines{Debug("Request", "CVQMFilePipe::Request - Unsupported Request command\n")});
    }
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
    EXPECT_FALSE(std::filesystem::exists(Path("file")));
}

TEST_F(FilePipe, AnUnsupportedCommandOfAnOpenHandleDoesNothing)
{
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", "0123"));
    void* handle = Opened(request);
    pipe_.m_pipeInfoMap[handle].eRequestCommand = 7;
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(recorder::Take(), Lines{Debug("Request", "CVQMFilePipe::Request - Unsupported Request command\n")});
    EXPECT_TRUE(pipe_.ExistHandle(handle));
}

TEST_F(FilePipe, AFailedStepEndsTheTransferAndNoOther)
{
    FileRequest good = RequestFor(REQUEST_READ, MakeFile("good", "0123"));
    FileRequest bad = RequestFor(REQUEST_WRITE, Path("bad")); // without a source
    Opened(good);
    Opened(bad);
    EXPECT_EQ(Step(bad), nullptr);
    EXPECT_FALSE(pipe_.ExistHandle(bad.hPipe));
    EXPECT_TRUE(pipe_.ExistHandle(good.hPipe));
    EXPECT_EQ(Step(good), good.hPipe);
}

/// A callback whose n-th copy fails.
struct FailingCopy {
    int* copiesLeft;

    explicit FailingCopy(int* left) : copiesLeft(left) {}
    FailingCopy(const FailingCopy& other) : copiesLeft(other.copiesLeft)
    {
        if (--*copiesLeft == 0) {
            throw std::runtime_error("no copy");
        }
    }
    FailingCopy& operator=(const FailingCopy&) = delete;

    void operator()(int /*id*/, char* /*data*/, uVQMINT64 /*size*/, IVQMPipe* /*pipe*/, void* /*handle*/) const {}
};

TEST_F(FilePipe, AFailedCopyOfACallbackLeavesTheTableConsistent)
{
    const std::string path = MakeFile("file", "0123");
    int failures = 0;
    for (int n = 1;; ++n) {
        int copiesLeft = -1;
        FileRequest request = RequestFor(REQUEST_READ, path);
        request.fnCallback = FailingCopy(&copiesLeft);
        CVQMFileRequestData data;
        data.SetStructure(&request);
        const std::size_t before = pipe_.m_pipeInfoMap.size();

        copiesLeft = n;
        recorder::Clear();
        void* handle = pipe_.Request(&data);
        if (handle != nullptr) {
            copiesLeft = -1;
            EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
            break;
        }
        ++failures;
        EXPECT_EQ(recorder::Take().back(), RequestError("no copy")) << n;
        EXPECT_LE(pipe_.m_pipeInfoMap.size(), before + 1) << n;
        EXPECT_TRUE(pipe_.m_pipeMutex.try_lock()) << n;
        pipe_.m_pipeMutex.unlock();
    }
    EXPECT_GT(failures, 2);
}

} // namespace

#include "Tests/VQMPipe/FilePipeTest.h"

#include <algorithm>

// Callbacks and data objects that use the pipe which calls them.

namespace {

class FilePipeCallback : public FilePipe {
protected:
    FilePipeCallback()
    {
        request_ = RequestFor(REQUEST_READ, MakeFile("file", "0123456789"));
        request_.nReadUnitSize = 5;
        request_.pDeSerializableData = &destination_;
        other_ = RequestFor(REQUEST_READ, MakeFile("other", "abc"));
        Opened(other_);
    }

    /// The other transfer and the locks have survived.
    void ExpectSound()
    {
        EXPECT_TRUE(pipe_.m_pipeMutex.try_lock());
        pipe_.m_pipeMutex.unlock();
        EXPECT_EQ(Step(other_), other_.hPipe);
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(other_.hPipe));
    }

    template <typename Error>
    void ThrowFromCallback(Error error)
    {
        request_.fnCallback = [error](int, char*, uVQMINT64, IVQMPipe*, void*) { throw error; };
    }

    CVQMDataBufferObject destination_;
    FileRequest request_;
    FileRequest other_;
};

TEST_F(FilePipeCallback, StandardExceptionsFailTheStepAndKeepTheRecord)
{
    ThrowFromCallback(std::runtime_error("from %s callback"));
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{RequestError("from %s callback")});
    EXPECT_TRUE(pipe_.ExistHandle(handle));
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U) << "the step is not counted";
    try {
        pipe_.FRead(handle);
        ADD_FAILURE();
    } catch (const CVQMException& error) {
        EXPECT_EQ(error.GetErrorCode(), 0x100001);
        EXPECT_EQ(error.GetErrorMsg(), "from %s callback");
    }
    ExpectSound();
}

TEST_F(FilePipeCallback, ThePipesOwnExceptionPassesTheStepUnchanged)
{
    ThrowFromCallback(CVQMException(7, "mine"));
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{RequestError("mine")});
    EXPECT_TRUE(pipe_.ExistHandle(handle));
    ExpectSound();
}

TEST_F(FilePipeCallback, OtherExceptionsPassThroughThePipe)
{
    ThrowFromCallback(42);
    void* handle = Opened(request_);
    EXPECT_THROW(Step(request_), int);
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_TRUE(pipe_.ExistHandle(handle));
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U);
    ExpectSound();
}

TEST_F(FilePipeCallback, OtherExceptionsOfASerializerPassThroughThePipe)
{
    PlainSerializer serializer;
    Document document;
    serializer.onDeserialize = [](const char*) -> bool { throw 42; };
    serializer.onSerialize = [](CVQMDataBufferObject*) -> bool { throw 42; };
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    for (const uVQMINT64 unit : {0ULL, 5ULL}) {
        request_.nReadUnitSize = unit;
        Opened(request_);
        EXPECT_THROW(while (Step(request_) != nullptr){}, int);
    }
    FileRequest write = RequestFor(REQUEST_WRITE, Path("written"));
    write.pSerializer = &serializer;
    write.pSerializableData = &document;
    Opened(write);
    EXPECT_THROW(Step(write), int);
    ExpectSound();
}

TEST_F(FilePipeCallback, MayDisconnectItsOwnHandle)
{
    const std::size_t descriptors = OpenDescriptors();
    std::string seen;
    request_.fnCallback = [&](int, char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle) {
        pipe->DisconnectPipe(handle);
        EXPECT_FALSE(pipe_.ExistHandle(handle));
        // The bytes are the step's, not the record's.
        seen.assign(data, static_cast<std::size_t>(size));
    };
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle) << "the step itself succeeded";
    EXPECT_EQ(seen, "01234");
    EXPECT_FALSE(pipe_.ExistHandle(handle)) << "not stored again";
    EXPECT_EQ(pipe_.m_pipeInfoMap.size(), 1U);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(recorder::Take(), Lines());
    ExpectSound();
}

TEST_F(FilePipeCallback, MayDisconnectAfterADocument)
{
    PlainSerializer serializer;
    Document document;
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    request_.fnCallback = [](int, char* data, uVQMINT64, IVQMPipe* pipe, void* handle) {
        pipe->DisconnectPipe(handle);
        auto* filled = reinterpret_cast<CVQMDataSerializableObject*>(data);
        EXPECT_EQ(static_cast<Document*>(filled)->text, "0123456789");
    };
    for (const uVQMINT64 unit : {0ULL, 5ULL}) {
        request_.nReadUnitSize = unit;
        void* handle = Opened(request_);
        EXPECT_EQ(Step(request_), handle);
        if (unit != 0) {
            EXPECT_EQ(Step(request_), handle);
        }
        EXPECT_FALSE(pipe_.ExistHandle(handle));
    }
    ExpectSound();
}

TEST_F(FilePipeCallback, ADocumentMayDisconnectWhileItIsReadOrWritten)
{
    PlainSerializer serializer;
    Document document;
    void* handle = nullptr;
    serializer.onDeserialize = [&](const char* data) {
        pipe_.DisconnectPipe(handle);
        EXPECT_STREQ(data, "0123456789") << "the text outlives its record";
        return true;
    };
    serializer.onSerialize = [&](CVQMDataBufferObject* buffer) {
        pipe_.DisconnectPipe(handle);
        Fill(*buffer, "text");
        return true;
    };
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_FALSE(pipe_.ExistHandle(handle));

    FileRequest write = RequestFor(REQUEST_APPEND, Path("written"));
    write.pSerializer = &serializer;
    write.pSerializableData = &document;
    handle = Opened(write);
    EXPECT_EQ(Step(write), nullptr) << "the file is closed by the time it is to be written";
    EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : " + Path("written"))});
    EXPECT_FALSE(pipe_.ExistHandle(handle));
    ExpectSound();
}

TEST_F(FilePipeCallback, ADocumentThatFailsMayHaveDisconnected)
{
    PlainSerializer serializer;
    Document document;
    void* handle = nullptr;
    serializer.onDeserialize = [&](const char*) {
        pipe_.DisconnectPipe(handle);
        return false;
    };
    serializer.onSerialize = [&](CVQMDataBufferObject*) {
        pipe_.DisconnectPipe(handle);
        return false;
    };
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    request_.nReadUnitSize = 0;
    handle = Opened(request_);
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Deserialize Fail \n")});

    FileRequest write = RequestFor(REQUEST_WRITE, Path("written"));
    write.pSerializer = &serializer;
    write.pSerializableData = &document;
    handle = Opened(write);
    EXPECT_EQ(Step(write), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Fail to serialize\n")});
    ExpectSound();
}

TEST_F(FilePipeCallback, MayMakeRequestsAndOpenPipes)
{
    std::vector<void*> opened;
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void* handle) {
        EXPECT_EQ(Step(other_), other_.hPipe);
        opened.push_back(Create(RequestFor(REQUEST_READ, Path("other"))));
        EXPECT_NE(opened.back(), nullptr);
        EXPECT_NE(opened.back(), handle);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U) << "stored after the callback";
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 10U);
        EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle));
    };
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 5U);
    EXPECT_EQ(opened.size(), 1U);
}

TEST_F(FilePipeCallback, ANewPipeNeverGetsTheHandleOfAStepInProgress)
{
    std::vector<void*> opened;
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe* pipe, void* handle) {
        pipe->DisconnectPipe(handle);
        for (int i = 0; i < 20; ++i) {
            opened.push_back(Create(RequestFor(REQUEST_READ, Path("file"))));
            EXPECT_NE(opened.back(), handle);
        }
    };
    Opened(request_);
    EXPECT_NE(Step(request_), nullptr);
    for (void* handle : opened) {
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U) << "the step stored itself over a stranger";
    }
}

TEST_F(FilePipeCallback, ARequestForItsOwnHandleIsRefusedAndChangesNothing)
{
    CVQMDataBufferObject other;
    int calls = 0;
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void* handle) {
        ++calls;
        FileRequest nested = request_;
        nested.hPipe = handle;
        nested.pDeSerializableData = &other;
        nested.fnCallback = nullptr;
        nested.nRequestID = 77;
        EXPECT_EQ(Step(nested), nullptr);
        EXPECT_TRUE(pipe_.ExistHandle(handle)) << "as after any error of the file";
        EXPECT_EQ(pipe_.m_pipeInfoMap[handle].nRequestID, -1);
    };
    void* handle = Opened(request_);
    for (const uVQMINT64 position : {5ULL, 10ULL}) {
        EXPECT_EQ(Step(request_), handle);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Read Error : " + request_.strDestURI)});
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), position);
    }
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(TextOf(destination_), "0123456789") << "each byte once";
    EXPECT_EQ(other.GetDataSize(), 0U);
    ExpectSound();
}

TEST_F(FilePipeCallback, ADerivedClassIsRefusedAStepWithinAStepToo)
{
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void* handle) { pipe_.FRead(handle); };
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{RequestError("File Read Error : " + request_.strDestURI)});
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U);
    request_.fnCallback = nullptr;
    pipe_.DisconnectPipe(handle);
    ExpectSound();
}

TEST_F(FilePipeCallback, ASerializerMayNotWriteWithTheHandleThatItWritesFor)
{
    PlainSerializer serializer;
    Document document;
    FileRequest write = RequestFor(REQUEST_APPEND, Path("written"));
    write.pSerializer = &serializer;
    write.pSerializableData = &document;
    serializer.onSerialize = [&](CVQMDataBufferObject* buffer) {
        Fill(*buffer, "once");
        EXPECT_EQ(Step(write), nullptr);
        return true;
    };
    void* handle = Opened(write);
    for (int i = 0; i < 2; ++i) { // with a buffer of the step's own, and with the record's
        EXPECT_EQ(Step(write), handle);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : " + Path("written"))});
    }
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(ContentOf(Path("written")), "onceonce");
    ExpectSound();
}

TEST_F(FilePipeCallback, AHandleThatItHasDisconnectedIsNotOpenToItsRequests)
{
    request_.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe* pipe, void* handle) {
        pipe->DisconnectPipe(handle);
        FileRequest nested = request_;
        nested.hPipe = handle;
        EXPECT_EQ(Step(nested), nullptr);
    };
    void* handle = Opened(request_);
    EXPECT_EQ(Step(request_), handle);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Invalid File Handle \n")});
    ExpectSound();
}

TEST_F(FilePipeCallback, AHandleIsNotGivenOutAgainByTheNextTransfers)
{
    CVQMDataBufferObject stranger;
    std::vector<void*> closed;
    for (int i = 0; i < 100; ++i) {
        FileRequest request = RequestFor(REQUEST_READ, Path("file"));
        request.pDeSerializableData = &stranger;
        void* const handle = Opened(request);
        const std::size_t kept = std::min<std::size_t>(closed.size(), 16);
        for (auto old = closed.end() - static_cast<std::ptrdiff_t>(kept); old != closed.end(); ++old) {
            EXPECT_NE(*old, handle);
            FileRequest late = RequestFor(REQUEST_READ, Path("file"));
            late.hPipe = *old;
            EXPECT_EQ(Step(late), nullptr);
            pipe_.DisconnectPipe(*old);
        }
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U);
        EXPECT_TRUE(pipe_.ExistHandle(handle));
        pipe_.DisconnectPipe(handle);
        closed.push_back(handle);
    }
    EXPECT_EQ(stranger.GetDataSize(), 0U);
    ExpectSound();
}

TEST_F(FilePipeCallback, ABufferOfADerivedClassOutlivesItsRecordUntilTheStepEnds)
{
    PlainSerializer serializer;
    Document document;
    int buffers = 0;
    void* handle = nullptr;
    serializer.onDeserialize = [&](const char* data) {
        pipe_.DisconnectPipe(handle);
        EXPECT_EQ(buffers, 1);
        EXPECT_STREQ(data, "0123456789");
        return document.text.empty();
    };
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    request_.nReadUnitSize = 0;
    for (const char* text : {"", "a step that fails"}) {
        document.text = text;
        handle = Opened(request_);
        pipe_.m_pipeInfoMap[handle].pDataBuffer = new CountedBuffer(buffers);
        Step(request_);
        EXPECT_EQ(buffers, 0);
    }
    ExpectSound();
}

TEST_F(FilePipeCallback, AFailedStepLeavesABufferThatADerivedClassStoredMeanwhile)
{
    PlainSerializer serializer;
    Document document;
    int buffers = 0;
    void* handle = nullptr;
    std::unique_ptr<CVQMDataBufferObject> taken;
    auto* const stored = new CountedBuffer(buffers); // the record's, once it is stored
    serializer.onDeserialize = [&](const char* /*data*/) {
        OpenPipe::_PipeInfo record;
        pipe_.GetPipeInfo(handle, record);
        taken.reset(record.pDataBuffer);
        record.pDataBuffer = stored;
        pipe_.UpdatePipeInfo(handle, record);
        return false;
    };
    request_.pSerializer = &serializer;
    request_.pDeSerializableData = &document;
    request_.nReadUnitSize = 0;
    handle = Opened(request_);
    pipe_.m_pipeInfoMap[handle].pDataBuffer = new CountedBuffer(buffers);
    EXPECT_FALSE(pipe_.FRead(handle));
    EXPECT_EQ(pipe_.m_pipeInfoMap[handle].pDataBuffer, stored);
    EXPECT_EQ(buffers, 2) << "one belongs to the record, one to the derived class";
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(buffers, 1);
    taken.reset();
    EXPECT_EQ(buffers, 0);
    ExpectSound();
}

} // namespace

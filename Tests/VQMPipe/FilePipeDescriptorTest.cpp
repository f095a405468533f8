#include <malloc.h>

#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/ProcessLimits.h"
#include "Tests/VQMPipe/FilePipeTest.h"
#include "VQMPipe/VQMTextFile.h"

// Descriptors: what happens when none is left, and that none is kept.

namespace {

TEST_F(FilePipe, WithoutDescriptorsNothingOpensAndWhatIsOpenGoesOn)
{
    const std::string path = MakeFile("file", "0123456789");
    CVQMDataBufferObject source;
    Fill(source, "text");
    CVQMDataBufferObject destination;
    FileRequest reader = RequestFor(REQUEST_READ, path);
    reader.nReadUnitSize = 5;
    reader.pDeSerializableData = &destination;
    FileRequest writer = RequestFor(REQUEST_WRITE, Path("written"));
    writer.pSerializableData = &source;
    FileRequest appender = RequestFor(REQUEST_APPEND, MakeFile("appended", "old "));
    appender.pSerializableData = &source;
    Opened(reader);
    Opened(writer);
    Opened(appender);

    const std::size_t before = OpenDescriptors();
    {
        const NoDescriptors none;
        for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
            recorder::Clear();
            EXPECT_EQ(Create(RequestFor(command, path)), nullptr);
            EXPECT_EQ(recorder::Take().back(), CreateError(OpenError(command, path)));
            EXPECT_EQ(Step(RequestFor(command, path)), nullptr);
            EXPECT_EQ(recorder::Take().back(), RequestError(OpenError(command, path)));
        }
        EXPECT_EQ(pipe_.m_pipeInfoMap.size(), 3U);
        EXPECT_EQ(pipe_.GetFileSize(path.c_str()), 10U) << "the file is as it was, and measured";
        CVQMDataBufferObject text;
        EXPECT_EQ(VQMReadTextFile(path, 4, text), VQMTextFileResult::NotOpened);

        recorder::Clear();
        EXPECT_EQ(Step(reader), reader.hPipe);
        EXPECT_EQ(Step(writer), writer.hPipe);
        EXPECT_EQ(Step(appender), appender.hPipe);
        EXPECT_EQ(Step(reader), reader.hPipe);
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(reader.hPipe));
        for (void* const handle : {reader.hPipe, writer.hPipe, appender.hPipe}) {
            pipe_.DisconnectPipe(handle);
        }
        EXPECT_EQ(recorder::Take(), Lines());
        EXPECT_NE(Create(RequestFor(REQUEST_READ, path)), nullptr) << "there are descriptors again";
    }
    EXPECT_EQ(TextOf(destination), "0123456789");
    EXPECT_EQ(ContentOf(Path("written")), "text");
    EXPECT_EQ(ContentOf(Path("appended")), "old text");
    EXPECT_EQ(OpenDescriptors(), before - 2) << "three closed, and the one opened last";
}

/// Bytes that the C library has handed out; always 0 under a sanitizer, which has its own.
std::size_t BytesInUse()
{
    return static_cast<std::size_t>(mallinfo2().uordblks);
}

TEST_F(FilePipe, AHundredThousandTransfersLeaveMemoryAndDescriptorsAsTheyWere)
{
    CVQMDataBufferObject buffer;
    Fill(buffer, "0123456789");
    Document document;
    document.text = "0123456789";
    PlainSerializer serializer;
    const std::string path = MakeFile("file", document.text);
    std::vector<FileRequest> requests;
    for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
        for (const bool serialized : {false, true}) {
            // Nothing to wear out a disk with.
            FileRequest request = RequestFor(command, command == REQUEST_READ ? path : "/dev/null");
            request.nReadUnitSize = 5;
            request.pSerializer = serialized ? &serializer : nullptr;
            request.pSerializableData = serialized ? static_cast<CVQMDataObject*>(&document) : &buffer;
            request.pDeSerializableData = serialized ? &document : nullptr;
            request.fnCallback = [text = path](int, char*, uVQMINT64, IVQMPipe*, void*) {};
            requests.push_back(request);
        }
    }
    requests.push_back(RequestFor(REQUEST_READ, Path("missing")));
    requests.push_back(RequestFor(REQUEST_WRITE, directory_));
    requests.push_back(RequestFor(REQUEST_WRITE, "/dev/null")); // with nothing to write

    std::size_t descriptors = 0;
    std::size_t blocks = 0;
    std::size_t bytes = 0;
    for (int i = 0; i < 100000; ++i) {
        const FileRequest& request = requests[static_cast<std::size_t>(i) % requests.size()];
        FileRequest opened = request;
        opened.hPipe = Create(request);
        if (opened.hPipe != nullptr) {
            Step(opened);
            Step(opened);
            pipe_.DisconnectPipe(opened.hPipe);
        }
        opened = FileRequest();
        recorder::Clear();
        if (i == 1000) { // one-time allocations have been made by now
            descriptors = OpenDescriptors();
            blocks = allocation_fault::BlocksInUse();
            bytes = BytesInUse();
        }
    }
    EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
    EXPECT_LT(BytesInUse(), bytes + 65536);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

} // namespace

#include <csignal>
#include <cstdint>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Tests/VQMPipe/FilePipeTest.h"

// Writing: what reaches the file, what is counted, and which failures say what.

namespace {

constexpr char kInvalidSource[] = "CVQMFilePipe::FWrite - Invalid Source buffer \n";

TEST_F(FilePipe, BytesAreWrittenStepByStep)
{
    const std::string path = MakeFile("file", "old");
    const struct {
        int command;
        std::string content;
        uVQMINT64 size;
    } cases[] = {{REQUEST_WRITE, std::string("a\0ba\0b", 6), 6},
                 {REQUEST_APPEND, std::string("a\0ba\0ba\0ba\0b", 12), 12}};
    for (const auto& test : cases) {
        CVQMDataBufferObject source;
        Fill(source, std::string("a\0b", 3));
        FileRequest request = RequestFor(test.command, path);
        request.pSerializableData = &source;
        request.fnCallback = [](int, char*, uVQMINT64, IVQMPipe*, void*) {
            ADD_FAILURE() << "writing calls no callback";
        };
        void* handle = Opened(request);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), test.size);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), 0U);
        pipe_.DisconnectPipe(handle);
        EXPECT_EQ(ContentOf(path), test.content);
        EXPECT_EQ(recorder::Take(), Lines());
    }
}

TEST_F(FilePipe, WritingNothingIsNotAnError)
{
    CVQMDataBufferObject source;
    FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
    request.pSerializableData = &source;
    void* handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 0U);
}

TEST_F(FilePipe, OnlyAppendingAddsLineEnds)
{
    const struct {
        int command;
        bool addNewLine;
        std::string content;
        std::string source;
    } cases[] = {
        {REQUEST_APPEND, true, "text\r\ntext\r\n\r\n", "text\r\n\r\n"}, // the caller's buffer keeps them
        {REQUEST_APPEND, false, "texttext", "text"},
        {REQUEST_WRITE, true, "texttext", "text"},
        {REQUEST_WRITE, false, "texttext", "text"},
    };
    for (const auto& test : cases) {
        const std::string path = MakeFile("file", "");
        CVQMDataBufferObject source;
        Fill(source, "text");
        FileRequest request = RequestFor(test.command, path);
        request.pSerializableData = &source;
        request.bAddNewLine = test.addNewLine;
        void* handle = Opened(request);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), test.content.size());
        pipe_.DisconnectPipe(handle);
        EXPECT_EQ(ContentOf(path), test.content);
        EXPECT_EQ(TextOf(source), test.source);
    }
}

TEST_F(FilePipe, ASourceIsNeededAndMustBeABuffer)
{
    Document document;
    OtherData other;
    for (CVQMDataObject* source : {static_cast<CVQMDataObject*>(nullptr), static_cast<CVQMDataObject*>(&document),
                                   static_cast<CVQMDataObject*>(&other)}) {
        FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
        request.pSerializableData = source;
        void* handle = Opened(request);
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", kInvalidSource)});
        EXPECT_FALSE(pipe_.ExistHandle(handle));
    }
}

TEST_F(FilePipe, SerializedTextIsWrittenAndTheBufferUsedAgain)
{
    PlainSerializer serializer;
    Document document;
    FileRequest request = RequestFor(REQUEST_APPEND, Path("file"));
    request.pSerializer = &serializer;
    request.pSerializableData = &document;
    request.bAddNewLine = true;
    void* handle = Opened(request);

    document.text = "first";
    EXPECT_EQ(Step(request), handle);
    const CVQMDataBufferObject* buffer = pipe_.m_pipeInfoMap[handle].pDataBuffer;
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(TextOf(*buffer), "first\r\n");
    document.text = "second";
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.m_pipeInfoMap[handle].pDataBuffer, buffer);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 15U);
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(ContentOf(Path("file")), "first\r\nsecond\r\n");
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipe, ASerializerNeedsASerializableSource)
{
    PlainSerializer serializer;
    Document document;
    CVQMDataBufferObject raw;
    for (const bool second : {false, true}) { // the buffer is the step's, or stored by an earlier one
        FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
        request.pSerializer = &serializer;
        request.pSerializableData = &document;
        void* handle = Opened(request);
        if (second) {
            EXPECT_EQ(Step(request), handle);
        }
        request.pSerializableData = &raw;
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(),
                  Lines{Debug("FWrite", "CVQMFilePipe::FWrite -  info.pSerializableData is not a type of "
                                        "CVQMDataSerializableObject\n")});
        EXPECT_FALSE(pipe_.ExistHandle(handle));
    }
}

TEST_F(FilePipe, ASerializerThatFailsWritesNothing)
{
    PlainSerializer serializer;
    Document document;
    document.text = "text";
    for (const bool second : {false, true}) {
        FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
        request.pSerializer = &serializer;
        request.pSerializableData = &document;
        void* handle = Opened(request);
        serializer.onSerialize = nullptr;
        if (second) {
            EXPECT_EQ(Step(request), handle);
        }
        serializer.onSerialize = [](CVQMDataBufferObject* buffer) {
            Fill(*buffer, "half");
            return false;
        };
        EXPECT_FALSE(pipe_.FWrite(handle));
        EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Fail to serialize\n")});
        EXPECT_EQ(pipe_.m_pipeInfoMap[handle].pDataBuffer, nullptr) << "released, and not to be released again";
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Fail to serialize\n")});
        EXPECT_FALSE(pipe_.ExistHandle(handle));
        EXPECT_EQ(ContentOf(Path("file")), second ? "text" : "");
    }
}

/// More than a stream keeps to itself.
const std::string kLargeText(1 << 20, 'x');

TEST_F(FilePipe, AFullDiskIsAWriteErrorAndLeavesTheRecord)
{
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        CVQMDataBufferObject source;
        Fill(source, kLargeText);
        FileRequest request = RequestFor(command, "/dev/full");
        request.pSerializableData = &source;
        void* handle = Opened(request);
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : /dev/full")});
        EXPECT_TRUE(pipe_.ExistHandle(handle));
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 0U);
    }
}

TEST_F(FilePipe, AfterAWriteErrorOnlyTheStreamThatThrowsFailsAgain)
{
    CVQMDataBufferObject source;
    Fill(source, kLargeText);
    FileRequest request = RequestFor(REQUEST_WRITE, "/dev/full");
    request.pSerializableData = &source;
    Opened(request);
    EXPECT_EQ(Step(request), nullptr);
    recorder::Clear();
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{RequestError(StreamFailure())});

    // badbit and failbit together are not an error: the comparison is exact.
    FileRequest append = RequestFor(REQUEST_APPEND, "/dev/full");
    append.pSerializableData = &source;
    void* handle = Opened(append);
    EXPECT_EQ(Step(append), nullptr);
    recorder::Clear();
    EXPECT_EQ(Step(append), handle);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), kLargeText.size());
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipe, TheWriteStepThrowsCodesAndMessages)
{
    CVQMDataBufferObject source;
    Fill(source, kLargeText);
    PlainSerializer serializer;
    serializer.onSerialize = [](CVQMDataBufferObject*) -> bool { throw std::runtime_error("no text"); };
    Document document;
    const struct {
        CVQMDataObject* source;
        IVQMSerialize* serializer;
        int code;
        const char* message;
    } cases[] = {{&source, nullptr, 0x100006, "File Write Error : /dev/full"},
                 {&document, &serializer, 0x100001, "no text"}};
    for (const auto& test : cases) {
        FileRequest request = RequestFor(REQUEST_APPEND, "/dev/full");
        request.pSerializableData = test.source;
        request.pSerializer = test.serializer;
        void* handle = Opened(request);
        try {
            pipe_.FWrite(handle);
            ADD_FAILURE() << test.message;
        } catch (const CVQMException& error) {
            EXPECT_EQ(error.GetErrorCode(), test.code);
            EXPECT_EQ(error.GetErrorMsg(), test.message);
        }
    }
}

#if SIZE_MAX > 0xFFFFFFFF // one object larger than 4 GiB takes 64 bits

// Private members of a buffer, for a size that no machine here has the memory for.

template <auto data, auto size, auto capacity>
struct BufferMembers {
    friend void Borrow(CVQMDataBufferObject& buffer, char* bytes, std::size_t count)
    {
        (buffer.*data).reset(bytes);
        buffer.*size = count;
        buffer.*capacity = count;
    }
    friend void GiveBack(CVQMDataBufferObject& buffer)
    {
        (buffer.*data).release();
        buffer.*size = 0;
        buffer.*capacity = 0;
    }
};
template struct BufferMembers<&CVQMDataBufferObject::m_pData, &CVQMDataBufferObject::m_nSize,
                              &CVQMDataBufferObject::m_nCapacity>;
void Borrow(CVQMDataBufferObject& buffer, char* bytes, std::size_t count);
void GiveBack(CVQMDataBufferObject& buffer);

TEST_F(FilePipe, AWriteIsNotCutAt4GiB)
{
    constexpr std::size_t kSize = (1ULL << 32) + 5;
    void* memory = mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    CVQMDataBufferObject source;
    Borrow(source, static_cast<char*>(memory), kSize);

    // A reader that leaves as soon as it has seen more than the five bytes of a cut count.
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);
    std::size_t seen = 0;
    std::thread reader([&] {
        const int fifo = open(Path("fifo").c_str(), O_RDONLY);
        char bytes[6];
        for (ssize_t count = 1; seen < sizeof bytes && count > 0; seen += static_cast<std::size_t>(count)) {
            count = read(fifo, bytes, sizeof bytes - seen);
        }
        close(fifo);
    });
    FileRequest request = RequestFor(REQUEST_WRITE, Path("fifo"));
    request.pSerializableData = &source;
    void* handle = Opened(request);
    EXPECT_EQ(Step(request), nullptr) << "the reader left";
    pipe_.DisconnectPipe(handle);
    reader.join();
    EXPECT_EQ(seen, 6U);

    std::signal(SIGPIPE, SIG_DFL);
    GiveBack(source);
    munmap(memory, kSize);
}

#endif

} // namespace

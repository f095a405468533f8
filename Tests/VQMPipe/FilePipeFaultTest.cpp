#include <csignal>

#include "Tests/Support/ProcessLimits.h"
#include "Tests/Support/WithoutOverride.h"
#include "Tests/VQMPipe/FilePipeTest.h"

// Files that are not what they seem, or do not stay what they were.

namespace {

namespace fs = std::filesystem;

class FilePipeFault : public FilePipe {
protected:
    /// Both ways of opening fail, say why, and leave nothing behind.
    void ExpectNotOpened(int command, const std::string& path)
    {
        SCOPED_TRACE(std::to_string(command) + ' ' + path.substr(0, 80));
        const std::size_t before = OpenDescriptors();
        recorder::Clear();
        EXPECT_EQ(Create(RequestFor(command, path)), nullptr);
        EXPECT_EQ(recorder::Take().back(), CreateError(OpenError(command, path)));
        EXPECT_EQ(Step(RequestFor(command, path)), nullptr);
        EXPECT_EQ(recorder::Take().back(), RequestError(OpenError(command, path)));
        EXPECT_EQ(OpenDescriptors(), before);
        EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
    }

    /// Reads to the end in steps of the request's unit.
    std::string ReadToEnd(FileRequest request)
    {
        CVQMDataBufferObject destination;
        request.pDeSerializableData = &destination;
        while (!pipe_.CheckCompleteFileRead(request.hPipe)) {
            if (Step(request) == nullptr) {
                ADD_FAILURE() << "a step failed";
                break;
            }
        }
        pipe_.DisconnectPipe(request.hPipe);
        return TextOf(destination);
    }
};

TEST_F(FilePipeFault, BrokenPathsOpenForNoCommand)
{
    fs::create_symlink("loop b", Path("loop a"));
    fs::create_symlink("loop a", Path("loop b"));
    fs::create_symlink("nowhere/at/all", Path("dangling"));
    MakeFile("file", "content");
    std::string deep = directory_;
    while (deep.size() < 5000) {
        deep += "/.";
    }
    for (const std::string& path : {Path("loop a"), Path("loop a/file"), Path(std::string(256, 'n')), deep + "/file",
                                    Path("file/below"), Path("missing/file"), Path("dangling")}) {
        for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
            ExpectNotOpened(command, path);
        }
        recorder::Clear();
        EXPECT_EQ(pipe_.GetFileSize(path.c_str()), 0U);
        EXPECT_EQ(recorder::Take(),
                  Lines{Debug("GetFileSize", "CVQMFilePipe::GetFileSize - _stati64 is not valid \n")});
    }
    EXPECT_EQ(ContentOf(Path("file")), "content");
}

TEST_F(FilePipeFault, AnEmptyPathMeasuresLikeAMissingFile)
{
    EXPECT_EQ(pipe_.GetFileSize(""), 0U);
    EXPECT_EQ(recorder::Take(), Lines{Debug("GetFileSize", "CVQMFilePipe::GetFileSize - _stati64 is not valid \n")});
}

TEST_F(FilePipeFault, ADirectoryOpensForReadingOnly)
{
    MakeFile("file", "content");
    ExpectNotOpened(REQUEST_WRITE, directory_);
    ExpectNotOpened(REQUEST_APPEND, directory_);
    EXPECT_NE(Create(RequestFor(REQUEST_READ, directory_)), nullptr);
    EXPECT_EQ(ContentOf(Path("file")), "content");
}

TEST_F(FilePipeFault, WithoutPermissionNothingOpensAndNothingIsLost)
{
    const std::string path = MakeFile("file", "content");
    fs::create_directory(Path("closed"));
    const std::string below = MakeFile("closed/file", "content");
    fs::permissions(path, fs::perms::none);
    fs::permissions(Path("closed"), fs::perms::none);
    {
        const WithoutOverride plainUser;
        for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
            ExpectNotOpened(command, path);
            ExpectNotOpened(command, below);
        }
        EXPECT_EQ(pipe_.GetFileSize(path.c_str()), 7U) << "measuring needs no permission";
        EXPECT_EQ(pipe_.GetFileSize(below.c_str()), 0U);

        fs::permissions(path, fs::perms::owner_read);
        ExpectNotOpened(REQUEST_WRITE, path);
        ExpectNotOpened(REQUEST_APPEND, path);
        FileRequest request = RequestFor(REQUEST_READ, path);
        Opened(request);
        fs::permissions(path, fs::perms::none); // too late for who has it open
        EXPECT_EQ(ReadToEnd(request), "content");
    }
    fs::permissions(Path("closed"), fs::perms::owner_all);
}

TEST_F(FilePipeFault, FilesWithoutASizeAreReadAsEmpty)
{
    for (const std::string path : {"/dev/null", "/dev/zero", "/dev/full", "/proc/self/status"}) {
        SCOPED_TRACE(path);
        FileRequest request = RequestFor(REQUEST_READ, path);
        void* const handle = Opened(request);
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle)) << "0 of 0 bytes";
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - the size of file to read is 0 \n")});
        EXPECT_FALSE(pipe_.ExistHandle(handle));
    }
}

TEST_F(FilePipeFault, BytesWrittenToANullDeviceCount)
{
    CVQMDataBufferObject source;
    Fill(source, std::string(100000, 'x'));
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        FileRequest request = RequestFor(command, "/dev/null");
        request.pSerializableData = &source;
        void* const handle = Opened(request);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 100000U);
    }
}

TEST_F(FilePipeFault, AFileThatIsRemovedOrReplacedIsReadToItsEnd)
{
    const std::string content = "the old content";
    const struct {
        const char* name;
        std::function<void(const std::string&)> change;
    } changes[] = {
        {"removed", [](const std::string& path) { fs::remove(path); }},
        {"renamed", [](const std::string& path) { fs::rename(path, path + ".bak"); }},
        {"replaced", [this](const std::string& path) { fs::rename(MakeFile("new", "something else"), path); }},
        {"made a directory",
         [](const std::string& path) {
             fs::remove(path);
             fs::create_directory(path);
         }},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(change.name);
        for (const bool halfway : {false, true}) {
            fs::remove_all(Path("file"));
            const std::string path = MakeFile("file", content);
            std::string seen;
            FileRequest request = RequestFor(REQUEST_READ, path);
            request.nReadUnitSize = 4;
            Opened(request);
            if (halfway) {
                request.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void* handle) {
                    if (pipe_.GetCurretFileReadByNow(handle) == 0) {
                        change.change(path);
                    }
                };
            } else {
                change.change(path);
            }
            EXPECT_EQ(ReadToEnd(request), content);
        }
    }
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipeFault, AFileThatIsRemovedWhileItIsWrittenTakesItAll)
{
    CVQMDataBufferObject source;
    Fill(source, std::string(100000, 'x'));
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        FileRequest request = RequestFor(command, Path("file"));
        request.pSerializableData = &source;
        void* const handle = Opened(request);
        fs::remove(Path("file"));
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 100000U);
        pipe_.DisconnectPipe(handle);
        EXPECT_FALSE(fs::exists(Path("file")));
        EXPECT_EQ(recorder::Take(), Lines());
    }
}

TEST_F(FilePipeFault, AFileThatGrowsWithEachStepIsReadInItsOldSize)
{
    const std::string path = MakeFile("file", std::string(1000, 'o'));
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.nReadUnitSize = 64;
    request.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void*) {
        std::ofstream(path, std::ios::app) << std::string(100, 'n');
    };
    Opened(request);
    EXPECT_EQ(ReadToEnd(request), std::string(1000, 'o'));
}

TEST_F(FilePipeFault, AFileThatShrinksWithEachStepIsFilledUpWithZeroBytes)
{
    // More than a stream reads ahead.
    const std::string content(100000, 'o');
    const std::string path = MakeFile("file", content);
    FileRequest request = RequestFor(REQUEST_READ, path);
    request.nReadUnitSize = 10000;
    request.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe*, void*) { fs::resize_file(path, 30000); };
    Opened(request);
    EXPECT_EQ(ReadToEnd(request), content.substr(0, 30000) + std::string(70000, '\0'));
    EXPECT_EQ(recorder::Take(), Lines());
}

// With a start offset the file is measured twice, the second time for the record.
class FilePipeBetweenMeasures : public FilePipeFault {
protected:
    /// Opens a file of ten bytes from its sixth on; `change` happens between the measures.
    void* OpenAndChange(FileRequest& request, const std::function<void(const std::string&)>& change)
    {
        const std::string path = MakeFile("file", "0123456789");
        request = RequestFor(REQUEST_READ, path);
        request.nReadUnitSize = 4;
        request.nStartOffset = 5;
        bool changed = false;
        recorder::SetListener([&](const std::string& line) {
            if (!changed && line == SizeLine(path, 10)) {
                changed = true;
                change(path);
            }
        });
        void* const handle = Opened(request);
        recorder::SetListener(nullptr);
        EXPECT_TRUE(changed);
        return handle;
    }
};

TEST_F(FilePipeBetweenMeasures, AFileThatVanishesCountsAsEmpty)
{
    FileRequest request;
    void* const handle = OpenAndChange(request, [](const std::string& path) { fs::remove(path); });
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 0U);
    EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle)) << "5 of 0 bytes";
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - the size of file to read is 0 \n")});
    EXPECT_FALSE(pipe_.ExistHandle(handle));
}

TEST_F(FilePipeBetweenMeasures, AReplacedFileIsReadInTheOldSize)
{
    FileRequest request;
    OpenAndChange(request, [this](const std::string& path) { fs::rename(MakeFile("new", "0123456789abc"), path); });
    EXPECT_EQ(ReadToEnd(request), std::string("56789\0\0\0", 8));
}

TEST_F(FilePipeBetweenMeasures, AFileThatEndsBeforeTheOffsetIsReadAsZeroBytesWithoutAnEnd)
{
    CVQMDataBufferObject destination;
    FileRequest request;
    void* const handle = OpenAndChange(request, [](const std::string& path) { fs::resize_file(path, 3); });
    request.pDeSerializableData = &destination;
    for (const uVQMINT64 position : {9U, 13U, 17U}) {
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), position);
        EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle));
    }
    EXPECT_EQ(TextOf(destination), std::string(12, '\0'));
    EXPECT_EQ(recorder::Take(), Lines());
}

/// Limits of a file's size, and sizes that are large.

class FilePipeLargeFile : public FilePipeFault {};

/// While one exists, no file of this process grows beyond `size`.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : limit_(RLIMIT_FSIZE, size) {}
    ~FileSizeLimit() { std::signal(SIGXFSZ, handler_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
    ProcessLimit limit_;
};

TEST_F(FilePipeLargeFile, AShortWriteIsAnErrorAndLeavesWhatFits)
{
    CVQMDataBufferObject source;
    Fill(source, std::string(1 << 20, 'x'));
    FileRequest other = RequestFor(REQUEST_READ, MakeFile("other", "0123456789"));
    Opened(other);
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        const std::string path = MakeFile("file", "old");
        FileRequest request = RequestFor(command, path);
        request.pSerializableData = &source;
        void* const handle = Opened(request);
        const uVQMINT64 before = pipe_.GetFileSizeToRead(handle);
        {
            const FileSizeLimit limit(100000);
            EXPECT_EQ(Step(request), nullptr);
        }
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : " + path)});
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), before) << "the step is not counted";
        EXPECT_TRUE(pipe_.ExistHandle(handle)) << "left to the caller";
        pipe_.DisconnectPipe(handle);
        EXPECT_EQ(fs::file_size(path), 100000U);
    }
    EXPECT_EQ(ReadToEnd(other), "0123456789");
}

TEST_F(FilePipeLargeFile, BytesLostAtTheCloseShowInTheSizes)
{
    CVQMDataBufferObject source;
    Fill(source, std::string(1000, 'x')); // stays in the stream until the close
    FileRequest request = RequestFor(REQUEST_WRITE, Path("file"));
    request.pSerializableData = &source;
    void* const handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    const uVQMINT64 written = pipe_.GetFileSizeToRead(handle);
    {
        const FileSizeLimit limit(300);
        pipe_.DisconnectPipe(handle);
    }
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_EQ(written, 1000U);
    EXPECT_EQ(pipe_.GetFileSize(Path("file").c_str()), 300U);
}

TEST_F(FilePipeLargeFile, PlacesBeyond4GiBAreReadAndAppendedTo)
{
    constexpr uVQMINT64 kGiB = 1ULL << 30;
    const std::string path = MakeFile("file", "");
    fs::resize_file(path, 5 * kGiB);
    {
        std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(4 * kGiB - 3)) << "across";
        stream.seekp(static_cast<std::streamoff>(5 * kGiB - 4)) << "tail";
    }
    const struct {
        uVQMINT64 offset;
        std::string text;
    } cases[] = {{4 * kGiB - 3, "across"}, {5 * kGiB - 6, std::string("\0\0tail", 6)}};
    for (const auto& test : cases) {
        CVQMDataBufferObject destination;
        FileRequest request = RequestFor(REQUEST_READ, path);
        request.nStartOffset = test.offset;
        request.nReadUnitSize = 3;
        request.pDeSerializableData = &destination;
        void* const handle = Opened(request);
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 5 * kGiB);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(Step(request), handle);
        EXPECT_EQ(TextOf(destination), test.text);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), test.offset + 6);
        EXPECT_EQ(pipe_.CheckCompleteFileRead(handle), test.offset + 6 == 5 * kGiB);
    }

    CVQMDataBufferObject source;
    Fill(source, "more");
    FileRequest request = RequestFor(REQUEST_APPEND, path);
    request.pSerializableData = &source;
    void* const handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 5 * kGiB + 4);
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(pipe_.GetFileSize(path.c_str()), 5 * kGiB + 4);
    FileRequest tail = RequestFor(REQUEST_READ, path);
    tail.nStartOffset = 5 * kGiB - 4;
    Opened(tail);
    EXPECT_EQ(ReadToEnd(tail), "tailmore");
}

} // namespace

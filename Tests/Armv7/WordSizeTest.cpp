#include <fcntl.h>
#include <keygrab.h>
#include <sys/stat.h>

#include "Tests/VQMPipe/FilePipeTest.h"
#include "VQMKeygrab/VQMKeyGrab.h"
#include "VQMPipe/VQMTextFile.h"

// The layouts that other programs rely on, for any size of a pointer.
static_assert(sizeof(GrabKey) == 12);
static_assert(sizeof(GrabKeyList) == 2316);
static_assert(sizeof CVQMKeyGrab::xinfo == 12);
static_assert(sizeof(uVQMINT64) == 8);

namespace {

constexpr uVQMINT64 kGiB = 1ULL << 30;

/// Files that are large in name only.
class LargeFile : public FilePipe {
protected:
    /// Zeros, and `end` as the last bytes of `size`.
    std::string MakeSparse(uVQMINT64 size, const std::string& end) const
    {
        std::string path = Path("large");
        std::ofstream stream(path, std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(size - end.size()));
        stream << end;
        return path;
    }
};

TEST_F(LargeFile, SizeIsReportedIn64Bits)
{
    for (const uVQMINT64 size : {2 * kGiB - 1, 2 * kGiB, 4 * kGiB - 1, 4 * kGiB, 4 * kGiB + 5, 9 * kGiB + 1}) {
        const std::string path = MakeSparse(size, "x");
        recorder::Clear();
        EXPECT_EQ(pipe_.GetFileSize(path.c_str()), size);
        EXPECT_EQ(recorder::Take(), Lines{SizeLine(path, size)});
    }
}

TEST_F(LargeFile, ReadingStartsBeyond4GiB)
{
    const uVQMINT64 size = 5 * kGiB + 7;
    FileRequest request = RequestFor(REQUEST_READ, MakeSparse(size, "the end"));
    CVQMDataBufferObject read;
    request.nStartOffset = size - 7;
    request.nReadUnitSize = 4;
    request.pDeSerializableData = &read;
    void* handle = Opened(request);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), size);

    ASSERT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), size - 3);
    EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle));
    ASSERT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle), size);
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(TextOf(read), "the end");
    pipe_.DisconnectPipe(handle);
}

TEST_F(LargeFile, ReadingCrosses4GiB)
{
    FileRequest request = RequestFor(REQUEST_READ, MakeSparse(4 * kGiB + 3, "before|after"));
    CVQMDataBufferObject read;
    request.nStartOffset = 4 * kGiB + 3 - 12;
    request.nReadUnitSize = 12;
    request.pDeSerializableData = &read;
    void* handle = Opened(request);
    ASSERT_EQ(Step(request), handle);
    EXPECT_EQ(TextOf(read), "before|after");
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    pipe_.DisconnectPipe(handle);
}

TEST_F(LargeFile, AppendingGoesOnBeyond4GiB)
{
    const uVQMINT64 size = 4 * kGiB + 1;
    const std::string path = MakeSparse(size, "x");
    CVQMDataBufferObject added;
    Fill(added, "added");
    FileRequest request = RequestFor(REQUEST_APPEND, path);
    request.pSerializableData = &added;
    void* handle = Opened(request);
    ASSERT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), size + 5);
    pipe_.DisconnectPipe(handle);

    EXPECT_EQ(pipe_.GetFileSize(path.c_str()), size + 5);
    std::ifstream stream(path, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(size - 1));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "xadded");
}

TEST_F(LargeFile, AStepOf4GiBAndMoreIsNotCutToItsLow32Bits)
{
    const std::string path = MakeSparse(3, "abc");
    FileRequest request = RequestFor(REQUEST_READ, path);
    CVQMDataBufferObject read;
    request.nReadUnitSize = 4 * kGiB + 1;
    request.pDeSerializableData = &read;
    void* handle = Opened(request);
    ASSERT_EQ(Step(request), handle);
    EXPECT_EQ(TextOf(read), "abc");
    pipe_.DisconnectPipe(handle);
}

/// Files dated past the day on which 32 bits of seconds end.
class LateFile : public FilePipe, public testing::WithParamInterface<long long> {};

TEST_P(LateFile, IsExaminedReadAndWritten)
{
    const std::string path = MakeFile("late", "content");
    const auto date = [&] {
        struct timespec times[2] = {};
        times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(GetParam());
        return utimensat(AT_FDCWD, path.c_str(), times, 0);
    };
    ASSERT_EQ(date(), 0);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    ASSERT_EQ(status.st_mtime, GetParam()) << "the file system here keeps such a date";

    EXPECT_EQ(pipe_.GetFileSize(path.c_str()), 7U);
    CVQMDataBufferObject text;
    EXPECT_EQ(VQMReadTextFile(path, 3, text), VQMTextFileResult::Complete);
    EXPECT_STREQ(text.GetData(), "content");

    CVQMDataBufferObject added;
    Fill(added, "!");
    FileRequest request = RequestFor(REQUEST_APPEND, path);
    request.pSerializableData = &added;
    ASSERT_EQ(date(), 0);
    void* handle = Opened(request);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 7U);
    EXPECT_EQ(Step(request), handle);
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(ContentOf(path), "content!");
}

// The second after the last of 31 bits, the one after the last of 32, and the year 2200.
INSTANTIATE_TEST_SUITE_P(Dates, LateFile, testing::Values(2147483648LL, 4294967296LL, 7258118400LL));

TEST(Characters, AreComparedAlikeWithAndWithoutSign)
{
    CVQMDataBufferObject object;
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        const std::string text = {'1', '2', static_cast<char>(byte), '3', '\0'};
        int integer = 0;
        uVQMINT64 large = 0;
        double real = 0;
        object.StrToNumber(text.c_str(), integer);
        object.StrToNumber(text.c_str(), large);
        object.StrToNumber(text.c_str(), real);
        EXPECT_EQ(integer, 12) << byte;
        EXPECT_EQ(large, 12U) << byte;
        EXPECT_EQ(real, 12.0) << byte;
    }
}

} // namespace

#include <sys/mount.h>

#include "Tests/VQMPipe/FilePipeTest.h"

// Disks that are full or read-only. Runs in Scripts/sandbox, where it mounts its own.

namespace {

namespace fs = std::filesystem;

/// A disk of 64 KiB below the sandbox's /opt, with room for a few files.
class FilePipeDisk : public FilePipe {
protected:
    FilePipeDisk()
    {
        fs::create_directories(disk_);
        EXPECT_EQ(mount("disk", disk_.c_str(), "tmpfs", 0, "size=64k,nr_inodes=4"), 0) << "run it with Scripts/sandbox";
    }

    ~FilePipeDisk() override { EXPECT_EQ(umount(disk_.c_str()), 0); }

    /// Fills what the disk has left.
    void TakeAllSpace() const
    {
        std::ofstream stream(disk_ + "filler", std::ios::binary);
        while (stream.put('f').flush()) {
        }
    }

    std::string MakeDiskFile(const std::string& content) const
    {
        std::ofstream(disk_ + "file", std::ios::binary) << content;
        return disk_ + "file";
    }

    const std::string disk_ = "/opt/disk/";
};

TEST_F(FilePipeDisk, AWriteThatDoesNotFitIsAnErrorAndLeavesWhatFits)
{
    CVQMDataBufferObject source;
    Fill(source, std::string(1 << 20, 'x'));
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        const std::string path = MakeDiskFile("old");
        FileRequest request = RequestFor(command, path);
        request.pSerializableData = &source;
        void* const handle = Opened(request);
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : " + path)});
        EXPECT_TRUE(pipe_.ExistHandle(handle)) << "left to the caller";
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), command == REQUEST_WRITE ? 0U : 3U) << "the step is not counted";
        pipe_.DisconnectPipe(handle);
        EXPECT_EQ(fs::file_size(path), 65536U);
        EXPECT_EQ(ContentOf(path).substr(0, 3), command == REQUEST_WRITE ? "xxx" : "old");
    }
}

TEST_F(FilePipeDisk, BytesLostAtTheCloseShowInTheSizes)
{
    const std::string path = MakeDiskFile(std::string(4000, 'o'));
    TakeAllSpace();
    CVQMDataBufferObject source;
    Fill(source, std::string(1000, 'x')); // beyond the file's one page, and kept by the stream till the end
    FileRequest request = RequestFor(REQUEST_APPEND, path);
    request.pSerializableData = &source;
    void* const handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    const uVQMINT64 written = pipe_.GetFileSizeToRead(handle);
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_EQ(written, 5000U);
    EXPECT_LT(pipe_.GetFileSize(path.c_str()), written);
    EXPECT_EQ(ContentOf(path).substr(0, 4001), std::string(4000, 'o') + 'x');
}

TEST_F(FilePipeDisk, AFullDiskIsReadAndItsFilesAreEmptied)
{
    const std::string path = MakeDiskFile("content");
    TakeAllSpace();
    CVQMDataBufferObject destination;
    FileRequest reader = RequestFor(REQUEST_READ, path);
    reader.pDeSerializableData = &destination;
    Opened(reader);
    EXPECT_EQ(Step(reader), reader.hPipe);
    EXPECT_EQ(TextOf(destination), "content");
    pipe_.DisconnectPipe(reader.hPipe);

    // Opening to write is what empties it; that makes room.
    CVQMDataBufferObject source;
    Fill(source, "new");
    FileRequest writer = RequestFor(REQUEST_WRITE, path);
    writer.pSerializableData = &source;
    void* const handle = Opened(writer);
    EXPECT_EQ(fs::file_size(path), 0U);
    EXPECT_EQ(Step(writer), handle);
    pipe_.DisconnectPipe(handle);
    EXPECT_EQ(ContentOf(path), "new");
}

TEST_F(FilePipeDisk, WithoutRoomNoFileIsCreated)
{
    for (const char* name : {"a", "b", "c"}) {
        std::ofstream(disk_ + name).close();
    }
    const std::string path = disk_ + "d";
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        EXPECT_EQ(Create(RequestFor(command, path)), nullptr);
        EXPECT_EQ(recorder::Take().back(), CreateError(OpenError(command, path)));
    }
    EXPECT_NE(Create(RequestFor(REQUEST_WRITE, disk_ + "a")), nullptr) << "one that is there";
    pipe_.DisconnectPipe(pipe_.m_pipeInfoMap.begin()->first);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(FilePipeDisk, AReadOnlyDiskIsReadAndNothingElse)
{
    const std::string path = MakeDiskFile("content");
    ASSERT_EQ(mount(nullptr, disk_.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    const std::size_t before = OpenDescriptors();
    for (const std::string& target : {path, disk_ + "new"}) {
        for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
            EXPECT_EQ(Create(RequestFor(command, target)), nullptr);
            EXPECT_EQ(recorder::Take().back(), CreateError(OpenError(command, target)));
            EXPECT_EQ(Step(RequestFor(command, target)), nullptr);
            EXPECT_EQ(recorder::Take().back(), RequestError(OpenError(command, target)));
        }
    }
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
    EXPECT_EQ(ContentOf(path), "content");
    FileRequest reader = RequestFor(REQUEST_READ, path);
    Opened(reader);
    EXPECT_EQ(Step(reader), reader.hPipe);
    pipe_.DisconnectPipe(reader.hPipe);
}

} // namespace

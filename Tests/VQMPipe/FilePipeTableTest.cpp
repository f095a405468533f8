#include <type_traits>

#include "Tests/VQMPipe/FilePipeTest.h"

// The table of open transfers.

namespace {

using PipeInfo = OpenPipe::_PipeInfo;

static_assert(std::is_same_v<decltype(OpenPipe::m_pipeInfoMap), std::map<void*, PipeInfo>>);
static_assert(std::is_same_v<decltype(OpenPipe::m_pipeMutex), boost::mutex>);

class FilePipeTable : public FilePipe {
protected:
    /// A record with a distinct value in each field, except those that own a stream or a buffer.
    PipeInfo FullInfo()
    {
        PipeInfo info;
        info.bAddNewLine = true;
        info.strDestURI = "/some/where";
        info.eRequestCommand = REQUEST_APPEND;
        info.nOpenMode = 0x34;
        info.nRequestID = 12;
        info.nReadUnitSize = 1;
        info.nStartOffset = 2;
        info.nFileSize = 3;
        info.nReadSize = 4;
        info.fnCallback = [](int, char*, uVQMINT64, IVQMPipe*, void*) {};
        info.pSerializableData = &data_;
        info.pDeSerializableData = &data_;
        info.pSerializer = &serializer_;
        info.nUserValue = -77;
        return info;
    }

    static void ExpectEqual(const PipeInfo& left, const PipeInfo& right)
    {
        EXPECT_EQ(left.pFileStream, right.pFileStream);
        EXPECT_EQ(left.bAddNewLine, right.bAddNewLine);
        EXPECT_EQ(left.strDestURI, right.strDestURI);
        EXPECT_EQ(left.eRequestCommand, right.eRequestCommand);
        EXPECT_EQ(left.nOpenMode, right.nOpenMode);
        EXPECT_EQ(left.nRequestID, right.nRequestID);
        EXPECT_EQ(left.nReadUnitSize, right.nReadUnitSize);
        EXPECT_EQ(left.nStartOffset, right.nStartOffset);
        EXPECT_EQ(left.nFileSize, right.nFileSize);
        EXPECT_EQ(left.nReadSize, right.nReadSize);
        EXPECT_EQ(static_cast<bool>(left.fnCallback), static_cast<bool>(right.fnCallback));
        EXPECT_EQ(left.pSerializableData, right.pSerializableData);
        EXPECT_EQ(left.pDeSerializableData, right.pDeSerializableData);
        EXPECT_EQ(left.pSerializer, right.pSerializer);
        EXPECT_EQ(left.nUserValue, right.nUserValue);
        EXPECT_EQ(left.pDataBuffer, right.pDataBuffer);
    }

    OtherData data_;
    PlainSerializer serializer_;
    CVQMDataBufferObject buffer_;
    int buffers_ = 0; ///< the counted ones that exist
    int key_ = 0;
    void* handle_ = &key_;
};

TEST_F(FilePipeTable, AFreshRecordIsEmpty)
{
    PipeInfo expected;
    expected.pFileStream = nullptr;
    expected.bAddNewLine = false;
    expected.eRequestCommand = 0;
    expected.nRequestID = -1;
    expected.nReadUnitSize = expected.nStartOffset = expected.nFileSize = expected.nReadSize = 0;
    PipeInfo info;
    pipe_.InitPipeInfo(info);
    ExpectEqual(info, expected);
    EXPECT_FALSE(info.fnCallback);
    EXPECT_EQ(info.pDataBuffer, nullptr);
}

TEST_F(FilePipeTable, InitLeavesPathAndOpenMode)
{
    PipeInfo info = FullInfo();
    info.pFileStream = &key_;
    info.pDataBuffer = &buffer_;
    pipe_.InitPipeInfo(info);
    PipeInfo expected;
    expected.strDestURI = "/some/where";
    expected.nOpenMode = 0x34;
    ExpectEqual(info, expected);
}

TEST_F(FilePipeTable, ACopyHasEveryField)
{
    PipeInfo info = FullInfo();
    info.pFileStream = &key_;
    info.pDataBuffer = &buffer_;
    PipeInfo copy;
    pipe_.CopyPipeInfo(info, copy);
    ExpectEqual(copy, info);
}

TEST_F(FilePipeTable, NullHandlesAreLoggedByTheOperationThatMetThem)
{
    PipeInfo info = FullInfo();
    const PipeInfo before = info;

    EXPECT_FALSE(pipe_.ExistHandle(nullptr));
    EXPECT_EQ(recorder::Take(), Lines{Debug("ExistHandle", "CVQMFilePipe::ExistHandle - Invalid Handle \n")});
    pipe_.AddPipeInfo(nullptr, info);
    EXPECT_EQ(recorder::Take(), Lines{Debug("AddPipeInfo", "CVQMFilePipe::AddPipeInfo - Invalid Handle \n")});
    pipe_.UpdatePipeInfo(nullptr, info);
    EXPECT_EQ(recorder::Take(), Lines{Debug("AddPipeInfo", "CVQMFilePipe::AddPipeInfo - Invalid Handle \n")});
    pipe_.GetPipeInfo(nullptr, info);
    EXPECT_EQ(recorder::Take(), Lines{Debug("GetPipeInfo", "CVQMFilePipe::GetPipeInfo - Invalid Handle \n")});
    ExpectEqual(info, before);
    EXPECT_FALSE(pipe_.FWrite(nullptr));
    EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Invalid Handle \n")});
    EXPECT_FALSE(pipe_.FRead(nullptr));
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Invalid Handle \n")});
    EXPECT_FALSE(pipe_.CheckCompleteFileRead(nullptr));
    EXPECT_EQ(recorder::Take(),
              Lines{Debug("CheckCompleteFileRead", "CVQMFilePipe::CheckCompleteFileRead - Invalid Handle \n")});
    pipe_.DisconnectPipe(nullptr);
    pipe_.DeletePipeInfo(nullptr);
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

TEST_F(FilePipeTable, ADerivedClassMakesNoStepWithAnUnknownHandle)
{
    int place = 0;
    EXPECT_FALSE(pipe_.FWrite(&place));
    EXPECT_EQ(recorder::Take(), Lines{Debug("FWrite", "CVQMFilePipe::FWrite - Invalid File Handle \n")});
    EXPECT_FALSE(pipe_.FRead(&place));
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - Invalid File Handle \n")});
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

TEST_F(FilePipeTable, UnknownHandlesAreSilent)
{
    PipeInfo info = FullInfo();
    const PipeInfo before = info;
    EXPECT_FALSE(pipe_.ExistHandle(handle_));
    pipe_.GetPipeInfo(handle_, info);
    ExpectEqual(info, before);
    pipe_.DeletePipeInfo(handle_);
    pipe_.DisconnectPipe(handle_);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle_), 0U);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle_), 0U);
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle_)) << "0 of 0 bytes are read";
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipeTable, AddingStoresACopyAndOverwrites)
{
    PipeInfo info = FullInfo();
    pipe_.AddPipeInfo(handle_, info);
    EXPECT_TRUE(pipe_.ExistHandle(handle_));
    info.nReadSize = 99;
    PipeInfo stored;
    pipe_.GetPipeInfo(handle_, stored);
    EXPECT_EQ(stored.nReadSize, 4U);

    pipe_.UpdatePipeInfo(handle_, info);
    pipe_.GetPipeInfo(handle_, stored);
    ExpectEqual(stored, info);
    EXPECT_EQ(pipe_.m_pipeInfoMap.size(), 1U);
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipeTable, SizesComeFromTheRecord)
{
    PipeInfo info = FullInfo();
    info.nFileSize = 1ULL << 40;
    info.nReadSize = 1ULL << 33;
    info.eRequestCommand = REQUEST_READ;
    pipe_.AddPipeInfo(handle_, info);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle_), 1ULL << 40);
    EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle_), 1ULL << 33);
    EXPECT_FALSE(pipe_.CheckCompleteFileRead(handle_));
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        info.eRequestCommand = command;
        info.nReadSize = info.nFileSize;
        pipe_.AddPipeInfo(handle_, info);
        EXPECT_EQ(pipe_.GetCurretFileReadByNow(handle_), 0U);
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle_)) << "the command does not count here";
    }
}

TEST_F(FilePipeTable, TheOpenModeSaysHowAStreamIsClosed)
{
    std::ifstream in(MakeFile("in", "x"));
    std::ofstream out(Path("out"));
    std::ofstream unknown(Path("unknown"));
    PipeInfo info;
    for (const auto& [stream, mode] : {std::pair<void*, int>(&in, 0x0C), {&out, 0x34}, {&unknown, 0x04}}) {
        info.pFileStream = stream;
        info.nOpenMode = mode;
        pipe_.AddPipeInfo(stream, info);
        pipe_.DeletePipeInfo(stream);
        EXPECT_FALSE(pipe_.ExistHandle(stream));
    }
    EXPECT_FALSE(in.is_open());
    EXPECT_FALSE(out.is_open());
    EXPECT_TRUE(unknown.is_open()) << "a mode without direction closes nothing";
}

TEST_F(FilePipeTable, ABufferOfADerivedClassIsReleasedWithItsRecord)
{
    PipeInfo info = FullInfo();
    info.pDataBuffer = new CountedBuffer(buffers_);
    pipe_.AddPipeInfo(handle_, info);
    info.nReadSize = 99;
    pipe_.UpdatePipeInfo(handle_, info);
    pipe_.GetPipeInfo(handle_, info);
    pipe_.InitPipeInfo(info);
    EXPECT_EQ(buffers_, 1);
    PipeInfo copy;
    pipe_.GetPipeInfo(handle_, copy);
    pipe_.DeletePipeInfo(handle_);
    EXPECT_EQ(buffers_, 0) << "a copy does not keep it";
}

TEST_F(FilePipeTable, ABufferTakenFromTheTableBelongsToItsTaker)
{
    PipeInfo info = FullInfo();
    info.pDataBuffer = new CountedBuffer(buffers_);
    pipe_.AddPipeInfo(handle_, info);
    const std::unique_ptr<CVQMDataBufferObject> taken(info.pDataBuffer);
    info.pDataBuffer = nullptr;
    pipe_.UpdatePipeInfo(handle_, info);
    pipe_.DeletePipeInfo(handle_);
    EXPECT_EQ(buffers_, 1);
}

TEST_F(FilePipeTable, TheDestructorClosesEveryFileAndReleasesEveryBuffer)
{
    std::ofstream first(Path("first"));
    std::ofstream second(Path("second"));
    {
        OpenPipe pipe;
        PipeInfo info = FullInfo();
        info.pDataBuffer = new CountedBuffer(buffers_);
        pipe.AddPipeInfo(handle_, info); // without a stream
        for (std::ofstream* stream : {&first, &second}) {
            info.pFileStream = stream;
            info.pDataBuffer = new CountedBuffer(buffers_);
            pipe.AddPipeInfo(stream, info);
        }
        EXPECT_EQ(buffers_, 3);
    }
    EXPECT_FALSE(first.is_open());
    EXPECT_FALSE(second.is_open());
    EXPECT_EQ(buffers_, 0);
    EXPECT_EQ(recorder::Take(), Lines());
}

/// A callback that owns something whose destruction uses the pipe.
struct UsesPipeAtItsEnd {
    CVQMFilePipe* pipe;
    void* handle;
    int* ends;

    ~UsesPipeAtItsEnd()
    {
        pipe->CheckCompleteFileRead(handle);
        ++*ends;
    }
};

TEST_F(FilePipeTable, WhatACallbackOwnsIsReleasedWithoutTheLock)
{
    int ends = 0;
    const auto callback = [&] {
        const std::shared_ptr<UsesPipeAtItsEnd> owned(new UsesPipeAtItsEnd{&pipe_, handle_, &ends});
        return [owned](int, char*, uVQMINT64, IVQMPipe*, void*) {};
    };
    PipeInfo info;
    info.fnCallback = callback();
    pipe_.AddPipeInfo(handle_, info);
    info.fnCallback = callback();
    EXPECT_EQ(ends, 0) << "the record still has the first";
    pipe_.AddPipeInfo(handle_, info);
    EXPECT_EQ(ends, 1) << "replaced";
    info.fnCallback = nullptr;
    pipe_.DeletePipeInfo(handle_);
    EXPECT_EQ(ends, 2) << "deleted";
}

} // namespace

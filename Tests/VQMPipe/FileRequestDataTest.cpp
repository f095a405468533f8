#include "Tests/VQMPipe/FilePipeTest.h"

namespace {

struct OpenRequestData : CVQMFileRequestData {
    using CVQMFileRequestData::m_stRequest;
};

/// A record with a distinct value in each field.
FileRequest FullRequest(CVQMDataObject* source, CVQMDataObject* destination, IVQMSerialize* serializer, void* handle)
{
    FileRequest request;
    request.strDestURI = "/some/where";
    request.eRequestCommand = REQUEST_APPEND;
    request.fnCallback = [](int, char*, uVQMINT64, IVQMPipe*, void*) {};
    request.pSerializableData = source;
    request.pDeSerializableData = destination;
    request.pSerializer = serializer;
    request.hPipe = handle;
    request.nReadUnitSize = 1ULL << 40;
    request.nStartOffset = 1ULL << 41;
    request.nUserValue = -77;
    request.bAddNewLine = true;
    request.nRequestID = 12;
    return request;
}

void ExpectEqual(const FileRequest& left, const FileRequest& right)
{
    EXPECT_EQ(left.strDestURI, right.strDestURI);
    EXPECT_EQ(left.eRequestCommand, right.eRequestCommand);
    EXPECT_EQ(static_cast<bool>(left.fnCallback), static_cast<bool>(right.fnCallback));
    EXPECT_EQ(left.pSerializableData, right.pSerializableData);
    EXPECT_EQ(left.pDeSerializableData, right.pDeSerializableData);
    EXPECT_EQ(left.pSerializer, right.pSerializer);
    EXPECT_EQ(left.hPipe, right.hPipe);
    EXPECT_EQ(left.nReadUnitSize, right.nReadUnitSize);
    EXPECT_EQ(left.nStartOffset, right.nStartOffset);
    EXPECT_EQ(left.nUserValue, right.nUserValue);
    EXPECT_EQ(left.bAddNewLine, right.bAddNewLine);
    EXPECT_EQ(left.nRequestID, right.nRequestID);
}

class FileRequestData : public testing::Test {
protected:
    FileRequestData() { recorder::Clear(); }

    OtherData source_;
    OtherData destination_;
    PlainSerializer serializer_;
    int handle_ = 0;
    FileRequest full_ = FullRequest(&source_, &destination_, &serializer_, &handle_);
};

TEST_F(FileRequestData, APlainRecordReadsInUnitsOf10240Bytes)
{
    FileRequest expected;
    expected.strDestURI = "";
    expected.eRequestCommand = 0;
    expected.nReadUnitSize = 10240;
    expected.nRequestID = -1;
    ExpectEqual(FileRequest(), expected);
    EXPECT_FALSE(FileRequest().fnCallback);
}

TEST_F(FileRequestData, AnUnloadedObjectRequestsTheWholeFile)
{
    FileRequest expected;
    expected.nReadUnitSize = 0;
    FileRequest out = full_;
    CVQMFileRequestData().GetSturcture(&out);
    ExpectEqual(out, expected);
}

TEST_F(FileRequestData, LoadingAndReadingBackKeepsEveryField)
{
    CVQMFileRequestData data;
    data.SetStructure(&full_);
    FileRequest out;
    data.GetSturcture(&out);
    ExpectEqual(out, full_);

    CVQMFileRequestData other;
    other.SetData(&full_);
    FileRequest direct;
    other.GetData(&direct);
    ExpectEqual(direct, full_);
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FileRequestData, TheCallbackIsCopiedNotMoved)
{
    int calls = 0;
    full_.fnCallback = [&calls](int, char*, uVQMINT64, IVQMPipe*, void*) { ++calls; };
    CVQMFileRequestData data;
    data.SetData(&full_);
    FileRequest first;
    FileRequest second;
    data.GetData(&first);
    data.GetData(&second);
    for (const FileRequest* request : {&full_, &first, &second}) {
        ASSERT_TRUE(request->fnCallback);
        request->fnCallback(0, nullptr, 0, nullptr, nullptr);
    }
    EXPECT_EQ(calls, 3);
}

TEST_F(FileRequestData, InitEmptiesEverythingButTheCommand)
{
    CVQMFileRequestData data;
    data.SetData(&full_);
    data.Init();
    FileRequest expected;
    expected.eRequestCommand = REQUEST_APPEND;
    expected.nReadUnitSize = 0;
    FileRequest out = full_;
    data.GetData(&out);
    ExpectEqual(out, expected);
}

TEST_F(FileRequestData, NullPointersChangeNothingAndAreLogged)
{
    const recorder::LogOf log("Quillmere", "VQMFilePipe.cpp");
    OpenRequestData data;
    data.SetData(&full_);

    data.SetData(nullptr);
    EXPECT_EQ(recorder::Take(), Lines{log.Debug("SetData", "CVQMFileRequestData::SetData  - pData point is null \n")});
    data.GetData(nullptr);
    EXPECT_EQ(recorder::Take(), Lines{log.Error("GetData", "CVQMFileRequestData::GetData  - pData point is null \n")});
    data.SetStructure(nullptr);
    EXPECT_EQ(recorder::Take(),
              Lines{log.Debug("SetStructure", "CVQMFileRequestData::SetStructure  - structure point is null \n")});
    data.GetSturcture(nullptr);
    EXPECT_EQ(recorder::Take(),
              Lines{log.Debug("GetSturcture", "CVQMFileRequestData::GetSturcture  - structure point is null \n")});
    ExpectEqual(data.m_stRequest, full_);
}

TEST_F(FileRequestData, TheRecordMayBeLoadedFromItself)
{
    OpenRequestData data;
    data.SetData(&full_);
    data.SetData(&data.m_stRequest);
    ExpectEqual(data.m_stRequest, full_);
}

} // namespace

#include <fstream>
#include <functional>
#include <memory>

#include <vconf.h>

#include "Data/VQMDataConstants.h"
#include "Data/VQMScheduleContainer.h"
#include "Tests/Common/NumberedSchedule.h"
#include "Tests/Common/StoredDemo.h"
#include "Tests/Support/LockWatch.h"
#include "Tests/Support/RecordingSettings.h"
#include "Tests/VQMPipe/FilePipeTest.h"

// No operation ever holds two locks, and none runs other people's code with one: so no two users
// of the library can wait for each other.

namespace {

void OnChange(keynode_t* /*node*/, void* /*userData*/) {}

void* const kCallback = reinterpret_cast<void*>(OnChange);

void ExpectNoneHeld(const char* where)
{
    EXPECT_EQ(locks::Held(), 0) << where;
}

struct Operation {
    const char* name;
    std::function<void()> run;
};

class OneLock : public StoredDemo {
protected:
    void SetUp() override
    {
        StoredDemo::SetUp();
        recording::settings() = {};
        StoreSchedule(NumberedSchedule(1000));
        std::ofstream(file_) << "0123456789";
        std::ofstream(constants_) << "<c><Data key='ScheduleFile' value='schedule.xml'/></c>";
    }

    void* Create(FileRequest request)
    {
        data_.SetStructure(&request);
        return pipe_->CreatePipe(&data_);
    }

    void* Step(FileRequest request)
    {
        data_.SetStructure(&request);
        return pipe_->Request(&data_);
    }

    FileRequest RequestFor(int command) const
    {
        FileRequest request;
        request.strDestURI = file_;
        request.eRequestCommand = command;
        request.nReadUnitSize = 5;
        return request;
    }

    /// A request whose every foreign part looks at the locks.
    FileRequest Watching(int command)
    {
        FileRequest request = RequestFor(command);
        request.pSerializer = &serializer_;
        request.pSerializableData = &document_;
        request.pDeSerializableData = &document_;
        request.fnCallback = [released = Released()](int, char*, uVQMINT64, IVQMPipe*, void*) {
            ExpectNoneHeld("callback");
        };
        serializer_.onSerialize = [](CVQMDataBufferObject* buffer) {
            ExpectNoneHeld("Serialize");
            buffer->InsertData("text", 4);
            return true;
        };
        serializer_.onDeserialize = [](const char*) {
            ExpectNoneHeld("Deserialize");
            return true;
        };
        return request;
    }

    /// An object that a callback owns: released with the callback's last copy.
    std::shared_ptr<int> Released()
    {
        return {new int, [this](const int* number) {
                    ExpectNoneHeld("what a callback owns");
                    ++released_;
                    delete number;
                }};
    }

    static void ExpectAtMostOne(const std::vector<Operation>& operations)
    {
        for (const Operation& operation : operations) {
            locks::Reset();
            operation.run();
            EXPECT_LE(locks::MostHeld(), 1) << operation.name;
            EXPECT_EQ(locks::Held(), 0) << operation.name;
        }
    }

    const std::string file_ = kMediaDirectory + "file";
    const std::string constants_ = kMediaDirectory + "constants.xml";
    int released_ = 0;
    Document document_;
    PlainSerializer serializer_;
    CVQMDataBufferObject buffer_;
    CVQMFileRequestData data_;
    boost::mutex otherMutex_;
    std::unique_ptr<OpenPipe> pipe_ = std::make_unique<OpenPipe>();
};

TEST_F(OneLock, TheWatchSeesTheLibrarysLocks)
{
    const Operation locking[] = {
        {"GetInstance", [] { CVQMSyncDemoMonitor::GetInstance(); }},
        {"GetCurrentPolicy", [this] { Current(); }},
        {"ExistHandle", [this] { pipe_->ExistHandle(this); }},
    };
    for (const Operation& operation : locking) {
        locks::Reset();
        operation.run();
        EXPECT_EQ(locks::MostHeld(), 1) << operation.name;
        {
            const boost::mutex::scoped_lock lock(otherMutex_);
            operation.run();
        }
        EXPECT_EQ(locks::MostHeld(), 2) << operation.name << " under another lock";
    }
}

TEST_F(OneLock, OperationsOfTheMonitorHoldAtMostOneLock)
{
    const std::string schedule = kScheduleDirectory + "schedule.xml";
    recording::settings().onGet = [] { ExpectNoneHeld("the store"); };
    _VQMPolicy policy;
    std::string path;
    ExpectAtMostOne({
        {"DestroyInstance", [] { CVQMSyncDemoMonitor::DestroyInstance(); }},
        {"DestroyInstance without one", [] { CVQMSyncDemoMonitor::DestroyInstance(); }},
        {"GetInstance", [this] { monitor_ = CVQMSyncDemoMonitor::GetInstance(); }},
        {"GetInstance again", [] { CVQMSyncDemoMonitor::GetInstance(); }},
        {"CheckSyncDemoEnbaled", [] { CVQMSyncDemoMonitor::CheckSyncDemoEnbaled(); }},
        {"SetSyncDemoVocnf", [] { CVQMSyncDemoMonitor::SetSyncDemoVocnf(true); }},
        {"SetVconfCallBack", [] { CVQMSyncDemoMonitor::SetVconfCallBack(kCallback, nullptr); }},
        {"UnSetVconfCallBack", [] { CVQMSyncDemoMonitor::UnSetVconfCallBack(kCallback); }},
        {"Initialize", [this] { EXPECT_TRUE(CVQMDataConstants::Initialize(constants_)); }},
        {"Create", [this] { EXPECT_TRUE(monitor_->Create()); }},
        {"Create again", [this] { EXPECT_TRUE(monitor_->Create()); }},
        {"CheckContents", [this] { monitor_->CheckContents(); }},
        {"ParseStoredSchedule", [&] { EXPECT_TRUE(monitor_->ParseStoredSchedule(schedule, &policy)); }},
        {"ParseStoredSchedule, stored", [&] { EXPECT_TRUE(monitor_->ParseStoredSchedule(schedule, nullptr)); }},
        {"ParseStoredSchedule, no path", [this] { EXPECT_FALSE(monitor_->ParseStoredSchedule("", nullptr)); }},
        {"GetCurrentPolicy", [&] { monitor_->GetCurrentPolicy(policy); }},
        {"TakeCurrentPolicy", [&] { monitor_->TakeCurrentPolicy(policy); }},
        {"ClearCurrentPlolicy", [this] { monitor_->ClearCurrentPlolicy(); }},
        {"GetSyncDemoMediaPath", [&] { monitor_->GetSyncDemoMediaPath(path); }},
        {"GetSyncDemoSchedulePath", [&] { monitor_->GetSyncDemoSchedulePath(path); }},
        {"CheckHaveSchedule", [this] { EXPECT_TRUE(monitor_->CheckHaveSchedule()); }},
        {"CheckHaveContents", [this] { EXPECT_TRUE(monitor_->CheckHaveContents()); }},
        {"a content that is missing",
         [this] {
             StoreSchedule("<rsp>" + ScheduleElement({{"missing", "x", 1}}) + "</rsp>");
             monitor_->CheckContents();
             EXPECT_FALSE(monitor_->CheckHaveContents());
         }},
        {"a schedule that does not parse",
         [this] {
             StoreSchedule("<rsp>");
             monitor_->CheckContents();
             EXPECT_FALSE(monitor_->CheckHaveSchedule());
         }},
        {"a schedule that cannot be examined",
         [this] {
             OpenConstants::m_DataCache["ScheduleFile"] = std::string(300, 'n');
             EXPECT_THROW(monitor_->CheckContents(), std::exception);
         }},
    });
}

TEST_F(OneLock, OperationsOfThePipeHoldAtMostOneLock)
{
    CVQMFileRequestData empty;
    FileRequest read = RequestFor(REQUEST_READ);
    read.pDeSerializableData = &buffer_;
    FileRequest write = RequestFor(REQUEST_WRITE);
    write.pSerializableData = &buffer_;
    FileRequest append = RequestFor(REQUEST_APPEND);
    append.pSerializableData = &buffer_;
    append.bAddNewLine = true;
    OpenPipe::_PipeInfo info;
    ExpectAtMostOne({
        {"CreatePipe, read", [&] { EXPECT_NE(read.hPipe = Create(read), nullptr); }},
        {"Request, read", [&] { EXPECT_EQ(Step(read), read.hPipe); }},
        {"Request, read to the end", [&] { EXPECT_EQ(Step(read), read.hPipe); }},
        {"CheckCompleteFileRead", [&] { EXPECT_TRUE(pipe_->CheckCompleteFileRead(read.hPipe)); }},
        {"GetCurretFileReadByNow", [&] { EXPECT_EQ(pipe_->GetCurretFileReadByNow(read.hPipe), 10U); }},
        {"GetFileSizeToRead", [&] { EXPECT_EQ(pipe_->GetFileSizeToRead(read.hPipe), 10U); }},
        {"GetFileSize", [this] { EXPECT_EQ(pipe_->GetFileSize(file_.c_str()), 10U); }},
        {"DisconnectPipe", [&] { pipe_->DisconnectPipe(read.hPipe); }},
        {"DisconnectPipe again", [&] { pipe_->DisconnectPipe(read.hPipe); }},
        {"Request, a handle that is closed", [&] { EXPECT_EQ(Step(read), nullptr); }},
        {"Request opens", [&] { EXPECT_NE(Step(write), nullptr); }},
        {"CreatePipe, append", [&] { EXPECT_NE(append.hPipe = Create(append), nullptr); }},
        {"Request, append", [&] { EXPECT_EQ(Step(append), append.hPipe); }},
        {"Request, nothing to write",
         [&] {
             append.pSerializableData = nullptr;
             EXPECT_EQ(Step(append), nullptr);
         }},
        {"CreatePipe, no path", [this, &empty] { EXPECT_EQ(pipe_->CreatePipe(&empty), nullptr); }},
        {"Request, no path", [this, &empty] { EXPECT_EQ(pipe_->Request(&empty), nullptr); }},
        {"CreatePipe, null", [this] { EXPECT_EQ(pipe_->CreatePipe(nullptr), nullptr); }},
        {"Request, null", [this] { EXPECT_EQ(pipe_->Request(nullptr), nullptr); }},
        {"CreatePipe, no such command", [this] { EXPECT_EQ(Create(RequestFor(7)), nullptr); }},
        {"AddPipeInfo", [&] { pipe_->AddPipeInfo(&info, info); }},
        {"UpdatePipeInfo", [&] { pipe_->UpdatePipeInfo(&info, info); }},
        {"GetPipeInfo", [&] { pipe_->GetPipeInfo(&info, info); }},
        {"ExistHandle", [&] { EXPECT_TRUE(pipe_->ExistHandle(&info)); }},
        {"CopyPipeInfo", [&] { pipe_->CopyPipeInfo(info, info); }},
        {"InitPipeInfo", [&] { pipe_->InitPipeInfo(info); }},
        {"DeletePipeInfo", [&] { pipe_->DeletePipeInfo(&info); }},
        {"destructor with open transfers", [this] { pipe_.reset(); }},
    });
}

TEST_F(OneLock, LocksAreReleasedBeforeTheCallersCodeRuns)
{
    ExpectAtMostOne({
        {"reading a document",
         [this] {
             FileRequest request = Watching(REQUEST_READ);
             request.hPipe = Create(request);
             while (!pipe_->CheckCompleteFileRead(request.hPipe)) {
                 ASSERT_EQ(Step(request), request.hPipe);
             }
             pipe_->DisconnectPipe(request.hPipe);
         }},
        {"reading bytes",
         [this] {
             FileRequest request = Watching(REQUEST_READ);
             request.pSerializer = nullptr;
             EXPECT_NE(Step(request), nullptr);
         }},
        {"writing a document", [this] { EXPECT_NE(Step(Watching(REQUEST_WRITE)), nullptr); }},
        {"appending a document", [this] { EXPECT_NE(Step(Watching(REQUEST_APPEND)), nullptr); }},
        {"a step that fails",
         [this] {
             FileRequest request = Watching(REQUEST_WRITE);
             serializer_.onSerialize = [](CVQMDataBufferObject*) {
                 ExpectNoneHeld("Serialize");
                 return false;
             };
             EXPECT_EQ(Step(request), nullptr);
         }},
        {"another callback in its place",
         [this] {
             FileRequest request = Watching(REQUEST_APPEND);
             request.hPipe = Create(request);
             request.fnCallback = nullptr;
             data_.Init();
             const int released = released_;
             EXPECT_EQ(Step(request), request.hPipe);
             EXPECT_EQ(released_, released + 1) << "with the record that was replaced";
         }},
        {"DisconnectPipe",
         [this] {
             void* const handle = Create(Watching(REQUEST_READ));
             data_.Init();
             const int released = released_;
             pipe_->DisconnectPipe(handle);
             EXPECT_EQ(released_, released + 1);
         }},
        {"AddPipeInfo",
         [this] {
             OpenPipe::_PipeInfo info;
             info.fnCallback = Watching(REQUEST_READ).fnCallback;
             pipe_->AddPipeInfo(this, info);
             info.fnCallback = nullptr;
             const int released = released_;
             pipe_->AddPipeInfo(this, info);
             EXPECT_EQ(released_, released + 1) << "with the record that was replaced";
             pipe_->DeletePipeInfo(this);
         }},
        {"destructor",
         [this] {
             data_.Init();
             const int released = released_;
             pipe_.reset();
             EXPECT_EQ(released_, released + 3) << "the transfers that were left open";
         }},
    });
}

/// A callback may use all of the library, and the library as little as before.
TEST_F(OneLock, ACallbackMayUseTheMonitor)
{
    FileRequest request = RequestFor(REQUEST_READ);
    int calls = 0;
    request.fnCallback = [&](int, char*, uVQMINT64, IVQMPipe* pipe, void* handle) {
        ++calls;
        monitor_->CheckContents();
        ExpectWhole(Current());
        monitor_->ClearCurrentPlolicy();
        EXPECT_EQ(CVQMSyncDemoMonitor::GetInstance(), monitor_);
        pipe->DisconnectPipe(handle);
    };
    ExpectAtMostOne({{"Request", [&] { EXPECT_NE(Step(request), nullptr); }}});
    EXPECT_EQ(calls, 1);
}

/// Nothing of the library is locked while a document is parsed.
TEST_F(OneLock, ParsingHoldsNoLock)
{
    struct Target : CVQMScheduleContainer {
        bool ReadFrom(IVQMSerialize* pSerialize) override
        {
            ExpectNoneHeld("ReadFrom");
            return CVQMScheduleContainer::ReadFrom(pSerialize);
        }
    } target;
    CVQMXMLSerialize serializer;
    ASSERT_TRUE(serializer.Create());
    FileRequest request = RequestFor(REQUEST_READ);
    request.strDestURI = kScheduleDirectory + "schedule.xml";
    request.nReadUnitSize = 0;
    request.pSerializer = &serializer;
    request.pDeSerializableData = &target;
    ExpectAtMostOne({{"Request", [&] { EXPECT_NE(Step(request), nullptr); }}});
    _VQMPolicy policy;
    target.GetSturcture(&policy);
    EXPECT_FALSE(policy.bError);
    ExpectWhole(policy);
}

} // namespace

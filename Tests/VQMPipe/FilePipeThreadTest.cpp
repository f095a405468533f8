#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Support/Eventually.h"
#include "Tests/Support/RunTogether.h"
#include "Tests/VQMPipe/FilePipeTest.h"

// One pipe on many threads.

namespace {

bool Happens(std::promise<void>& event)
{
    return event.get_future().wait_for(TestPatience()) == std::future_status::ready;
}

constexpr int kThreads = 4;
constexpr int kRounds = 20;

class FilePipeThreads : public FilePipe {
protected:
    /// A thread's own file, with bytes that no other has.
    std::string OwnFile(int number, std::size_t size)
    {
        return MakeFile(std::to_string(number), std::string(size, static_cast<char>('a' + number)));
    }

    void ReadWhole(FileRequest& request)
    {
        request.hPipe = Create(request);
        ASSERT_NE(request.hPipe, nullptr);
        while (!pipe_.CheckCompleteFileRead(request.hPipe)) {
            ASSERT_EQ(Step(request), request.hPipe);
        }
    }
};

TEST_F(FilePipeThreads, EachThreadMayReadWithItsOwnHandle)
{
    RunTogether(kThreads, [this](int number) {
        const std::string path = OwnFile(number, 5000);
        for (int round = 0; round < kRounds; ++round) {
            CVQMDataBufferObject destination;
            FileRequest request = RequestFor(REQUEST_READ, path);
            request.nReadUnitSize = 700;
            request.pDeSerializableData = &destination;
            ReadWhole(request);
            EXPECT_EQ(pipe_.GetFileSizeToRead(request.hPipe), 5000U);
            EXPECT_EQ(pipe_.GetCurretFileReadByNow(request.hPipe), 5000U);
            pipe_.DisconnectPipe(request.hPipe);
            EXPECT_EQ(TextOf(destination), std::string(5000, static_cast<char>('a' + number)));
        }
    });
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

TEST_F(FilePipeThreads, AStepMayEndBeforeOneThatBeganLater)
{
    std::promise<void> firstRuns;
    std::promise<void> secondRuns;
    std::promise<void> firstHasEnded;
    const auto read = [this](const std::string& name, const std::function<void(FileRequest)>& callback) {
        FileRequest request = RequestFor(REQUEST_READ, MakeFile(name, "0123456789"));
        request.nReadUnitSize = 5;
        request.hPipe = Create(request);
        request.fnCallback = [callback, request](int, char*, uVQMINT64, IVQMPipe*, void*) { callback(request); };
        EXPECT_EQ(Step(request), request.hPipe);
        return request;
    };
    FileRequest first;
    FileRequest second;
    std::thread later([&] {
        EXPECT_TRUE(Happens(firstRuns));
        second = read("second", [&](const FileRequest& request) {
            secondRuns.set_value();
            EXPECT_TRUE(Happens(firstHasEnded));
            EXPECT_EQ(Step(request), nullptr) << "the pipe still knows the step in progress";
        });
    });
    first = read("first", [&](const FileRequest& /*request*/) {
        firstRuns.set_value();
        EXPECT_TRUE(Happens(secondRuns));
    });
    firstHasEnded.set_value();
    later.join();
    for (FileRequest* request : {&first, &second}) {
        request->fnCallback = nullptr;
        EXPECT_EQ(Step(*request), request->hPipe) << "its handle is free for another step";
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(request->hPipe));
    }
}

TEST_F(FilePipeThreads, OneFileMayBeReadByAllOfThem)
{
    const std::string content(20000, 'x');
    const std::string path = MakeFile("shared", content);
    RunTogether(kThreads, [&](int) {
        for (int round = 0; round < kRounds; ++round) {
            CVQMDataBufferObject destination;
            FileRequest request = RequestFor(REQUEST_READ, path);
            request.nReadUnitSize = 1000;
            request.pDeSerializableData = &destination;
            ReadWhole(request);
            pipe_.DisconnectPipe(request.hPipe);
            EXPECT_EQ(TextOf(destination), content);
        }
    });
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

TEST_F(FilePipeThreads, EachThreadMayWriteWithItsOwnHandle)
{
    RunTogether(kThreads, [this](int number) {
        const std::string name = std::to_string(number);
        for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
            FileRequest request = RequestFor(command, Path(name));
            request.hPipe = Create(request);
            for (int round = 0; round < kRounds; ++round) {
                CVQMDataBufferObject source;
                Fill(source, name);
                request.pSerializableData = &source;
                EXPECT_EQ(Step(request), request.hPipe);
            }
            EXPECT_EQ(pipe_.GetFileSizeToRead(request.hPipe), command == REQUEST_WRITE ? kRounds : 2 * kRounds);
            pipe_.DisconnectPipe(request.hPipe);
        }
        EXPECT_EQ(ContentOf(Path(name)), std::string(std::size_t{2} * kRounds, name.front()));
    });
}

TEST_F(FilePipeThreads, EachThreadMayParseWithItsOwnSerializer)
{
    RunTogether(kThreads, [this](int number) {
        const std::string path =
            MakeFile(std::to_string(number), "<rsp state='ok'><policy period='" + std::to_string(number) +
                                                 "'/><schedule start_time='09:00:00' end_time='18:30:00'><item id='A' "
                                                 "order='1'><name>intro</name></item></schedule></rsp>");
        for (int round = 0; round < kRounds; ++round) {
            CVQMXMLSerialize serializer;
            ASSERT_TRUE(serializer.Create());
            CVQMScheduleContainer schedule;
            FileRequest request = RequestFor(REQUEST_READ, path);
            request.nReadUnitSize = 50;
            request.pSerializer = &serializer;
            request.pDeSerializableData = &schedule;
            ReadWhole(request);
            pipe_.DisconnectPipe(request.hPipe);
            _VQMPolicy policy;
            schedule.GetSturcture(&policy);
            EXPECT_EQ(policy.nCheckPeriod, number);
            EXPECT_EQ(policy.listSchedule.size(), 1U);
        }
    });
}

TEST_F(FilePipeThreads, CallbacksRunOnTheThreadOfTheirRequest)
{
    RunTogether(kThreads, [this](int number) {
        FileRequest request = RequestFor(REQUEST_READ, OwnFile(number, 1000));
        request.nReadUnitSize = 100;
        request.nRequestID = number;
        uVQMINT64 seen = 0;
        const std::thread::id self = std::this_thread::get_id();
        request.fnCallback = [&](int id, char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle) {
            EXPECT_EQ(std::this_thread::get_id(), self);
            EXPECT_EQ(id, number);
            EXPECT_EQ(data[0], 'a' + number);
            EXPECT_EQ(pipe, &pipe_);
            EXPECT_EQ(handle, request.hPipe);
            seen += size;
            // The pipe is free: a callback opens, reads and closes as everyone else does.
            CVQMDataBufferObject destination;
            FileRequest nested = RequestFor(REQUEST_READ, request.strDestURI);
            nested.pDeSerializableData = &destination;
            nested.hPipe = Step(nested);
            EXPECT_NE(nested.hPipe, nullptr);
            EXPECT_NE(nested.hPipe, handle);
            pipe_.DisconnectPipe(nested.hPipe);
        };
        ReadWhole(request);
        EXPECT_EQ(seen, 1000U);
        pipe_.DisconnectPipe(request.hPipe);
    });
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
}

/// Half of the threads only fail, in every way there is.
TEST_F(FilePipeThreads, AFailureInOneThreadLeavesTheOthersAlone)
{
    const std::size_t descriptors = OpenDescriptors();
    RunTogether(kThreads, [this](int number) {
        const std::string path = OwnFile(number, 1000);
        for (int round = 0; round < kRounds; ++round) {
            FileRequest request = RequestFor(REQUEST_READ, path);
            request.nReadUnitSize = 100;
            if (number % 2 == 0) {
                ReadWhole(request);
                EXPECT_EQ(pipe_.GetCurretFileReadByNow(request.hPipe), 1000U);
                pipe_.DisconnectPipe(request.hPipe);
                continue;
            }
            EXPECT_EQ(Create(RequestFor(REQUEST_READ, Path("missing"))), nullptr);
            EXPECT_EQ(Create(RequestFor(REQUEST_WRITE, directory_)), nullptr);
            EXPECT_EQ(Step(RequestFor(REQUEST_APPEND, path)), nullptr) << "nothing to write";
            request.fnCallback = [](int, char*, uVQMINT64, IVQMPipe*, void*) { throw std::runtime_error("no"); };
            request.hPipe = Create(request);
            EXPECT_EQ(Step(request), nullptr);
            EXPECT_TRUE(pipe_.ExistHandle(request.hPipe));
            pipe_.DisconnectPipe(request.hPipe);
            EXPECT_FALSE(pipe_.CheckCompleteFileRead(nullptr));
        }
    });
    EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(FilePipeThreads, HandlesMayBeQueriedWhileOthersOpenAndClose)
{
    const std::string path = MakeFile("file", "0123456789");
    FileRequest kept = RequestFor(REQUEST_READ, path);
    Opened(kept);
    static int lowest = 0;
    std::atomic<int> asking = 2;
    const auto open = [&] {
        while (asking != 0) {
            pipe_.DisconnectPipe(Create(RequestFor(REQUEST_READ, path)));
        }
    };
    const auto ask = [&](const std::function<void()>& question) {
        for (int round = 0; round < 200; ++round) {
            question();
            std::this_thread::yield();
        }
        --asking;
    };
    const auto whether = [&] {
        EXPECT_TRUE(pipe_.ExistHandle(kept.hPipe));
        EXPECT_FALSE(pipe_.ExistHandle(&lowest)) << "looked for on the one side";
        EXPECT_FALSE(pipe_.ExistHandle(&kept)) << "and on the other";
    };
    const auto howMuch = [&] { EXPECT_EQ(pipe_.GetFileSizeToRead(kept.hPipe), 10U); };
    RunTogether({open, open, [&] { ask(whether); }, [&] { ask(howMuch); }});
    EXPECT_EQ(pipe_.m_pipeInfoMap.size(), 1U);
}

TEST_F(FilePipeThreads, AHandleMayMoveFromThreadToThread)
{
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", std::string(1000, 'x')));
    request.nReadUnitSize = 10;
    request.pDeSerializableData = &destination;
    Opened(request);
    std::mutex oneAtATime;
    RunTogether(kThreads, [&](int) {
        for (int step = 0; step < 100 / kThreads; ++step) {
            const std::lock_guard<std::mutex> lock(oneAtATime);
            EXPECT_EQ(Step(request), request.hPipe);
        }
    });
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(request.hPipe));
    EXPECT_EQ(TextOf(destination), std::string(1000, 'x'));
}

TEST_F(FilePipeThreads, ProgressMayBeWatchedFromOthers)
{
    FileRequest request = RequestFor(REQUEST_READ, MakeFile("file", std::string(2000, 'x')));
    request.nReadUnitSize = 10;
    request.fnCallback = [](int, char*, uVQMINT64, IVQMPipe*, void*) {};
    Opened(request);
    const auto read = [&] {
        while (!pipe_.CheckCompleteFileRead(request.hPipe)) {
            ASSERT_EQ(Step(request), request.hPipe);
        }
    };
    const auto watch = [&] {
        uVQMINT64 last = 0;
        while (last != 2000 && !HasFailure()) {
            const uVQMINT64 now = pipe_.GetCurretFileReadByNow(request.hPipe);
            EXPECT_GE(now, last);
            EXPECT_EQ(now % 10, 0U);
            EXPECT_EQ(pipe_.GetFileSizeToRead(request.hPipe), 2000U);
            last = now;
        }
        EXPECT_TRUE(pipe_.CheckCompleteFileRead(request.hPipe));
    };
    RunTogether({read, watch, watch});
}

} // namespace

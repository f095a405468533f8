#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Tests/VQMPipe/FilePipeTest.h"

// Named pipes: files that let their opener wait, measure 0, and deliver in bits; and signals that
// arrive meanwhile.

namespace {

std::atomic<int> signalsHandled{0};

/// Takes SIGUSR1 without letting interrupted calls start over.
class CaughtSignal {
public:
    CaughtSignal()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) { ++signalsHandled; };
        EXPECT_EQ(sigaction(SIGUSR1, &action, &saved_), 0);
        signalsHandled = 0;
    }
    ~CaughtSignal() { sigaction(SIGUSR1, &saved_, nullptr); }
    CaughtSignal(const CaughtSignal&) = delete;
    CaughtSignal& operator=(const CaughtSignal&) = delete;

private:
    struct sigaction saved_ = {};
};

void Pause()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// The thread that makes one, for others to interrupt.
class Interruptible {
public:
    /// Waits until the thread sleeps in a system call, interrupts it, and lets it sleep again.
    void Interrupt() const
    {
        AwaitSleep();
        const int before = signalsHandled;
        pthread_kill(thread_, SIGUSR1);
        while (signalsHandled == before) {
            Pause();
        }
        AwaitSleep();
    }

private:
    void AwaitSleep() const
    {
        for (std::string state; state != "S"; Pause()) {
            std::ifstream stat("/proc/self/task/" + std::to_string(id_) + "/stat");
            std::string line;
            std::getline(stat, line);
            state = line.substr(line.rfind(')') + 2, 1);
        }
    }

    pthread_t thread_ = pthread_self();
    pid_t id_ = gettid();
};

class FilePipeFifo : public FilePipe {
protected:
    FilePipeFifo() { EXPECT_EQ(mkfifo(path_.c_str(), 0600), 0); }

    const std::string path_ = Path("fifo");
    const CaughtSignal signal_;
};

TEST_F(FilePipeFifo, OpeningWaitsForTheOtherSideAndReadsNothing)
{
    std::atomic<bool> returned{false};
    void* handle = nullptr;
    FileRequest request = RequestFor(REQUEST_READ, path_);
    std::thread reader([&] {
        handle = Create(request);
        returned = true;
    });
    // Opens only once the other end is open too.
    int writer = -1;
    while (writer < 0 && !returned) {
        writer = open(path_.c_str(), O_WRONLY | O_NONBLOCK);
    }
    reader.join();
    ASSERT_GE(writer, 0) << "it did not wait";
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(write(writer, "content", 7), 7);
    close(writer);

    // A FIFO has no size, and so nothing to read.
    request.hPipe = handle;
    recorder::Clear();
    EXPECT_TRUE(pipe_.CheckCompleteFileRead(handle));
    EXPECT_EQ(Step(request), nullptr);
    EXPECT_EQ(recorder::Take(), Lines{Debug("FRead", "CVQMFilePipe::FRead - the size of file to read is 0 \n")});
    EXPECT_FALSE(pipe_.ExistHandle(handle));
}

TEST_F(FilePipeFifo, ASignalEndsTheWaitingLikeAnyFailure)
{
    for (const int command : {REQUEST_READ, REQUEST_WRITE, REQUEST_APPEND}) {
        std::atomic<bool> returned{false};
        std::thread signaller([&returned, caller = pthread_self()] {
            while (!returned) {
                pthread_kill(caller, SIGUSR1);
                Pause();
            }
        });
        recorder::Clear();
        void* const handle = Create(RequestFor(command, path_));
        returned = true;
        signaller.join();
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(recorder::Take().back(), CreateError(OpenError(command, path_)));
        EXPECT_TRUE(pipe_.m_pipeInfoMap.empty());
    }
}

TEST_F(FilePipeFifo, SignalsAmidAReadLoseNothing)
{
    const std::string text = "in bits";
    std::thread writer([&, reader = Interruptible()] {
        const int fifo = open(path_.c_str(), O_WRONLY);
        for (const char byte : text) {
            reader.Interrupt();
            EXPECT_EQ(write(fifo, &byte, 1), 1);
        }
        close(fifo);
    });
    CVQMDataBufferObject destination;
    FileRequest request = RequestFor(REQUEST_READ, path_);
    request.pDeSerializableData = &destination;
    request.nReadUnitSize = 0;
    // The open itself is not to be interrupted.
    void* const handle = Opened(request);
    pipe_.m_pipeInfoMap[handle].nFileSize = text.size() + 2;
    EXPECT_EQ(Step(request), handle);
    writer.join();
    EXPECT_EQ(TextOf(destination), text + std::string(2, '\0')) << "the end comes early, as in a file that shrank";
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_GE(signalsHandled, static_cast<int>(text.size()));
}

TEST_F(FilePipeFifo, SignalsAmidAWriteLoseNothing)
{
    std::string text;
    while (text.size() < (1 << 20)) {
        text += std::to_string(text.size()) + ' ';
    }
    CVQMDataBufferObject source;
    Fill(source, text);
    FileRequest request = RequestFor(REQUEST_WRITE, path_);
    request.pSerializableData = &source;
    std::string seen;
    std::thread reader([&, writer = Interruptible()] {
        const int fifo = open(path_.c_str(), O_RDONLY);
        std::vector<char> bytes(100000);
        for (ssize_t count = 1; count > 0; seen.append(bytes.data(), static_cast<std::size_t>(count))) {
            // The writer sleeps for as long as the FIFO is full.
            if (text.size() - seen.size() > 200000) {
                writer.Interrupt();
            }
            count = read(fifo, bytes.data(), bytes.size());
        }
        close(fifo);
    });
    void* const handle = Opened(request);
    EXPECT_EQ(Step(request), handle);
    EXPECT_EQ(pipe_.GetFileSizeToRead(handle), text.size());
    pipe_.DisconnectPipe(handle);
    reader.join();
    EXPECT_TRUE(seen == text);
    EXPECT_GE(signalsHandled, 8);
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(FilePipeFifo, AReaderThatLeavesIsAWriteError)
{
    void (*const handler)(int) = std::signal(SIGPIPE, SIG_IGN);
    CVQMDataBufferObject source;
    Fill(source, std::string(1 << 20, 'x'));
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK);
        FileRequest request = RequestFor(command, path_);
        request.pSerializableData = &source;
        void* const handle = Opened(request);
        close(reader);
        EXPECT_EQ(Step(request), nullptr);
        EXPECT_EQ(recorder::Take(), Lines{RequestError("File Write Error : " + path_)});
        EXPECT_EQ(pipe_.GetFileSizeToRead(handle), 0U);
        EXPECT_TRUE(pipe_.ExistHandle(handle)) << "left to the caller";
        pipe_.DisconnectPipe(handle);
    }
    std::signal(SIGPIPE, handler);
}

} // namespace

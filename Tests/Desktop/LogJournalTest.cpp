#include <dlog.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Tests/Desktop/Fixtures.h"

namespace {

void Require(bool done, const char* what)
{
    if (!done) {
        throw std::runtime_error(what);
    }
}

int BoundSocket(int type, const char* path)
{
    const int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    Require(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, path);
    return fd;
}

/// A private /run, so that the journal's two sockets can be ours.
void EnterPrivateRun()
{
    if (unshare(CLONE_NEWNS) == -1) {
        const uid_t uid = getuid();
        const gid_t gid = getgid();
        Require(unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "no mount namespace");
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << gid << " 1";
    }
    Require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    Require(mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0, "private /run");
    std::filesystem::create_directories("/run/systemd/journal");
}

/// A journal that this process plays to itself: its two sockets, and a stream to it.
struct StandInJournal {
    int entries;
    int streams;
    int stream;
};

/// For a process that does nothing else, because it gets a private /run.
StandInJournal StartJournal()
{
    EnterPrivateRun();
    constexpr char kStreamSocket[] = "/run/systemd/journal/stdout";
    StandInJournal journal{};
    journal.entries = BoundSocket(SOCK_DGRAM, "/run/systemd/journal/socket");
    journal.streams = BoundSocket(SOCK_STREAM, kStreamSocket);
    Require(listen(journal.streams, 1) == 0, "listen");
    journal.stream = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, kStreamSocket);
    Require(connect(journal.stream, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
    return journal;
}

/// The fields of an entry as they came, "NAME=value" or NAME, length and value.
std::map<std::string, std::string> Fields(const std::string& entry)
{
    std::map<std::string, std::string> fields;
    std::size_t at = 0;
    while (at < entry.size()) {
        const std::size_t end = entry.find('\n', at);
        const std::string line = entry.substr(at, end - at);
        const std::size_t equals = line.find('=');
        at = end + 1;
        if (equals != std::string::npos) {
            fields[line.substr(0, equals)] = line.substr(equals + 1);
            continue;
        }
        const auto size = static_cast<unsigned char>(entry[at]) + 256U * static_cast<unsigned char>(entry[at + 1]);
        at += 8;
        fields[line] = entry.substr(at, size);
        at += size + 1;
    }
    return fields;
}

using Expected = std::map<std::string, std::string>;

/// Runs in a process by itself. Exits with 0 if the journal receives what is expected when `log` logs.
[[noreturn]] void CheckJournal(void (*log)(), const Expected& expected)
{
    const StandInJournal journal = StartJournal();
    const int terminal = dup(STDERR_FILENO);
    dup2(journal.stream, STDERR_FILENO);
    log();
    dup2(terminal, STDERR_FILENO);

    char entry[4096];
    const ssize_t size = recv(journal.entries, entry, sizeof entry, MSG_DONTWAIT);
    Require(size > 0, "no entry");
    const auto fields = Fields(std::string(entry, static_cast<std::size_t>(size)));
    EXPECT_EQ(fields, expected);
    _exit(testing::Test::HasFailure() ? 1 : 0);
}

/// Runs in a process by itself. The journal takes the stream and the first entries, and then nothing more.
[[noreturn]] void LogToStalledJournal()
{
    const StandInJournal journal = StartJournal();
    dup2(journal.stream, STDERR_FILENO);
    alarm(static_cast<unsigned>(TestPatience().count()));
    bool lost = false;
    for (int line = 0; line < 20'000; ++line) {
        lost |= dlog_print(DLOG_DEBUG, "T", "line") < 0;
    }
    _exit(lost ? 0 : 1);
}

int RunCheck(void (*log)(), const Expected& expected)
{
    fixtures::Process process([&] {
        try {
            CheckJournal(log, expected);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << failure.what();
            _exit(2);
        }
    });
    return process.Wait();
}

} // namespace

TEST(LogJournal, ReceivesPriorityTagAndPlaceInTheSource)
{
    EXPECT_EQ(RunCheck([] { dlog_print(DLOG_ERROR, "Quillmere", "main.cpp: elm_main(61) > text (1) > 2\n"); },
                       {{"MESSAGE", "main.cpp: elm_main(61) > text (1) > 2"},
                        {"PRIORITY", "3"},
                        {"SYSLOG_IDENTIFIER", "Quillmere"},
                        {"CODE_FILE", "main.cpp"},
                        {"CODE_FUNC", "elm_main"},
                        {"CODE_LINE", "61"}}),
              0);
}

TEST(LogJournal, AMessageWithoutAPlaceHasNone)
{
    EXPECT_EQ(RunCheck([] { dlog_print(DLOG_INFO, nullptr, "a: b(c) > d\te"); },
                       {{"MESSAGE", "a: b(c) > d\\te"}, {"PRIORITY", "6"}, {"SYSLOG_IDENTIFIER", ""}}),
              0);
}

TEST(LogJournal, AJournalThatHangsDoesNotHoldUpTheProgram)
{
    fixtures::Process process([] {
        try {
            LogToStalledJournal();
        } catch (const std::exception& failure) {
            ADD_FAILURE() << failure.what();
            _exit(2);
        }
    });
    EXPECT_EQ(process.Wait(), 0);
}

TEST(LogJournal, AnEntryThatIsTooLargeIsWrittenAsALine)
{
    fixtures::Process process([] {
        const StandInJournal journal = StartJournal();
        const int reader = accept(journal.streams, nullptr, nullptr);
        dup2(journal.stream, STDERR_FILENO);
        constexpr std::size_t kLarge = 1'000'000;
        std::thread([] { dlog_print(DLOG_DEBUG, "T", "%s", std::string(kLarge, 'x').c_str()); }).detach();
        std::string line;
        std::vector<char> part(1 << 16);
        while (line.size() < kLarge) {
            const ssize_t size = read(reader, part.data(), part.size());
            if (size <= 0) {
                _exit(1);
            }
            line.append(part.data(), static_cast<std::size_t>(size));
        }
        _exit(line.rfind("D/T(", 0) == 0 ? 0 : 2);
    });
    EXPECT_EQ(process.Wait(), 0);
}

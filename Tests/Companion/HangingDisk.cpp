// Preloaded into a program: what lies below the folder HANGING_DISK is not answered for, as on a network
// disk whose server has gone, until the file HANGING_DISK_ANSWERS exists.

#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr unsigned kPause = 20000; // microseconds

void WaitFor(const char* path)
{
    const char* const folder = std::getenv("HANGING_DISK");
    const char* const answers = std::getenv("HANGING_DISK_ANSWERS");
    if (folder == nullptr || answers == nullptr || std::strncmp(path, folder, std::strlen(folder)) != 0) {
        return;
    }
    while (access(answers, F_OK) != 0) {
        usleep(kPause);
    }
}

template <const char* Name>
int WaitAndStat(const char* path, void* status)
{
    static const auto real = reinterpret_cast<int (*)(const char*, void*)>(dlsym(RTLD_NEXT, Name));
    WaitFor(path);
    return real(path, status);
}

constexpr char kStat[] = "stat";
constexpr char kStat64[] = "stat64";

} // namespace

// By their names for the linker: which of them the headers mean by stat depends on the size of file offsets.
extern "C" int StatInTheWay(const char* path, void* status) asm("stat");
extern "C" int Stat64InTheWay(const char* path, void* status) asm("stat64");

int StatInTheWay(const char* path, void* status)
{
    return WaitAndStat<kStat>(path, status);
}

int Stat64InTheWay(const char* path, void* status)
{
    return WaitAndStat<kStat64>(path, status);
}

#pragma once

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Programs that start another program with some of its system calls refused.
namespace launchers {

constexpr int kUsage = 2;
constexpr int kCouldNotRun = 3;

#if defined(__x86_64__)
constexpr unsigned int kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr unsigned int kArchitecture = AUDIT_ARCH_AARCH64;
#else
#error "the launchers know x86-64 and 64-bit ARM"
#endif

/// Filters the system calls of this process and of all that it starts. False, with errno: the kernel
/// takes no filter.
template <std::size_t Size>
bool InstallFilter(std::array<sock_filter, Size> instructions)
{
    const sock_fprog filter = {instructions.size(), instructions.data()};
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// Reports why this launcher stops, with errno's text, and returns its exit code.
inline int Fail(const char* launcher, const char* what)
{
    std::fprintf(stderr, "%s: %s: %s\n", launcher, what, std::strerror(errno));
    return kCouldNotRun;
}

/// A launcher's `main`: `restrict` takes the rights away, and the program runs without them.
template <typename Restrict>
int Launch(const char* launcher, int argc, char** argv, Restrict restrict)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s PROGRAM [ARGUMENT...]\n", launcher);
        return kUsage;
    }
    if (!restrict()) {
        return Fail(launcher, "the kernel refuses the restriction");
    }
    execvp(argv[1], argv + 1);
    return Fail(launcher, argv[1]);
}

} // namespace launchers

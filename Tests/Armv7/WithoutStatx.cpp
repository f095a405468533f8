// Runs a program that believes the kernel has no statx: WithoutStatx PROGRAM [ARGUMENT...]
//
// qemu-arm looks up a guest's paths below the sysroot first, but hands those of statx to the kernel
// as they are, so the toolkit does not find its modules. Told that there is no statx, it serves the
// guest through fstatat, whose paths it does look up. Needs no privileges; programs that the guest
// starts natively live with it as on an old kernel.

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

namespace {

#if defined(__x86_64__)
constexpr unsigned int kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr unsigned int kArchitecture = AUDIT_ARCH_AARCH64;
#else
#error "the machine that runs the tests is neither x86-64 nor 64-bit ARM"
#endif

bool RefuseStatx()
{
    std::array<sock_filter, 6> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_statx, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter = {program.size(), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: WithoutStatx PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    if (!RefuseStatx()) {
        std::fprintf(stderr, "WithoutStatx: the kernel takes no filter: %s\n", std::strerror(errno));
        return 3;
    }
    execvp(argv[1], argv + 1);
    std::fprintf(stderr, "WithoutStatx: %s: %s\n", argv[1], std::strerror(errno));
    return 3;
}

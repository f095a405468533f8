// Runs a program whose kernel makes no namespaces and no mounts: without-namespaces PROGRAM [ARGUMENT...]
//
// As in a container, nothing that it starts has CAP_SYS_ADMIN, the superuser included, or may make a
// user namespace. clone3 seems to be missing: no filter can see its flags, and the C library falls
// back to clone. Scripts/fresh-root --no-namespaces starts its command with it. Needs CAP_SYS_ADMIN,
// and not the "no new privileges" that would do instead: sudo must work behind it.

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include <linux/audit.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/sched.h>
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
#error "without-namespaces knows x86-64 and 64-bit ARM"
#endif

/// Whoever lacks the capability can have namespaces only in a user namespace.
bool RefuseUserNamespaces()
{
    // The last two numbers of a jump: how many instructions to leave out where it holds, and where not.
    std::array<sock_filter, 11> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 0, 6),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 5, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 2),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_NEWUSER, 2, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
    }};
    const sock_fprog filter = {program.size(), program.data()};
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: without-namespaces PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    if (!RefuseUserNamespaces() || prctl(PR_CAPBSET_DROP, CAP_SYS_ADMIN, 0, 0, 0) != 0) {
        std::fprintf(stderr, "without-namespaces: cannot give up namespaces: %s\n", std::strerror(errno));
        return 3;
    }
    execvp(argv[1], argv + 1);
    std::fprintf(stderr, "without-namespaces: %s: %s\n", argv[1], std::strerror(errno));
    return 3;
}

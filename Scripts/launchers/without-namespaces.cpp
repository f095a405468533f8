// Runs a program whose kernel makes no namespaces and no mounts: without-namespaces PROGRAM [ARGUMENT...]
//
// As in a container, nothing that it starts has CAP_SYS_ADMIN, the superuser included, or may make a
// user namespace. clone3 seems to be missing: no filter can see its flags, and the C library falls
// back to clone. Scripts/fresh-root --no-namespaces starts its command with it. Needs CAP_SYS_ADMIN,
// and not the "no new privileges" that would do instead: sudo must work behind it.

#include "SystemCallFilter.h"

#include <linux/capability.h>
#include <linux/sched.h>

namespace {

/// A process without the capability can get namespaces only in a user namespace.
bool RefuseUserNamespaces()
{
    // The last two numbers of a jump: how many instructions to skip where it holds, and where not.
    return launchers::InstallFilter<11>({{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, launchers::kArchitecture, 0, 6),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 5, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 2),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_NEWUSER, 2, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
    }});
}

} // namespace

int main(int argc, char** argv)
{
    return launchers::Launch("without-namespaces", argc, argv, [] {
        return RefuseUserNamespaces() && prctl(PR_CAPBSET_DROP, CAP_SYS_ADMIN, 0, 0, 0) == 0;
    });
}

// Runs a program that believes the kernel has no statx: without-statx PROGRAM [ARGUMENT...]
//
// qemu-arm looks up a guest's paths below the sysroot first, but passes those of statx to the kernel
// unchanged, so the toolkit does not find its modules. Without statx it serves the guest through
// fstatat, whose paths it does look up. Needs no privileges. Programs that the guest starts natively run
// as on an old kernel.

#include "SystemCallFilter.h"

namespace {

bool RefuseStatx()
{
    return launchers::InstallFilter<6>({{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, launchers::kArchitecture, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_statx, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }});
}

} // namespace

int main(int argc, char** argv)
{
    return launchers::Launch("without-statx", argc, argv,
                             [] { return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && RefuseStatx(); });
}

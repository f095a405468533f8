#pragma once

/// Goes on as `vqmctl-desktop`, with the same arguments, which end in a null pointer. Throws
/// `CommandError` when that program cannot be run.
[[noreturn]] void HandOver(char** argv);

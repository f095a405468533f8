#include "Benchmarks/Library/InstructionCounter.h"

#include <cstdint>
#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>

InstructionCounter::InstructionCounter()
{
    perf_event_attr what{};
    what.type = PERF_TYPE_HARDWARE;
    what.size = sizeof what;
    what.config = PERF_COUNT_HW_INSTRUCTIONS;
    what.exclude_kernel = 1;
    what.exclude_hv = 1;
    descriptor_ = static_cast<int>(syscall(SYS_perf_event_open, &what, 0, -1, -1, PERF_FLAG_FD_CLOEXEC));
}

InstructionCounter::~InstructionCounter()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::optional<double> InstructionCounter::Read() const
{
    std::uint64_t count = 0;
    if (descriptor_ < 0 || read(descriptor_, &count, sizeof count) != sizeof count) {
        return std::nullopt;
    }
    return static_cast<double>(count);
}

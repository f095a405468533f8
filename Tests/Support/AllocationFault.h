#pragma once

#include <cstddef>

/// Replaces the program's `operator new`: chosen allocations can be made to fail, and what is
/// allocated is known.
namespace allocation_fault {

/// From now on allocations of exactly this many bytes throw; 0 ends it.
void FailSize(std::size_t size);

/// The `count`-th allocation from now on throws, 1 being the next one; 0 ends it.
void FailNth(std::size_t count);

/// Whether the allocation that the last `FailNth` with a count chose has failed.
bool HasFailed();

/// The blocks that are allocated now.
std::size_t BlocksInUse();

/// The bytes that are allocated now, and at most since the last `ForgetMost`.
std::size_t BytesInUse();
std::size_t MostBytes();
void ForgetMost();

/// While one exists, its thread's allocations neither fail nor count: for what a test does amid
/// the work whose allocations it counts.
class Spared {
public:
    Spared();
    ~Spared();
    Spared(const Spared&) = delete;
    Spared& operator=(const Spared&) = delete;
};

} // namespace allocation_fault

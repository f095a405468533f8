#pragma once

#include <cstddef>

/// Replaces the program's `operator new`: chosen allocations can be made to fail.
namespace allocation_fault {

/// From now on allocations of exactly this many bytes throw; 0 ends it.
void FailSize(std::size_t size);

/// The `count`-th allocation from now on throws, 1 being the next one; 0 ends it.
void FailNth(std::size_t count);

} // namespace allocation_fault

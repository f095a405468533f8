#pragma once

#include <cstddef>

/// Replaces the program's `operator new`: allocations of one size can be made to fail.
namespace allocation_fault {

/// From now on allocations of exactly this many bytes throw; 0 ends it.
void FailSize(std::size_t size);

} // namespace allocation_fault

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// The place of a virtual operation in its class's table, from 0. A virtual destructor takes two
/// places and cannot be asked for; its place follows from the others'.
template <typename Operation>
std::size_t VirtualSlot(Operation operation)
{
    static_assert(std::is_member_function_pointer_v<Operation>);
    // The first word holds the offset in the table, plus 1 on the targets that mark it there.
    std::uintptr_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return static_cast<std::size_t>((word & ~std::uintptr_t{1}) / sizeof(void*));
}

#include "Tests/Platform/AllocationFault.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> failingSize{0};

} // namespace

void allocation_fault::FailSize(std::size_t size)
{
    failingSize = size;
}

void* operator new(std::size_t size)
{
    void* memory = size != 0 && size == failingSize ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

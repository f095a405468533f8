#include "Tests/Support/AllocationFault.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<std::size_t> failingSize{0};
std::atomic<std::size_t> allocationsLeft{0}; ///< the one that makes it 0 fails
std::atomic<bool> chosenFailed{false};
std::atomic<std::size_t> blocksInUse{0};
std::atomic<std::size_t> bytesInUse{0};
std::atomic<std::size_t> mostBytes{0};
thread_local int spared = 0;

bool IsTheChosenOne()
{
    std::size_t left = allocationsLeft;
    while (left != 0 && !allocationsLeft.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 1) {
        chosenFailed = true;
    }
    return left == 1;
}

void* Allocate(std::size_t size)
{
    if (spared == 0 && ((size != 0 && size == failingSize) || IsTheChosenOne())) {
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++blocksInUse;
    const std::size_t bytes = bytesInUse += malloc_usable_size(memory);
    if (bytes > mostBytes) {
        mostBytes = bytes;
    }
    return memory;
}

void Release(void* memory)
{
    if (memory != nullptr) {
        --blocksInUse;
        bytesInUse -= malloc_usable_size(memory);
        std::free(memory);
    }
}

} // namespace

void allocation_fault::FailSize(std::size_t size)
{
    failingSize = size;
}

void allocation_fault::FailNth(std::size_t count)
{
    if (count != 0) {
        chosenFailed = false;
    }
    allocationsLeft = count;
}

bool allocation_fault::HasFailed()
{
    return chosenFailed;
}

std::size_t allocation_fault::BlocksInUse()
{
    return blocksInUse;
}

std::size_t allocation_fault::BytesInUse()
{
    return bytesInUse;
}

std::size_t allocation_fault::MostBytes()
{
    return mostBytes;
}

void allocation_fault::ForgetMost()
{
    mostBytes = bytesInUse.load();
}

allocation_fault::Spared::Spared()
{
    ++spared;
}

allocation_fault::Spared::~Spared()
{
    --spared;
}

// All of them: a sanitizer's own forms would not come here, and not fit the `delete`s below.

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept
{
    Release(memory);
}

void operator delete[](void* memory) noexcept
{
    Release(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    Release(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    Release(memory);
}

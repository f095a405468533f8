#include "Tests/VQMSerialize/ParserFault.h"

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <dlfcn.h>
#include <expat.h>
#include <malloc.h>

#include "Tests/Support/Recorder.h"

namespace {

std::atomic<std::size_t> blocksInUse{0};
std::atomic<std::size_t> bytesInUse{0};
std::atomic<std::size_t> mostBytes{0};

void CountBytes(void* block)
{
    const std::size_t bytes = bytesInUse += malloc_usable_size(block);
    if (bytes > mostBytes) {
        mostBytes = bytes;
    }
}

bool IsTheChosenAllocation()
{
    std::size_t& left = parser_fault::faults().failingAllocation;
    return left != 0 && --left == 0;
}

void* Allocate(std::size_t size)
{
    void* const block = IsTheChosenAllocation() ? nullptr : std::malloc(size);
    if (block != nullptr) {
        ++blocksInUse;
        CountBytes(block);
    }
    return block;
}

void* Reallocate(void* block, std::size_t size)
{
    if (block == nullptr) {
        return Allocate(size);
    }
    if (IsTheChosenAllocation()) {
        return nullptr;
    }
    const std::size_t before = malloc_usable_size(block);
    void* const moved = std::realloc(block, size);
    if (moved != nullptr) {
        bytesInUse -= before;
        CountBytes(moved);
    }
    return moved;
}

void Free(void* block)
{
    if (block != nullptr) {
        --blocksInUse;
        bytesInUse -= malloc_usable_size(block);
        std::free(block);
    }
}

} // namespace

parser_fault::Faults& parser_fault::faults()
{
    static Faults instance;
    return instance;
}

std::size_t parser_fault::BlocksInUse()
{
    return blocksInUse;
}

std::size_t parser_fault::MostBytes()
{
    return mostBytes;
}

void parser_fault::ForgetMost()
{
    mostBytes = bytesInUse.load();
}

XML_Parser XML_ParserCreate(const XML_Char* encoding)
{
    using parser_fault::Creation;
    static const XML_Memory_Handling_Suite memory = {Allocate, Reallocate, Free};
    switch (parser_fault::faults().creation) {
    case Creation::Null:
        return nullptr;
    case Creation::StandardException:
        throw std::runtime_error("100% full");
    case Creation::OtherException:
        throw 1; // NOLINT(misc-throw-by-value-catch-by-reference)
    default:
        return XML_ParserCreate_MM(encoding, &memory, nullptr);
    }
}

void* XML_GetBuffer(XML_Parser parser, int length)
{
    using parser_fault::EmptyBuffer;
    if (parser_fault::faults().recordBuffer) {
        recorder::Record("XML_GetBuffer " + std::to_string(length));
    }
    using Function = void* (*)(XML_Parser, int);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "XML_GetBuffer"));
    const EmptyBuffer emptyBuffer = length == 0 ? parser_fault::faults().emptyBuffer : EmptyBuffer::Real;
    if (parser_fault::faults().refuseBuffer || emptyBuffer == EmptyBuffer::Null) {
        return nullptr;
    }
    // Every version has a buffer for one byte.
    return real(parser, emptyBuffer == EmptyBuffer::Given ? 1 : length);
}

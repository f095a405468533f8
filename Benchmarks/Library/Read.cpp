// A file into memory, in units of as many bytes as the product's reader asks for.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Benchmarks/Library/TemporaryFile.h"
#include "Benchmarks/Library/Work.h"
#include "VQMPipe/VQMFilePipe.h"

namespace {

constexpr std::size_t kUnit = 102400;

void Require(bool fulfilled, const char* what)
{
    if (!fulfilled) {
        throw std::runtime_error(what);
    }
}

template <typename Read>
Work ReadingWork(std::size_t size, Read read)
{
    const auto file = std::make_shared<const TemporaryFile>(size);
    return {[=] { Require(read(file->Path().c_str()) == size, "not the whole file was read"); }};
}

/// As a caller of the pipe reads a file.
std::size_t ReadThroughPipe(const char* path)
{
    CVQMFilePipe pipe;
    CVQMDataBufferObject buffer;
    CVQMFileRequestData requestData;
    CVQMFileRequestData::_VQMFileRequest request;
    request.strDestURI = path;
    request.eRequestCommand = REQUEST_READ;
    request.pDeSerializableData = &buffer;
    request.nReadUnitSize = kUnit;
    requestData.SetStructure(&request);
    void* const handle = pipe.CreatePipe(&requestData);
    Require(handle != nullptr, "the pipe opened no file");
    request.hPipe = handle;
    requestData.SetStructure(&request);
    while (!pipe.CheckCompleteFileRead(handle)) {
        Require(pipe.Request(&requestData) != nullptr, "the pipe failed");
    }
    pipe.DisconnectPipe(handle);
    return static_cast<std::size_t>(buffer.GetDataSize());
}

/// Into memory that grows twofold, and moves by its page tables where it can.
std::size_t ReadWithLoop(const char* path)
{
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    Require(descriptor >= 0, "the file was not opened");
    std::unique_ptr<char, decltype(&std::free)> buffer(nullptr, std::free);
    std::size_t capacity = 0;
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count)) {
        if (capacity - size < kUnit) {
            capacity = capacity == 0 ? kUnit : capacity * 2;
            void* const larger = std::realloc(buffer.get(), capacity);
            Require(larger != nullptr, "out of memory");
            static_cast<void>(buffer.release());
            buffer.reset(static_cast<char*>(larger));
        }
        count = read(descriptor, buffer.get() + size, kUnit);
        Require(count >= 0, "the file was not read");
    }
    close(descriptor);
    return size;
}

std::size_t ReadIntoVector(const char* path)
{
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> bytes;
    std::vector<char> unit(kUnit);
    while (stream.read(unit.data(), kUnit) || stream.gcount() > 0) {
        bytes.insert(bytes.end(), unit.begin(), unit.begin() + stream.gcount());
    }
    return bytes.size();
}

/// The least with the kind of stream that the pipe's handles are.
std::size_t ReadOnceWithStream(const char* path)
{
    char bytes[4096];
    std::ifstream stream(path, std::ios::binary);
    stream.read(bytes, sizeof bytes);
    return static_cast<std::size_t>(stream.gcount());
}

std::size_t ReadOnce(const char* path)
{
    char bytes[4096];
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    Require(descriptor >= 0, "the file was not opened");
    const ssize_t count = read(descriptor, bytes, sizeof bytes);
    close(descriptor);
    return static_cast<std::size_t>(count);
}

} // namespace

Work ReadWithProduct(std::size_t size)
{
    return ReadingWork(size, ReadThroughPipe);
}

Work ReadWithSystemCalls(std::size_t size)
{
    return ReadingWork(size, ReadWithLoop);
}

Work ReadWithStream(std::size_t size)
{
    return ReadingWork(size, ReadIntoVector);
}

Work ReadWithBareStream(std::size_t size)
{
    return ReadingWork(size, ReadOnceWithStream);
}

Work ReadAtOnce(std::size_t size)
{
    return ReadingWork(size, ReadOnce);
}

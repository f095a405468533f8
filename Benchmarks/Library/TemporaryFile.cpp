#include "Benchmarks/Library/TemporaryFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <unistd.h>
#include <vector>

TemporaryFile::TemporaryFile(std::size_t size)
{
    const char* const folder = std::getenv("TMPDIR");
    path_ = std::string(folder != nullptr ? folder : "/tmp") + "/LibraryWork-XXXXXX";
    const int descriptor = mkstemp(path_.data());
    const std::vector<char> block(std::min<std::size_t>(size, 1UL << 20U), 'x');
    bool written = descriptor >= 0;
    for (std::size_t left = size; written && left > 0;) {
        const ssize_t count = write(descriptor, block.data(), std::min(left, block.size()));
        written = count > 0;
        left -= written ? static_cast<std::size_t>(count) : 0;
    }
    if (!written) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
    close(descriptor);
}

TemporaryFile::~TemporaryFile()
{
    unlink(path_.c_str());
}

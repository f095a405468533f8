#include "Diagnostics/Text/InputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace {

/// Without waiting for a pipe's writer; what is open then reads as usual.
int Open(const std::string& name)
{
    const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags >= 0) {
        fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
    }
    return descriptor;
}

} // namespace

InputFile::InputFile(const std::string& name) : descriptor_(name == kStdin ? STDIN_FILENO : Open(name)) {}

InputFile::~InputFile()
{
    if (descriptor_ != STDIN_FILENO) {
        close(descriptor_);
    }
}

std::size_t InputFile::Read(char* buffer, std::size_t size) const
{
    while (true) {
        const ssize_t count = read(descriptor_, buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
}

struct stat InputFile::Status() const
{
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return status;
}

std::string InputFile::Path() const
{
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

std::string ShownName(const std::string& name)
{
    return name == kStdin ? "<stdin>" : name;
}

#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

/// An open file, closed when its owner goes. -1: none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor()
    {
        if (fd_ >= 0) {
            close(fd_);
        }
    }

    bool IsOpen() const { return fd_ >= 0; }
    int Get() const { return fd_; }

private:
    int fd_;
};

} // namespace platform

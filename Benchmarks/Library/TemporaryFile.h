#pragma once

#include <cstddef>
#include <string>

/// A file of a number of bytes, written out, so that it is in the page cache; gone at the end.
class TemporaryFile {
public:
    explicit TemporaryFile(std::size_t size);
    ~TemporaryFile();

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

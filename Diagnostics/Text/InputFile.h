#pragma once

#include <cstddef>
#include <string>

#include <sys/stat.h>

/// The file name that stands for stdin.
inline constexpr char kStdin[] = "-";

/// A file of the command line, opened for reading; "-" is stdin.
///
/// A named pipe without a writer reads as empty: a tool that waits for a writer looks hung.
class InputFile {
public:
    /// Throws `std::system_error` with the cause.
    explicit InputFile(const std::string& name);
    ~InputFile();

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Puts up to `size` bytes at `buffer` and gives their number; 0 at the end. Throws
    /// `std::system_error` with the cause.
    std::size_t Read(char* buffer, std::size_t size) const;

    /// What the system knows of the open file. Throws `std::system_error` with the cause.
    struct stat Status() const;

    /// A path that leads to this open file, whatever takes its name meanwhile. For the library, which
    /// opens files itself. Valid while this object lives.
    std::string Path() const;

private:
    int descriptor_;
};

/// What to call the file in a message: stdin is "<stdin>". Not escaped.
std::string ShownName(const std::string& name);

#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>
#include <sys/types.h>
#include <utility>

#include "Platform/common/FileDescriptor.h"

namespace desktop {

/// A descriptor that takes log lines and never blocks.
///
/// A pipe or a terminal belongs to other processes too, so its flags stay as they are: it is opened once
/// more, for writing without blocking. Where that is not allowed, as on a terminal of another user, each
/// write is preceded by a check for room; a terminal that is not stopped but stuck may then still block
/// the program.
class LogSink {
public:
    /// The file behind `descriptor`. The sink holds it from now on, so that a file which later gets the
    /// same number is never written to. `descriptor` itself stays the caller's.
    static LogSink For(int descriptor);

    /// Takes over a socket.
    static LogSink ForSocket(platform::FileDescriptor socket);

    /// Writes as much as there is room for, without waiting and without a SIGPIPE. Returns the bytes
    /// written, or -1 and sets errno, to EAGAIN when there is no room. As `write` does, and not with a
    /// `Result`: a line that fails must not take memory.
    ssize_t Write(std::string_view data) const;

    /// Waits until there may be room again, a signal arrives, or the time is over.
    void WaitForRoom(std::chrono::milliseconds timeout) const;

private:
    enum class Kind { kPlain, kSocket, kPipe, kTerminal };

    LogSink(platform::FileDescriptor held, Kind kind, bool mayBlock)
        : held_(std::move(held)), kind_(kind), mayBlock_(mayBlock)
    {
    }

    bool HasRoom(std::chrono::milliseconds timeout) const;

    platform::FileDescriptor held_;
    Kind kind_;
    bool mayBlock_;
};

} // namespace desktop

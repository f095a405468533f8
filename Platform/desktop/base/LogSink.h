#pragma once

#include <cstddef>
#include <string_view>
#include <sys/types.h>
#include <utility>

#include "Platform/desktop/base/FileDescriptor.h"

namespace desktop {

/// A descriptor that takes log lines and never blocks.
///
/// A pipe or a terminal belongs to other processes too, so its own flags stay as they are: it is
/// opened once more, for writing without blocking. Where that is not allowed, as on a terminal of
/// another user, it is asked for room before each write; a terminal that is not stopped but stuck
/// may then still hold the program up.
class LogSink {
public:
    /// What `descriptor` leads to, held from now on: nothing that takes the descriptor's number
    /// later is written to. `descriptor` itself stays the caller's.
    static LogSink For(int descriptor);

    /// A socket that is given away.
    static LogSink ForSocket(FileDescriptor socket);

    /// Writes as much as there is room for, without waiting and without a SIGPIPE. Returns the bytes
    /// written, or -1 and the errno; that is EAGAIN when there is no room.
    ssize_t Write(std::string_view data) const;

    /// Waits until there may be room again, or a signal comes, at most so long.
    void WaitForRoom(int milliseconds) const;

private:
    enum class Kind { kPlain, kSocket, kPipe, kTerminal };

    LogSink(FileDescriptor held, Kind kind, bool mayBlock) : held_(std::move(held)), kind_(kind), mayBlock_(mayBlock) {}

    bool HasRoom(int milliseconds) const;

    FileDescriptor held_;
    Kind kind_;
    bool mayBlock_;
};

} // namespace desktop

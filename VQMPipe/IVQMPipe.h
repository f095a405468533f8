#pragma once

#include <functional>

#include "Common/VQMDataObject.h"

class IVQMPipe;

/// What a transfer does with its file.
enum VQMRequestCommand {
    REQUEST_WRITE = 0, ///< writes; opening the pipe empties the file
    REQUEST_READ = 1,
    REQUEST_APPEND = 2, ///< writes after the file's content
};

/// Is called with the progress of reading; writing never calls it. It runs on the thread that made the
/// request, without any lock of the pipe, and may call every operation of the pipe, including
/// `DisconnectPipe` of its own handle.
///
/// Arguments: the request's id, data, the number of bytes, the pipe and the handle.
/// After each step of a raw read the data are the step's bytes with a zero byte behind them,
/// valid during the call. After a document was read with a serializer, the data are the address
/// of the filled `CVQMDataSerializableObject`, and the number of bytes is 0.
///
/// Exceptions it throws end the step; the standard ones and `CVQMException` become a failed
/// request, any other passes through to the caller of `Request`.
using VQMPipeCallback = std::function<void(int, char*, uVQMINT64, IVQMPipe*, void*)>;

/// A way to move data objects, step by step. A handle stands for one open transfer; null is the
/// invalid handle and the result of a failure.
class IVQMPipe {
public:
    IVQMPipe() = default;
    virtual ~IVQMPipe() = default;

    IVQMPipe(const IVQMPipe&) = delete;
    IVQMPipe& operator=(const IVQMPipe&) = delete;

    /// Opens a transfer without moving anything yet. Returns its handle, or null.
    virtual void* CreatePipe(CVQMDataStructureObject* pRequest) = 0;

    /// Moves the next step of a transfer. Returns its handle, or null.
    virtual void* Request(CVQMDataStructureObject* pRequest) = 0;

    /// Ends a transfer. The handle is invalid from here on.
    virtual void DisconnectPipe(void* handle) = 0;
};

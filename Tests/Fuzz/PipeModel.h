#pragma once

#include <string>

#include "Tests/Fuzz/PipeFiles.h"
#include "VQMPipe/IVQMPipe.h"

// The required behaviour of a file pipe: a transfer is a few fields, and a step a plain function of them.

enum class Object { None, Buffer, Document, Other };
enum class Serializer { None, Works, Fails };
enum class Callback {
    None,
    Listens,
    ClosesItself,
    Throws,
    ThrowsPipeError,
    ThrowsAnything,
    OpensAnother,
    ClosesOthers
};

/// A request's fields.
struct Wish {
    int command = REQUEST_READ;
    Place place = kFirstFile;
    Object source = Object::None;
    Object destination = Object::None;
    Serializer serializer = Serializer::None;
    Callback callback = Callback::None;
    uVQMINT64 unit = 0;
    uVQMINT64 offset = 0;
    bool newLine = false;
    int id = -1;
};

/// The expected contents of the data objects that requests name. What came from a file that is not known is
/// not known either.
struct Contents {
    std::string buffer;
    std::string document;
    bool documentKnown = true;
};

struct Transfer {
    Wish wish;
    uVQMINT64 size = 0;
    uVQMINT64 read = 0;

    std::size_t position = 0; ///< of the stream
    bool broken = false;      ///< the stream has said that it cannot read
    std::string text;         ///< of a document, as far as it was read
    bool textKnown = true;

    bool Writes() const { return wish.command != REQUEST_READ; }
};

enum class Result {
    Done,
    Refused, ///< null, and the transfer is closed
    Failed,  ///< null, and the transfer stays as it was
    Escapes, ///< what the callback throws reaches the caller
};

struct Step {
    Result result = Result::Refused;
    std::size_t moved = 0; ///< bytes

    bool heard = false; ///< by the callback
    bool known = true;  ///< whether `bytes` are what must be read
    std::string bytes;  ///< of a raw read
    bool parsesDocument = false;
};

/// Whether the pipe opens a transfer, from `offset` on.
bool CanOpen(const Wish& wish, uVQMINT64 offset, const PipeFiles& files);

/// The transfer that opens.
Transfer Open(const Wish& wish, uVQMINT64 offset, PipeFiles& files);

/// Takes over what an open transfer takes from each request.
void Retarget(Transfer& transfer, const Wish& wish);

/// Moves a transfer by one step, and changes what the step changes.
Step Move(Transfer& transfer, Contents& contents, PipeFiles& files);

#include "Tests/Fuzz/PipeModel.h"

#include <algorithm>

namespace {

bool IsKnownCommand(int command)
{
    return command == REQUEST_WRITE || command == REQUEST_READ || command == REQUEST_APPEND;
}

Result ResultOf(Callback callback)
{
    switch (callback) {
    case Callback::Throws:
    case Callback::ThrowsPipeError:
        return Result::Failed;
    case Callback::ThrowsAnything:
        return Result::Escapes;
    default:
        return Result::Done;
    }
}

Step Heard(const Transfer& transfer, Step step)
{
    step.result = ResultOf(transfer.wish.callback);
    step.heard = transfer.wish.callback != Callback::None;
    return step;
}

Step Write(Transfer& transfer, Contents& contents, PipeFiles& files)
{
    const Wish& wish = transfer.wish;
    const bool serialized = wish.serializer != Serializer::None;
    if (wish.source != (serialized ? Object::Document : Object::Buffer) || wish.serializer == Serializer::Fails) {
        return {};
    }
    std::string data = serialized ? contents.document : contents.buffer;
    if (wish.command == REQUEST_APPEND && wish.newLine) {
        data += "\r\n";
        if (!serialized) {
            contents.buffer = data;
        }
    }
    files.Append(wish.place, data);
    transfer.size += data.size();
    Step step;
    step.result = Result::Done;
    step.moved = data.size();
    return step;
}

/// The next `count` bytes, and zeros where the file has no more.
std::string ReadBytes(Transfer& transfer, std::size_t count, const std::string& content)
{
    std::string bytes = content.substr(std::min(transfer.position, content.size()), count);
    transfer.position += bytes.size();
    bytes.resize(count, '\0');
    return bytes;
}

Step ReadDocument(Transfer& transfer, Contents& contents, Step step)
{
    if (transfer.wish.destination == Object::None) {
        return {};
    }
    transfer.text += step.bytes;
    transfer.textKnown = transfer.textKnown && step.known;
    if (transfer.read != transfer.size) {
        step.result = Result::Done;
        return step;
    }
    if (transfer.wish.destination != Object::Document || transfer.wish.serializer == Serializer::Fails) {
        return {};
    }
    contents.document = transfer.text.substr(0, transfer.text.find('\0'));
    contents.documentKnown = transfer.textKnown;
    transfer.text.clear();
    transfer.textKnown = true;
    step.parsesDocument = true;
    return Heard(transfer, step);
}

Step Read(Transfer& transfer, Contents& contents, const PipeFiles& files)
{
    const Wish& wish = transfer.wish;
    if (transfer.size == 0) {
        return {};
    }
    Step step;
    step.moved =
        static_cast<std::size_t>(wish.unit == 0 ? transfer.size : std::min(transfer.size - transfer.read, wish.unit));
    if (wish.place == kFolder && step.moved != 0 && !transfer.broken) {
        // The first attempt is an error; a stream that has failed already gives zeros.
        transfer.broken = true;
        step.result = Result::Failed;
        return step;
    }
    const std::optional<std::string> content = wish.place == kFolder ? std::string() : files.Content(wish.place);
    step.known = content.has_value();
    step.bytes = ReadBytes(transfer, step.moved, content.value_or(""));
    transfer.read += step.moved;
    if (wish.serializer != Serializer::None) {
        return ReadDocument(transfer, contents, step);
    }
    if (wish.destination == Object::Buffer) {
        contents.buffer += step.bytes;
    }
    return Heard(transfer, step);
}

} // namespace

bool CanOpen(const Wish& wish, uVQMINT64 offset, const PipeFiles& files)
{
    const bool reads = wish.command == REQUEST_READ;
    return IsKnownCommand(wish.command) && files.CanBeOpened(wish.place, reads) &&
           (!reads || offset == 0 || offset < files.SizeOf(wish.place));
}

Transfer Open(const Wish& wish, uVQMINT64 offset, PipeFiles& files)
{
    Transfer transfer;
    transfer.wish = wish;
    transfer.size = wish.command == REQUEST_WRITE ? 0 : files.SizeOf(wish.place);
    if (wish.command == REQUEST_READ) {
        transfer.read = offset;
        transfer.position = static_cast<std::size_t>(offset);
    }
    files.Open(wish.place, transfer.Writes(), wish.command == REQUEST_WRITE);
    return transfer;
}

void Retarget(Transfer& transfer, const Wish& wish)
{
    transfer.wish.source = wish.source;
    transfer.wish.destination = wish.destination;
    transfer.wish.serializer = wish.serializer;
    transfer.wish.callback = wish.callback;
    if (wish.id != -1) {
        transfer.wish.id = wish.id;
    }
}

Step Move(Transfer& transfer, Contents& contents, PipeFiles& files)
{
    return transfer.Writes() ? Write(transfer, contents, files) : Read(transfer, contents, files);
}

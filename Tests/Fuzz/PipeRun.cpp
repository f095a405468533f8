#include "Tests/Fuzz/PipeRun.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "Tests/Fuzz/Check.h"

PipeRun::PipeRun(PipeFiles& files) : files_(files), descriptors_(OpenDescriptors()), pipe_(new OpenPipe)
{
    files_.RemoveAll();
    fails_.onSerialize = [](CVQMDataBufferObject*) { return false; };
    fails_.onDeserialize = [](const char*) { return false; };
}

void PipeRun::Fill(const std::string& content)
{
    buffer_.Clear();
    buffer_.InsertData(content.data(), content.size());
    contents_.buffer = content;
}

void PipeRun::SetDocument(const std::string& text)
{
    document_.text = text;
    contents_.document = text;
}

void PipeRun::Bound(std::size_t size)
{
    if (contents_.buffer.size() > size) {
        Fill("");
    }
    if (contents_.document.size() > size) {
        SetDocument("");
    }
}

CVQMDataObject* PipeRun::ObjectFor(Object object)
{
    CVQMDataObject* const objects[] = {nullptr, &buffer_, &document_, &other_};
    return objects[static_cast<std::size_t>(object)];
}

IVQMSerialize* PipeRun::SerializerFor(Serializer serializer)
{
    IVQMSerialize* const serializers[] = {nullptr, &works_, &fails_};
    return serializers[static_cast<std::size_t>(serializer)];
}

CVQMFileRequestData PipeRun::RequestFor(const Wish& wish, void* handle)
{
    CVQMFileRequestData::_VQMFileRequest request;
    request.strDestURI = files_.PathOf(wish.place);
    request.eRequestCommand = wish.command;
    request.pSerializableData = ObjectFor(wish.source);
    request.pDeSerializableData = ObjectFor(wish.destination);
    request.pSerializer = SerializerFor(wish.serializer);
    request.hPipe = handle;
    request.nReadUnitSize = wish.unit;
    request.nStartOffset = wish.offset;
    request.bAddNewLine = wish.newLine;
    request.nRequestID = wish.id;
    if (wish.callback != Callback::None) {
        request.fnCallback = [this](int id, char* data, uVQMINT64 size, IVQMPipe* pipe, void* source) {
            Check(current_ != nullptr, "a callback outside of a request");
            Hear(*current_, id, data, size, pipe, source);
        };
    }
    CVQMFileRequestData data;
    data.SetStructure(&request);
    return data;
}

void PipeRun::Create(const Wish& wish)
{
    const bool opens = CanOpen(wish, wish.offset, files_);
    Transfer transfer;
    if (opens) {
        transfer = Open(wish, wish.offset, files_);
    }
    CVQMFileRequestData data = RequestFor(wish, this); // the handle is of no consequence
    void* const handle = pipe_->CreatePipe(&data);
    CheckEqual(opens, handle != nullptr, "whether a transfer opens");
    if (opens) {
        Check(Find(handle) == nullptr, "a handle is given twice");
        open_.emplace_back(handle, transfer);
    }
}

void PipeRun::Request(void* handle, const Wish& wish)
{
    Transfer* const known = Find(handle);
    if (handle != nullptr && known == nullptr) {
        RequestUnknown(handle, wish);
        return;
    }
    if (known == nullptr && !CanOpen(wish, 0, files_)) {
        CVQMFileRequestData data = RequestFor(wish, nullptr);
        Check(pipe_->Request(&data) == nullptr, "a transfer opens that cannot");
        return;
    }
    Current current{handle, known != nullptr ? *known : Open(wish, 0, files_), {}};
    if (known != nullptr) {
        Retarget(current.transfer, wish);
    }
    RunStep(wish, current);
}

/// Of a handle that is not open, only the command counts.
void PipeRun::RequestUnknown(void* handle, const Wish& wish)
{
    const bool moves = wish.command == REQUEST_WRITE || wish.command == REQUEST_READ || wish.command == REQUEST_APPEND;
    CVQMFileRequestData data = RequestFor(wish, handle);
    CheckEqual<void*>(moves ? nullptr : handle, pipe_->Request(&data), "the result for a handle that is not open");
}

void PipeRun::RunStep(const Wish& wish, Current& current)
{
    const uVQMINT64 readBefore = current.transfer.read;
    const Contents before = contents_;
    current.step = Move(current.transfer, contents_, files_);
    moved_ += current.step.moved;
    if (current.step.result == Result::Refused) {
        contents_ = before;
    }

    CVQMFileRequestData data = RequestFor(wish, current.handle);
    void* result = nullptr;
    bool escaped = false;
    current_ = &current;
    try {
        result = pipe_->Request(&data);
    } catch (int) {
        escaped = true;
    }
    current_ = nullptr;

    if (current.step.result == Result::Failed || current.step.result == Result::Escapes) {
        current.transfer.read = readBefore;
    }
    if (current.handle == nullptr && current.step.result != Result::Refused) {
        current.handle = NewHandle();
        open_.emplace_back(current.handle, current.transfer);
    }
    Conclude(current, result, escaped);
}

void PipeRun::Conclude(const Current& current, void* result, bool escaped)
{
    const Result expected = current.step.result;
    CheckEqual(expected == Result::Escapes, escaped, "whether an exception passes through");
    CheckEqual(current.step.heard, current.heard, "whether the callback is called");
    CheckEqual<void*>(expected == Result::Done ? current.handle : nullptr, result, "a request's result");

    if (expected != Result::Refused) {
        Transfer* const stored = Find(current.handle); // null when the callback has closed it
        if (stored != nullptr) {
            *stored = current.transfer;
        }
    } else if (current.handle != nullptr) {
        Forget(current.handle);
    } else {
        files_.Close(current.transfer.wish.place, current.transfer.Writes());
    }
    CheckContents(current);
}

void PipeRun::CheckContents(const Current& current)
{
    const std::string bytes(buffer_.GetData() != nullptr ? buffer_.GetData() : "",
                            static_cast<std::size_t>(buffer_.GetDataSize()));
    if (current.step.known) {
        Check(bytes == contents_.buffer, "the buffer's bytes");
    } else {
        const std::size_t old = contents_.buffer.size() - std::min(contents_.buffer.size(), current.step.moved);
        CheckEqual(contents_.buffer.size(), bytes.size(), "the buffer's size");
        Check(bytes.compare(0, old, contents_.buffer, 0, old) == 0, "what was in the buffer before");
        contents_.buffer = bytes;
    }
    Check(!contents_.documentKnown || document_.text == contents_.document, "the document's text");
    contents_.document = document_.text;
    contents_.documentKnown = true;
}

void PipeRun::Hear(Current& current, int id, const char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle)
{
    Check(!current.heard, "a callback is called twice");
    current.heard = true;
    if (current.handle == nullptr) {
        current.handle = NewHandle();
        open_.emplace_back(current.handle, current.transfer);
    }
    const Step& step = current.step;
    Check(step.heard, "a callback that must not be called");
    CheckEqual(current.transfer.wish.id, id, "the callback's id");
    CheckEqual<const void*>(pipe_.get(), pipe, "the callback's pipe");
    CheckEqual<void*>(current.handle, handle, "the callback's handle");
    if (step.parsesDocument) {
        Check(data == reinterpret_cast<const char*>(&document_), "the callback's document");
        CheckEqual<uVQMINT64>(0, size, "the size of a document");
    } else {
        CheckEqual<uVQMINT64>(step.moved, size, "the callback's size");
        Check(!step.known || std::memcmp(data, step.bytes.data(), step.moved) == 0, "the callback's bytes");
        Check(data[step.moved] == '\0', "the zero byte behind the callback's bytes");
    }
    React(current);
}

void PipeRun::React(const Current& current)
{
    switch (current.transfer.wish.callback) {
    case Callback::None:
    case Callback::Listens:
        break;
    case Callback::ClosesItself:
        Disconnect(current.handle);
        break;
    case Callback::Throws:
        throw std::runtime_error("the callback's");
    case Callback::ThrowsPipeError:
        throw CVQMException(1, "the callback's");
    case Callback::ThrowsAnything:
        throw 1; // NOLINT: anything
    case Callback::OpensAnother:
        Create(Wish());
        break;
    case Callback::ClosesOthers: {
        const std::list<OpenTransfer> all = open_;
        for (const OpenTransfer& other : all) {
            if (other.first != current.handle) {
                Disconnect(other.first);
            }
        }
        break;
    }
    }
}

void PipeRun::Disconnect(void* handle)
{
    pipe_->DisconnectPipe(handle);
    if (Find(handle) != nullptr) {
        Forget(handle);
    }
}

void PipeRun::Restart()
{
    CheckEqual(descriptors_ + open_.size(), OpenDescriptors(), "the open descriptors");
    pipe_ = std::make_unique<OpenPipe>();
    while (!open_.empty()) {
        Forget(open_.front().first);
    }
    CheckEqual(descriptors_, OpenDescriptors(), "the descriptors that a pipe leaves open");
}

void PipeRun::MisuseAll()
{
    OtherRequest other;
    Check(pipe_->CreatePipe(nullptr) == nullptr && pipe_->CreatePipe(&other) == nullptr, "no request opens a transfer");
    Check(pipe_->Request(nullptr) == nullptr && pipe_->Request(&other) == nullptr, "no request moves anything");
    pipe_->DisconnectPipe(nullptr);
    CheckEqual<uVQMINT64>(0, pipe_->GetFileSize(nullptr), "the size of no file");
    CheckEqual<uVQMINT64>(0, pipe_->GetFileSizeToRead(nullptr), "the size of no transfer");
    CheckEqual<uVQMINT64>(0, pipe_->GetCurretFileReadByNow(nullptr), "the position of no transfer");
    Check(!pipe_->CheckCompleteFileRead(nullptr), "no transfer is complete");
    if (lastClosed_ != nullptr && Find(lastClosed_) == nullptr) {
        CheckEqual<uVQMINT64>(0, pipe_->GetFileSizeToRead(lastClosed_), "the size of a closed transfer");
        CheckEqual<uVQMINT64>(0, pipe_->GetCurretFileReadByNow(lastClosed_), "the position of a closed transfer");
        Check(pipe_->CheckCompleteFileRead(lastClosed_), "a closed transfer is not complete");
    }
}

void PipeRun::CheckFileSize(Place place)
{
    CheckEqual(files_.SizeOf(place), pipe_->GetFileSize(files_.PathOf(place).c_str()), "the size of a file");
}

void* PipeRun::Handle(std::size_t index) const
{
    return open_.empty() ? nullptr : std::next(open_.begin(), static_cast<long>(index % open_.size()))->first;
}

void PipeRun::CheckTable()
{
    CheckEqual(open_.size(), pipe_->m_pipeInfoMap.size(), "the number of records");
    for (const auto& [handle, transfer] : open_) {
        const auto found = pipe_->m_pipeInfoMap.find(handle);
        Check(found != pipe_->m_pipeInfoMap.end(), "an open transfer has no record");
        const OpenPipe::_PipeInfo& record = found->second;
        CheckEqual(handle, record.pFileStream, "the record's stream");
        CheckEqual(files_.PathOf(transfer.wish.place), record.strDestURI, "the record's path");
        CheckEqual(transfer.wish.command, record.eRequestCommand, "the record's command");
        CheckEqual(transfer.wish.id, record.nRequestID, "the record's id");
        CheckEqual(transfer.size, pipe_->GetFileSizeToRead(handle), "the size of a transfer");
        CheckEqual(transfer.read, record.nReadSize, "how far the record has come");
        CheckEqual(transfer.Writes() ? 0 : transfer.read, pipe_->GetCurretFileReadByNow(handle),
                   "how far a transfer has come");
        CheckEqual(transfer.read == transfer.size, pipe_->CheckCompleteFileRead(handle),
                   "whether a transfer is complete");
    }
}

Transfer* PipeRun::Find(void* handle)
{
    const auto found =
        std::find_if(open_.begin(), open_.end(), [handle](const OpenTransfer& open) { return open.first == handle; });
    return found != open_.end() ? &found->second : nullptr;
}

/// The handle that the pipe has opened and the model does not know yet.
void* PipeRun::NewHandle() const
{
    for (const auto& record : pipe_->m_pipeInfoMap) {
        const auto isRecord = [&record](const OpenTransfer& open) { return open.first == record.first; };
        if (std::none_of(open_.begin(), open_.end(), isRecord)) {
            return record.first;
        }
    }
    Fail("an open transfer has no record");
}

void PipeRun::Forget(void* handle)
{
    const Transfer& transfer = *Find(handle);
    files_.Close(transfer.wish.place, transfer.Writes());
    open_.remove_if([handle](const OpenTransfer& open) { return open.first == handle; });
    lastClosed_ = handle;
}

#pragma once

#include <list>
#include <memory>
#include <utility>

#include "Tests/Fuzz/PipeModel.h"
#include "Tests/VQMPipe/PipeObjects.h"

/// Does with a file pipe what it is told, and holds the pipe's table, the files, the data objects
/// and the callbacks against the model.
class PipeRun {
public:
    explicit PipeRun(PipeFiles& files);

    void Fill(const std::string& content);
    void SetDocument(const std::string& text);

    /// Empties what has grown beyond `size`.
    void Bound(std::size_t size);

    void Create(const Wish& wish);
    void Request(void* handle, const Wish& wish);
    void Disconnect(void* handle);

    /// A new pipe in the place of this one, whose open transfers end.
    void Restart();

    /// Arguments that no operation takes.
    void MisuseAll();
    void CheckFileSize(Place place);

    /// The `index`-th open handle, in the order of opening and starting anew at the end; null if none is.
    void* Handle(std::size_t index) const;
    void* LastClosed() const { return lastClosed_; }

    /// The expected table, and the operations that report it.
    void CheckTable();

    std::size_t MovedBytes() const { return moved_; }

private:
    using OpenTransfer = std::pair<void*, Transfer>;

    /// The request under way.
    struct Current {
        void* handle;
        Transfer transfer; ///< after the step
        Step step;
        bool heard = false;
    };

    CVQMFileRequestData RequestFor(const Wish& wish, void* handle);
    CVQMDataObject* ObjectFor(Object object);
    IVQMSerialize* SerializerFor(Serializer serializer);

    void RequestUnknown(void* handle, const Wish& wish);
    void RunStep(const Wish& wish, Current& current);
    void Conclude(const Current& current, void* result, bool escaped);
    void CheckContents(const Current& current);
    void Hear(Current& current, int id, const char* data, uVQMINT64 size, IVQMPipe* pipe, void* handle);
    void React(const Current& current);

    Transfer* Find(void* handle);
    void* NewHandle() const;
    void Forget(void* handle);

    PipeFiles& files_;
    Contents contents_;
    std::list<OpenTransfer> open_;
    void* lastClosed_ = nullptr;
    std::size_t moved_ = 0;

    CVQMDataBufferObject buffer_;
    Document document_;
    OtherData other_;
    PlainSerializer works_;
    PlainSerializer fails_;
    std::size_t descriptors_;
    Current* current_ = nullptr;
    std::unique_ptr<OpenPipe> pipe_;
};

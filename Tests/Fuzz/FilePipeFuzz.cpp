// A text that says what is done with a file pipe. Each letter starts an operation, the characters
// behind it choose by their last three bits, and so "0" to "7" choose what they say; other
// characters between operations mean nothing.
//
//   c REQUEST          open a transfer
//   r HANDLE REQUEST   move one by a step
//   d HANDLE           end one
//   f SIZE BYTE        fill the buffer
//   t SIZE BYTE        set the document's text
//   w PLACE SIZE BYTE  write a file, behind the pipe's back
//   x PLACE            remove one
//   g PLACE            ask for its size
//   n                  end the pipe and start another
//   z                  call everything with null and with what is not open
//
//   HANDLE   0 null, 1 none at all, 2 the last one that was closed, from 3 on one that is open
//   REQUEST  command, place, source, destination, serializer, callback, unit, offset, new line, id:
//            ten characters, see the tables

#include <cstdint>
#include <limits>
#include <string_view>

#include "Tests/Fuzz/PipeRun.h"

namespace {

constexpr std::size_t kMaxOperations = 64;
constexpr std::size_t kMaxMovedBytes = 1'000'000;
constexpr std::size_t kMaxContent = 30'000;

class Script {
public:
    explicit Script(std::string_view text) : text_(text) {}

    bool AtEnd() const { return text_.empty(); }

    char Next()
    {
        const char character = text_.empty() ? '\0' : text_.front();
        text_.remove_prefix(text_.empty() ? 0 : 1);
        return character;
    }

    unsigned int Digit() { return static_cast<unsigned char>(Next()) % 8; }

    template <typename Value>
    Value Choose(const Value (&table)[8])
    {
        return table[Digit()];
    }

private:
    std::string_view text_;
};

Place ReadPlace(Script& script)
{
    return script.Choose<Place>({static_cast<Place>(0), static_cast<Place>(1), static_cast<Place>(2), kMissingFolder,
                                 kFolder, kNoPath, static_cast<Place>(0), static_cast<Place>(1)});
}

Object ReadObject(Script& script)
{
    return script.Choose<Object>({Object::None, Object::Buffer, Object::Document, Object::Other, Object::Buffer,
                                  Object::Document, Object::Buffer, Object::Document});
}

/// Bytes that tell where in the content they stand.
std::string ReadContent(Script& script)
{
    const std::size_t size = script.Choose<std::size_t>({0, 1, 2, 10, 100, 8191, 8192, 20'000});
    const auto first = static_cast<unsigned char>(script.Next());
    std::string content;
    for (std::size_t i = 0; i < size; ++i) {
        content += static_cast<char>(static_cast<unsigned char>(first + i % 251));
    }
    return content;
}

Wish ReadWish(Script& script, const PipeFiles& files)
{
    constexpr uVQMINT64 kHuge = std::numeric_limits<uVQMINT64>::max();
    Wish wish;
    wish.command = script.Choose<int>({REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND, 3, -1, REQUEST_READ, REQUEST_READ,
                                       std::numeric_limits<int>::min()});
    wish.place = ReadPlace(script);
    wish.source = ReadObject(script);
    wish.destination = ReadObject(script);
    wish.serializer =
        script.Choose<Serializer>({Serializer::None, Serializer::Works, Serializer::Fails, Serializer::None,
                                   Serializer::Works, Serializer::None, Serializer::None, Serializer::Works});
    wish.callback = static_cast<Callback>(script.Digit());
    wish.unit = script.Choose<uVQMINT64>({0, 1, 2, 7, 64, 4096, 10240, kHuge});
    const uVQMINT64 size = files.SizeOf(wish.place);
    wish.offset = script.Choose<uVQMINT64>({0, 1, 2, 7, size / 2, size - 1, size, kHuge});
    if (wish.place == kFolder) {
        wish.offset = 0; // whether a folder has places to go to is the file system's affair
    }
    wish.newLine = script.Digit() % 2 == 1;
    wish.id =
        script.Choose<int>({-1, 0, 1, 7, -2, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()});
    return wish;
}

void* ReadHandle(Script& script, PipeRun& run)
{
    const unsigned int digit = script.Digit();
    switch (digit) {
    case 0:
        return nullptr;
    case 1:
        return &run;
    case 2:
        return run.LastClosed();
    default:
        return run.Handle(digit - 3);
    }
}

/// Returns false for a byte that does not stand for an operation.
bool Operate(Script& script, PipeRun& run, PipeFiles& files)
{
    switch (script.Next()) {
    case 'c':
        run.Create(ReadWish(script, files));
        return true;
    case 'r': {
        void* const handle = ReadHandle(script, run);
        run.Request(handle, ReadWish(script, files));
        return true;
    }
    case 'd':
        run.Disconnect(ReadHandle(script, run));
        return true;
    case 'f':
        run.Fill(ReadContent(script));
        return true;
    case 't':
        run.SetDocument(ReadContent(script));
        return true;
    case 'w': {
        const Place place = ReadPlace(script);
        files.Replace(place, ReadContent(script));
        return true;
    }
    case 'x':
        files.Remove(ReadPlace(script));
        return true;
    case 'g':
        run.CheckFileSize(ReadPlace(script));
        return true;
    case 'n':
        run.Restart();
        return true;
    case 'z':
        run.MisuseAll();
        return true;
    default:
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static PipeFiles files;
    Script script({reinterpret_cast<const char*>(data), size});
    PipeRun run(files);
    std::size_t operations = 0;
    while (!script.AtEnd() && operations < kMaxOperations && run.MovedBytes() < kMaxMovedBytes) {
        if (Operate(script, run, files)) {
            run.CheckTable();
            run.Bound(kMaxContent);
            ++operations;
        }
    }
    run.Restart();
    return 0;
}

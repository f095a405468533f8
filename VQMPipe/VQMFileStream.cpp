#include "VQMPipe/VQMFileStream.h"

#include <cstring>
#include <limits>
#include <new>

namespace {

template <typename Stream>
void CloseSilently(Stream& stream)
{
    stream.exceptions(std::ios_base::goodbit);
    stream.close();
}

} // namespace

bool VQMTransferHasFailed(const std::ios& stream)
{
    return stream.rdstate() == std::ios_base::badbit || stream.rdstate() == std::ios_base::failbit;
}

void VQMCloseStream(void* stream, int openMode)
{
    if ((openMode & std::ios_base::out) != 0) {
        CloseSilently(*static_cast<std::ofstream*>(stream));
    } else if ((openMode & std::ios_base::in) != 0) {
        CloseSilently(*static_cast<std::ifstream*>(stream));
    }
}

std::unique_ptr<char[]> VQMReadBytes(std::ifstream& stream, uVQMINT64 size)
{
    if (size >= static_cast<uVQMINT64>(std::numeric_limits<std::streamsize>::max())) {
        throw std::bad_array_new_length();
    }
    // Not cleared before reading: that would cost as much as the reading itself.
    std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(size) + 1]);
    stream.read(bytes.get(), static_cast<std::streamsize>(size));
    const auto count = static_cast<std::size_t>(stream.gcount());
    std::memset(bytes.get() + count, 0, static_cast<std::size_t>(size) + 1 - count);
    return bytes;
}

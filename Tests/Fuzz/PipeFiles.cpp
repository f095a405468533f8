#include "Tests/Fuzz/PipeFiles.h"

#include <fstream>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

#include "Tests/Fuzz/Check.h"

namespace {

constexpr const char* kNames[kPlaceCount] = {"a", "b", "c", "missing/file", ".", ""};

std::string Read(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

void PipeFiles::RemoveAll()
{
    for (int place = kFirstFile; place < kFileCount; ++place) {
        Remove(static_cast<Place>(place));
    }
}

std::string PipeFiles::PathOf(Place place) const
{
    return place == kNoPath ? "" : folder_.Path(kNames[place]);
}

bool PipeFiles::CanBeOpened(Place place, bool forReading) const
{
    if (!IsFile(place)) {
        return forReading && place == kFolder; // which opens, but does not read
    }
    return !forReading || access(PathOf(place).c_str(), F_OK) == 0;
}

uVQMINT64 PipeFiles::SizeOf(Place place) const
{
    struct stat status = {};
    return stat(PathOf(place).c_str(), &status) == 0 ? static_cast<uVQMINT64>(status.st_size) : 0;
}

std::optional<std::string> PipeFiles::Content(Place place) const
{
    return IsFile(place) && files_[place].known ? std::optional<std::string>(files_[place].content) : std::nullopt;
}

void PipeFiles::Replace(Place place, const std::string& content)
{
    if (IsFile(place)) {
        folder_.Write(kNames[place], content);
        files_[place].content = content;
        files_[place].known = files_[place].readers + files_[place].writers == 0;
    }
}

void PipeFiles::Remove(Place place)
{
    if (IsFile(place)) {
        unlink(PathOf(place).c_str());
        files_[place].content.clear();
        files_[place].known = files_[place].readers + files_[place].writers == 0;
    }
}

void PipeFiles::Open(Place place, bool writes, bool truncates)
{
    if (!IsFile(place)) {
        return;
    }
    File& file = files_[place];
    ++(writes ? file.writers : file.readers);
    if (truncates) {
        file.content.clear();
    }
    if (file.writers > 0 && file.readers + file.writers > 1) {
        file.known = false;
    }
}

void PipeFiles::Append(Place place, const std::string& data)
{
    if (IsFile(place)) {
        files_[place].content += data;
    }
}

void PipeFiles::Close(Place place, bool writes)
{
    if (!IsFile(place)) {
        return;
    }
    File& file = files_[place];
    --(writes ? file.writers : file.readers);
    if (file.readers + file.writers != 0) {
        return;
    }
    const std::string content = Read(PathOf(place));
    Check(!file.known || content == file.content, "a file does not hold what was written");
    file.content = content;
    file.known = true;
}

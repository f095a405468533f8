#pragma once

#include <array>
#include <optional>
#include <string>

#include "Common/VQMDataObject.h"
#include "Tests/Fuzz/ScratchFolder.h"

/// The places that transfers name: three files, and what is none.
enum Place { kFirstFile = 0, kFileCount = 3, kMissingFolder = 3, kFolder = 4, kNoPath = 5, kPlaceCount = 6 };

/// Files in a private folder, and their expected contents.
///
/// What a writer holds back is in the file only when it closes. A file that is open more than once,
/// and written, is therefore no longer known until all have closed it; nor is one that is replaced
/// while it is open.
class PipeFiles {
public:
    /// Starts without files.
    void RemoveAll();

    std::string PathOf(Place place) const;
    bool CanBeOpened(Place place, bool forReading) const;

    /// Asks the file system: what a transfer sees at this moment.
    uVQMINT64 SizeOf(Place place) const;

    /// The file's content, unless it is not known.
    std::optional<std::string> Content(Place place) const;

    // Changes to the files from outside.

    void Replace(Place place, const std::string& content);
    void Remove(Place place);

    // The changes that transfers must have made. Each `Close` of the last one compares.

    void Open(Place place, bool writes, bool truncates);
    void Append(Place place, const std::string& data);
    void Close(Place place, bool writes);

private:
    struct File {
        std::string content;
        bool known = true;
        int readers = 0;
        int writers = 0;
    };

    bool IsFile(Place place) const { return place < kFileCount; }

    ScratchFolder folder_;
    std::array<File, kFileCount> files_;
};

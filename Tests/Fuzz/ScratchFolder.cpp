#include "Tests/Fuzz/ScratchFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Tests/Fuzz/Check.h"

ScratchFolder::ScratchFolder() : path_((std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string())
{
    Check(mkdtemp(path_.data()) != nullptr, "no folder for the target's files");
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, std::string_view content) const
{
    std::ofstream stream(Path(name), std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    Check(!stream.flush().fail(), "the target cannot write its file");
    return Path(name);
}

// Runs a fuzz target over the files of the given folders, without the fuzzer.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::uint8_t> Read(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    bytes.shrink_to_fit(); // a read past the end is one past the memory
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::directory_iterator folder(argv[i]);
        std::vector<std::filesystem::path> files(begin(folder), end(folder));
        std::sort(files.begin(), files.end());
        for (const std::filesystem::path& file : files) {
            std::fprintf(stderr, "%s\n", file.c_str());
            const std::vector<std::uint8_t> bytes = Read(file);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        }
        if (files.empty()) {
            std::fprintf(stderr, "%s: no files\n", argv[i]);
            return 1;
        }
    }
    return argc > 1 ? 0 : 1;
}

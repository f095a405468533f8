#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>

// The page about the pipe shows a program and what it prints: both must be true.

namespace {

std::string ContentOf(const std::string& path)
{
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string OutputOf(const std::string& command)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 256> bytes{};
    while (std::fgets(bytes.data(), bytes.size(), pipe) != nullptr) {
        output += bytes.data();
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

const std::string kPage = ContentOf(VQM_SOURCE_DIR "/Docs/file-pipe.md");

TEST(FilePipePage, QuotesTheExampleVerbatim)
{
    const std::string program = ContentOf(VQM_SOURCE_DIR "/Docs/examples/file_pipe.cpp");
    ASSERT_NE(program, "");
    EXPECT_THAT(kPage, testing::HasSubstr("\n```cpp\n" + program + "```\n"));
}

TEST(FilePipePage, ShowsWhatTheExamplePrints)
{
    std::string directory = testing::TempDir() + "filepipepage-XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    const std::string path = directory + "/example.txt";
    std::string output = OutputOf("DLOG_LEVEL=silent " VQM_EXAMPLE " " + path);
    ASSERT_EQ(output.substr(output.size() - 2), "\r\n"); // a page has no '\r'
    output.erase(output.size() - 2, 1);
    EXPECT_THAT(kPage, testing::HasSubstr("\n```text\n" + output + "```\n"));
    EXPECT_EQ(ContentOf(path), "first line, and more\r\n");
    std::filesystem::remove_all(directory);
}

} // namespace

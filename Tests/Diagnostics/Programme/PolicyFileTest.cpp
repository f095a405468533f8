#include "Diagnostics/Programme/PolicyFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Tests/Data/ScheduleFixture.h"

namespace {

using namespace std::string_literals;

const std::string kDocument =
    "<rsp state='ok'><project id='7' version='1.2'/>"
    "<schedule start_time='09:30' end_time='24:00:00'>"
    "<item id='A' order='2'><name>in&amp;tro</name><size>1<!-- -->2</size><format>mp4</format>"
    "</item></schedule><rech_info IsMaster='1' IPAddr='x'/></rsp>";

class PolicyFile : public testing::Test {
protected:
    PolicyFile() : directory_(MakeDirectory()) {}
    ~PolicyFile() override { std::filesystem::remove_all(directory_); }

    std::string Path() const { return directory_ + "/document"; }

    std::string Write(const std::string& bytes) const
    {
        std::ofstream(Path(), std::ios::binary) << bytes;
        return Path();
    }

    /// What `ReadPolicyFile` ends with, the path left out.
    std::string FailureOf(const std::string& path) const
    {
        try {
            schedule::ReadPolicyFile(path);
        } catch (const std::runtime_error& failure) {
            std::string text = failure.what();
            return text.replace(text.find("'" + path + "'") + 1, path.size(), "FILE");
        }
        return "none";
    }

private:
    static std::string MakeDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "policy-file-XXXXXX").string();
        return mkdtemp(name.data());
    }

    std::string directory_;
};

TEST_F(PolicyFile, HasWhatTheLibraryReads)
{
    const std::string documents[] = {
        kDocument,
        kDocument + "\0 <never/>"s,
        "\xEF\xBB\xBF" + kDocument,
        "<?xml version='1.0' encoding='ISO-8859-1'?><rsp><project version='\xe4'/></rsp>",
        "<any/>",
        "<rsp state='ok'>" + std::string(300000, ' ') + "<schedule/></rsp>",
    };
    for (const std::string& document : documents) {
        _VQMPolicy expected;
        ASSERT_TRUE(CVQMSyncDemoMonitor::GetInstance()->ParseStoredSchedule(Write(document), &expected));
        EXPECT_EQ(Changes(schedule::ReadPolicyFile(Path()).policy), Changes(expected)) << document.substr(0, 300);
    }
    CVQMSyncDemoMonitor::DestroyInstance();
}

TEST_F(PolicyFile, ReportsTextAfterNul)
{
    EXPECT_FALSE(schedule::ReadPolicyFile(Write(kDocument)).textAfterNul);
    EXPECT_FALSE(schedule::ReadPolicyFile(Write(kDocument + "\0\0 \n\0"s)).textAfterNul);
    EXPECT_TRUE(schedule::ReadPolicyFile(Write(kDocument + "\0\0 x"s)).textAfterNul);
}

TEST_F(PolicyFile, SaysWhyAFileCannotBeRead)
{
    EXPECT_EQ(FailureOf(Path()), "cannot read 'FILE': No such file or directory");
    EXPECT_EQ(FailureOf(std::filesystem::temp_directory_path().string()), "cannot read 'FILE': Is a directory");
    EXPECT_EQ(FailureOf(Write(kDocument) + "/more"), "cannot read 'FILE': Not a directory");
    EXPECT_EQ(FailureOf(""), "cannot read 'FILE': No such file or directory");
    std::filesystem::create_symlink("document2", Path() + "2");
    EXPECT_EQ(FailureOf(Path() + "2"), "cannot read 'FILE': Too many levels of symbolic links");
}

TEST_F(PolicyFile, SaysWhyTheLibraryRejectsADocumentAndWhere)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", "line 1, column 1: the document is empty; copy it again"},
        {"\0\0\0\0\0"s,
         "line 1, column 1: the file begins with a zero byte, where a text ends for the TV; copy it again"},
        {"\n\n", "line 3, column 1: the document ends before its first element; copy it again"},
        {"<rsp>\n <a></rsp>",
         "line 2, column 7: '</rsp>' stands here, but 'a' of line 2 is not closed yet; write </a> before it"},
        {"<rsp>\n<schedule>\n", "line 3, column 1: the document ends in the middle: 'schedule' of line 2 is not "
                                "closed; copy it again, or write what is missing"},
        {"<rsp/>\n<rsp/>",
         "line 2, column 1: a second document begins here, after the end of the first; keep one of them"},
        {"\xFF\xFE<\0r\0/\0>\0"s,
         "line 1, column 1: the document is encoded in UTF-16, which editors also call \"Unicode\"; save it as UTF-8"},
        {"\0<\0r\0/\0>"s,
         "line 1, column 1: the document is encoded in UTF-16, which editors also call \"Unicode\"; save it as UTF-8"},
        {"<rsp>\0</rsp>"s, "line 1, column 6: a zero byte ends the document in the middle: 'rsp' of line 1 is not "
                           "closed; copy it again, or write what is missing"},
    };
    for (const auto& [document, why] : cases) {
        EXPECT_EQ(FailureOf(Write(document)), "cannot parse 'FILE': "s + why) << document;
    }
}

TEST_F(PolicyFile, AHugeFileIsReadToItsFirstZeroByteOnly)
{
    std::filesystem::resize_file(Write(kDocument), 1U << 30U);
    const schedule::PolicyFile file = schedule::ReadPolicyFile(Path());
    EXPECT_EQ(file.policy.listSchedule.size(), 1U);
    EXPECT_FALSE(file.textAfterNul);
}

TEST_F(PolicyFile, PipeWithoutWriterReadsAsEmpty)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(FailureOf(Path()), "cannot parse 'FILE': line 1, column 1: the document is empty; copy it again");
}

/// A document of exactly the largest size is read, one byte more is not.
TEST_F(PolicyFile, TheLimitIsExact)
{
    {
        std::ofstream file(Path(), std::ios::binary);
        file << kDocument;
        const std::string blanks(1048576, ' ');
        for (std::size_t size = kDocument.size(); size < schedule::kMaxDocument;) {
            const std::size_t count = std::min(blanks.size(), schedule::kMaxDocument - size);
            file.write(blanks.data(), static_cast<std::streamsize>(count));
            size += count;
        }
    }
    EXPECT_EQ(schedule::ReadPolicyFile(Path()).policy.nProjectID, 7U);
    std::ofstream(Path(), std::ios::app) << ' ';
    EXPECT_EQ(FailureOf(Path()), "cannot read 'FILE': more than 67108864 bytes; expected a schedule document");
}

TEST_F(PolicyFile, LeavesNoDescriptorOpen)
{
    const auto descriptors = [] {
        const auto list = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(list), end(list));
    };
    const auto before = descriptors();
    static_cast<void>(schedule::ReadPolicyFile(Write(kDocument)));
    static_cast<void>(FailureOf(Write("<")));
    static_cast<void>(FailureOf("/"));
    EXPECT_EQ(descriptors(), before);
}

} // namespace

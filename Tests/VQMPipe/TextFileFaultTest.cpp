#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

#include "Common/VQMSyncDemoMonitor.h"
#include "Data/VQMDataConstants.h"
#include "Tests/Data/OpenConstants.h"
#include "Tests/Support/ProcessLimits.h"
#include "Tests/Support/WithoutOverride.h"
#include "Tests/VQMPipe/FilePipeTest.h"
#include "VQMPipe/VQMTextFile.h"

// The reader of whole text files and its two users, on files that are not what they seem or do not
// stay what they were.

namespace {

namespace fs = std::filesystem;

constexpr char kInvalidHandle[] = "CVQMDataConstants::Initialize - PIPEHANDLE handle is INVALID_HANDLE\n";
constexpr char kReadFail[] = "CVQMDataConstants::Initialize - xml file read fail\n";
constexpr char kParseFail[] = "CVQMDataConstants::Initialize - xml Deserialize fail\n";

/// Constants and a schedule in one document.
const std::string kDocument = "<rsp state='ok'><Data key='a' value='new'/><project version='new'/></rsp>";

class TextFileFault : public FilePipe {
protected:
    TextFileFault()
    {
        OpenConstants::m_DataCache = {{"a", "old"}};
        policy_.strVersion = "old";
    }

    ~TextFileFault() override
    {
        recorder::SetListener(nullptr);
        OpenConstants::m_DataCache.clear();
        CVQMSyncDemoMonitor::DestroyInstance();
    }

    /// Reads a file. A file that is to change does so before each read.
    void ExpectRead(const std::string& path, VQMTextFileResult result, const std::string& text)
    {
        Change();
        const std::size_t before = OpenDescriptors();
        CVQMDataBufferObject buffer;
        Fill(buffer, "before ");
        EXPECT_EQ(VQMReadTextFile(path, 10, buffer), result);
        EXPECT_EQ(TextOf(buffer), "before " + text);
        EXPECT_EQ(OpenDescriptors(), before);
    }

    /// Neither user takes anything from the file.
    void ExpectRefused(const std::string& path, const char* reason)
    {
        const std::size_t before = OpenDescriptors();
        Change();
        recorder::Clear();
        EXPECT_FALSE(CVQMDataConstants::Initialize(path));
        EXPECT_EQ(recorder::Take().back(),
                  recorder::LogOf("Quillmere", "VQMDataConstants.cpp").Debug("Initialize", reason));
        EXPECT_EQ(OpenConstants::m_DataCache, (std::map<std::string, std::string>{{"a", "old"}}));

        Change();
        EXPECT_FALSE(Monitor().ParseStoredSchedule(path, &policy_));
        EXPECT_EQ(policy_.strVersion, "old");
        Change();
        EXPECT_FALSE(Monitor().ParseStoredSchedule(path, nullptr));
        _VQMPolicy current;
        Monitor().GetCurrentPolicy(current);
        EXPECT_TRUE(current.bError);
        EXPECT_EQ(current.strVersion, "");
        EXPECT_EQ(OpenDescriptors(), before);
    }

    /// Both users take the whole document.
    void ExpectTaken(const std::string& path)
    {
        Change();
        EXPECT_TRUE(CVQMDataConstants::Initialize(path));
        EXPECT_EQ(OpenConstants::m_DataCache["a"], "new");
        Change();
        EXPECT_TRUE(Monitor().ParseStoredSchedule(path, &policy_));
        EXPECT_EQ(policy_.strVersion, "new");
    }

    /// From now on, when a file is opened to read, `prepare` makes it and `change` changes it
    /// right after the first line that ends with `when`.
    void OnReading(std::function<void()> prepare, const std::string& when, std::function<void()> change)
    {
        prepare_ = std::move(prepare);
        recorder::SetListener([this, when, change = std::move(change)](const std::string& line) {
            const bool now = line.size() >= when.size() && line.substr(line.size() - when.size()) == when;
            if (now && std::exchange(toBeChanged_, false)) {
                change();
            }
        });
    }

    static CVQMSyncDemoMonitor& Monitor() { return *CVQMSyncDemoMonitor::GetInstance(); }

    _VQMPolicy policy_;

private:
    void Change()
    {
        if (prepare_) {
            prepare_();
            toBeChanged_ = true;
        }
    }

    std::function<void()> prepare_;
    bool toBeChanged_ = false;
};

TEST_F(TextFileFault, FilesThatDoNotOpenAreReportedAsNotOpened)
{
    fs::create_symlink("loop", Path("loop"));
    fs::create_symlink("nowhere", Path("dangling"));
    MakeFile("file", kDocument);
    fs::permissions(MakeFile("closed", kDocument), fs::perms::none);
    const WithoutOverride plainUser;
    for (const std::string& path : {Path("missing"), Path("loop"), Path("dangling"), Path("file/below"), Path("closed"),
                                    Path(std::string(300, 'n'))}) {
        SCOPED_TRACE(path.substr(0, 80));
        ExpectRead(path, VQMTextFileResult::NotOpened, "");
        ExpectRefused(path, kInvalidHandle);
    }
}

TEST_F(TextFileFault, WithoutDescriptorsNothingIsOpened)
{
    const std::string path = MakeFile("file", kDocument);
    {
        const NoDescriptors none;
        CVQMDataBufferObject buffer;
        EXPECT_EQ(VQMReadTextFile(path, 10, buffer), VQMTextFileResult::NotOpened);
        recorder::Clear();
        EXPECT_FALSE(CVQMDataConstants::Initialize(path));
        EXPECT_EQ(recorder::Take().back(),
                  recorder::LogOf("Quillmere", "VQMDataConstants.cpp").Debug("Initialize", kInvalidHandle));
        EXPECT_FALSE(Monitor().ParseStoredSchedule(path, &policy_));
        EXPECT_EQ(policy_.strVersion, "old");
    }
    ExpectTaken(path);
}

TEST_F(TextFileFault, AnEmptyPathIsNotOpened)
{
    ExpectRead("", VQMTextFileResult::NotOpened, "");
    ExpectRefused("", "CVQMDataConstants::Initialize - filePath is empty\n");
}

TEST_F(TextFileFault, ADirectoryOpensAndIsNotRead)
{
    const std::string path = Path("directory");
    fs::create_directory(path);
    MakeFile("directory/entry", ""); // else it measures 0 on some file systems
    ExpectRead(path, VQMTextFileResult::NotRead, "");
    ExpectRefused(path, kReadFail);
}

TEST_F(TextFileFault, FilesWithoutASizeAreEmptyTexts)
{
    const std::string empty = MakeFile("empty", "");
    for (const std::string& path :
         {empty, std::string("/dev/null"), std::string("/dev/zero"), std::string("/proc/self/status")}) {
        SCOPED_TRACE(path);
        ExpectRead(path, VQMTextFileResult::Complete, std::string(1, '\0'));
        ExpectRefused(path, kParseFail);
    }
}

TEST_F(TextFileFault, AFifoIsAnEmptyTextOnceItHasAWriter)
{
    const std::string path = Path("fifo");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] {
        const int fifo = open(path.c_str(), O_WRONLY);
        EXPECT_GE(fifo, 0);
        close(fifo);
    });
    CVQMDataBufferObject buffer;
    EXPECT_EQ(VQMReadTextFile(path, 10, buffer), VQMTextFileResult::Complete);
    EXPECT_EQ(TextOf(buffer), std::string(1, '\0'));
    writer.join();
}

TEST_F(TextFileFault, AFileThatVanishesBeforeItIsOpenedIsNotOpened)
{
    const std::string path = Path("file");
    OnReading([this] { MakeFile("file", kDocument); }, "CVQMFilePipe::FOpen - RequestCommand is Read\n",
              [&] { fs::remove(path); });
    ExpectRead(path, VQMTextFileResult::NotOpened, "");
    ExpectRefused(path, kInvalidHandle);
}

TEST_F(TextFileFault, AFileThatShrinksIsFilledUpWithZeroBytesAndDoesNotParse)
{
    const std::string path = Path("file");
    const std::string measured = ": " + std::to_string(kDocument.size()) + " \n";
    for (const std::size_t size : {0U, 1U, 10U, 15U}) {
        SCOPED_TRACE(size);
        OnReading([this] { MakeFile("file", kDocument); }, measured, [&] { fs::resize_file(path, size); });
        ExpectRead(path, VQMTextFileResult::Complete,
                   kDocument.substr(0, size) + std::string(kDocument.size() - size + 1, '\0'));
        ExpectRefused(path, kParseFail);
    }
}

TEST_F(TextFileFault, AFileThatGrowsIsReadInItsOldSize)
{
    const std::string path = Path("file");
    OnReading([this] { MakeFile("file", kDocument); }, ": " + std::to_string(kDocument.size()) + " \n",
              [&] { std::ofstream(path, std::ios::app) << "</no><document>"; });
    ExpectRead(path, VQMTextFileResult::Complete, kDocument + '\0');
    ExpectTaken(path);
}

TEST_F(TextFileFault, AFileThatIsRemovedOrReplacedOnceItIsOpenIsReadAsItWas)
{
    const std::string path = Path("file");
    const std::string measured = ": " + std::to_string(kDocument.size()) + " \n";
    OnReading([this] { MakeFile("file", kDocument); }, measured, [&] { fs::remove(path); });
    ExpectRead(path, VQMTextFileResult::Complete, kDocument + '\0');
    ExpectTaken(path);
    OnReading([this] { MakeFile("file", kDocument); }, measured,
              [&] { fs::rename(MakeFile("other", "no document"), path); });
    ExpectRead(path, VQMTextFileResult::Complete, kDocument + '\0');
    ExpectTaken(path);
}

} // namespace

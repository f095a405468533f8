#include <cerrno>
#include <climits>
#include <exception>
#include <stdexcept>
#include <system_error>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Common/VQMConfig.h"
#include "Data/VQMDataConstants.h"
#include "Diagnostics/Readiness/DocumentFile.h"
#include "Diagnostics/Readiness/FileTree.h"
#include "Diagnostics/Readiness/MissingFile.h"
#include "Diagnostics/Readiness/Readiness.h"
#include "Diagnostics/Text/InputFile.h"
#include "Platform/common/FileDescriptor.h"

namespace readiness {

namespace {

constexpr std::size_t kReadUnit = 65536;

/// The library has no way to list or forget constants, but lets derived classes see its cache.
struct OpenConstants : CVQMDataConstants {
    using CVQMDataConstants::m_DataCache;
};

[[noreturn]] void Fail(const char* what)
{
    throw std::runtime_error(std::string("cannot ") + what + " stdin: " + std::generic_category().message(errno));
}

/// What stdin holds, as a file with a path: the library reads nothing else.
class StdinCopy {
public:
    StdinCopy() : file_(memfd_create("stdin", MFD_CLOEXEC))
    {
        if (!file_.IsOpen()) {
            Fail("copy");
        }
        Fill();
    }

    std::string Path() const { return "/proc/self/fd/" + std::to_string(file_.Get()); }

private:
    void Fill() const
    {
        std::string buffer(kReadUnit, '\0');
        // One piece beyond what the parser takes is enough to be refused.
        for (std::size_t total = 0; total <= INT_MAX;) {
            const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
            if (count == 0) {
                return;
            }
            if (count < 0) {
                if (errno != EINTR) {
                    Fail("read");
                }
                continue;
            }
            if (write(file_.Get(), buffer.data(), static_cast<std::size_t>(count)) != count) {
                Fail("copy");
            }
            total += static_cast<std::size_t>(count);
        }
    }

    platform::FileDescriptor file_;
};

void LoadFrom(const std::string& path, Constants& constants)
{
    DocumentFile file;
    try {
        file = ReadExamined(path, [&constants](const std::string& opened) {
            const bool loaded = CVQMDataConstants::Initialize(opened);
            constants.values = OpenConstants::m_DataCache;
            return loaded;
        });
    } catch (const std::exception& error) {
        file = {DocumentState::kUnreadable, error.what()};
    }
    constants.state = file.state;
    constants.problem = file.problem;
}

} // namespace

const std::string* Constants::ScheduleFile() const
{
    const auto found = values.find(kScheduleFile);
    return found == values.end() ? nullptr : &found->second;
}

Constants LoadConstants(const Places& places)
{
    const FileTree tree(places.root);
    OpenConstants::m_DataCache.clear();
    Constants constants;
    if (!places.schedule.empty()) {
        constants.state = DocumentState::kNotNeeded;
    } else if (places.constants == kStdin) {
        constants.path = "<stdin>";
        const StdinCopy copy;
        LoadFrom(copy.Path(), constants);
    } else {
        constants.path = places.constants.empty() ? tree.Name(VQM_CONSTANTS_FILE) : places.constants;
        const std::string place = tree.Locate(constants.path);
        LoadFrom(place, constants);
        if (constants.state == DocumentState::kMissing) {
            constants.problem = "is missing" + WhyMissing(constants.path, tree) + LookAlikeOf(constants.path, tree);
        }
    }
    return constants;
}

} // namespace readiness

#include "Tools/Terminal/ProgressBar.h"

#include <algorithm>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds kDelay{1000};
constexpr std::chrono::milliseconds kInterval{100};
constexpr std::size_t kNarrowestBar = 4;
constexpr std::size_t kWidestBar = 40;
constexpr std::size_t kUsualColumns = 80;

} // namespace

ProgressBar::ProgressBar(Writer write, std::size_t columns, Now now)
    : write_(std::move(write)), columns_(columns), now_(std::move(now)), next_(now_() + kDelay)
{
}

ProgressBar::~ProgressBar()
{
    if (drawn_ > 0) {
        Draw("");
        write_("\r");
    }
}

void ProgressBar::Show(std::size_t done, std::size_t total, const std::string& what)
{
    const Clock::time_point now = now_();
    if (now < next_ || total == 0) {
        return;
    }
    next_ = now + kInterval;
    const std::string whole = std::to_string(total);
    std::string part = std::to_string(done);
    part.insert(0, whole.size() - std::min(part.size(), whole.size()), ' '); // so that the bar keeps its width
    const std::string text = " " + part + " of " + whole + " " + what;
    std::string line;
    // The bar takes what the words leave over. The last column stays free: a full line would begin another one.
    const std::size_t room = columns_ > text.size() + 3 ? columns_ - text.size() - 3 : 0;
    if (const std::size_t width = std::min(room, kWidestBar); width >= kNarrowestBar) {
        const auto full = static_cast<std::size_t>(static_cast<unsigned long long>(width) * done / total);
        line = "[" + std::string(full, '#') + std::string(width - full, '.') + "]";
    }
    line += text;
    Draw(line.substr(0, columns_ > 0 ? columns_ - 1 : 0));
}

void ProgressBar::Draw(const std::string& line)
{
    const std::size_t rest = drawn_ > line.size() ? drawn_ - line.size() : 0;
    write_("\r" + line + std::string(rest, ' '));
    drawn_ = line.size();
}

std::size_t TerminalColumns()
{
    if (isatty(STDERR_FILENO) != 1) {
        return 0;
    }
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualColumns;
}

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

/// A line that fills as work gets done. It shows after a second: quick work shows none.
class ProgressBar {
public:
    using Clock = std::chrono::steady_clock;
    using Writer = std::function<void(const std::string& text)>;
    using Now = std::function<Clock::time_point()>;

    /// Draws with `write`, on a line of `columns` characters. The second begins here.
    ProgressBar(Writer write, std::size_t columns, Now now = Clock::now);

    /// Erases what it has drawn.
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(std::size_t done, std::size_t total, const std::string& what);

private:
    void Draw(const std::string& line);

    Writer write_;
    std::size_t columns_;
    Now now_;
    Clock::time_point next_; ///< nothing is drawn before
    std::size_t drawn_ = 0;  ///< characters on the line
};

/// How many columns the terminal on stderr has; 0 when stderr is none.
std::size_t TerminalColumns();

#pragma once

#include <chrono>
#include <cstdlib>
#include <thread>

/// How long a test waits for what must happen: VQM_TEST_PATIENCE seconds, else 30. It bounds the
/// test that fails; a test that passes does not wait it out.
inline std::chrono::duration<double> TestPatience()
{
    constexpr double kUsualSeconds = 30;
    const char* wanted = std::getenv("VQM_TEST_PATIENCE");
    const double seconds = wanted != nullptr ? std::strtod(wanted, nullptr) : 0;
    return std::chrono::duration<double>(seconds > 0 ? seconds : kUsualSeconds);
}

/// Calls `step` until `condition` holds. Returns false when the patience is used up first.
///
/// `step` lets the awaited thing go on, for example one round of a main loop; it must return soon.
template <typename Condition, typename Step>
bool Eventually(Condition condition, Step step)
{
    const auto end = std::chrono::steady_clock::now() + TestPatience();
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        step();
    }
    return true;
}

/// The same for what other threads and processes do: looks again every few milliseconds.
template <typename Condition>
bool Eventually(Condition condition)
{
    return Eventually(condition, [] { std::this_thread::sleep_for(std::chrono::milliseconds(2)); });
}

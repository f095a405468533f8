#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

/// Runs each piece of work on a separate thread; none starts before all threads exist.
inline void RunTogether(const std::vector<std::function<void()>>& works)
{
    std::atomic<std::size_t> missing = works.size();
    std::vector<std::thread> threads;
    for (const std::function<void()>& work : works) {
        threads.emplace_back([&missing, &work] {
            --missing;
            while (missing != 0) {
                std::this_thread::yield();
            }
            work();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Runs `work(0)` to `work(count - 1)` so.
inline void RunTogether(int count, const std::function<void(int)>& work)
{
    std::vector<std::function<void()>> works;
    for (int number = 0; number < count; ++number) {
        works.emplace_back([&work, number] { work(number); });
    }
    RunTogether(works);
}

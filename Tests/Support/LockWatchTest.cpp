#include "Tests/Support/LockWatch.h"

#include <mutex>
#include <thread>

#include <boost/thread/mutex.hpp>
#include <gmock/gmock.h>

// The watch itself: what it does not notice, no test that relies on it would.

namespace {

TEST(LockWatch, CountsUpAndDown)
{
    locks::Reset();
    EXPECT_EQ(locks::MostHeld(), 0);
    boost::mutex first;
    std::mutex second;
    {
        const boost::mutex::scoped_lock outer(first);
        EXPECT_EQ(locks::Held(), 1);
        EXPECT_EQ(locks::MostHeld(), 1);
        {
            const std::lock_guard<std::mutex> inner(second);
            EXPECT_EQ(locks::Held(), 2);
        }
        EXPECT_EQ(locks::Held(), 1);
    }
    EXPECT_EQ(locks::Held(), 0);
    EXPECT_EQ(locks::MostHeld(), 2);
    locks::Reset();
    EXPECT_EQ(locks::MostHeld(), 0);
}

TEST(LockWatch, OneLockAfterTheOtherIsNotTwo)
{
    locks::Reset();
    boost::mutex mutexes[2];
    for (boost::mutex& mutex : mutexes) {
        const boost::mutex::scoped_lock lock(mutex);
    }
    EXPECT_EQ(locks::MostHeld(), 1);
}

TEST(LockWatch, AnAttemptCountsWhenItSucceeds)
{
    locks::Reset();
    boost::mutex mutex;
    ASSERT_TRUE(mutex.try_lock());
    EXPECT_EQ(locks::Held(), 1);
    EXPECT_FALSE(mutex.try_lock());
    EXPECT_EQ(locks::MostHeld(), 1);
    mutex.unlock();
    EXPECT_EQ(locks::Held(), 0);
}

TEST(LockWatch, EachThreadCountsForItself)
{
    locks::Reset();
    boost::mutex mine;
    boost::mutex theirs;
    const boost::mutex::scoped_lock lock(mine);
    std::thread([&theirs] {
        EXPECT_EQ(locks::Held(), 0);
        const boost::mutex::scoped_lock other(theirs);
        EXPECT_EQ(locks::Held(), 1);
    }).join();
    EXPECT_EQ(locks::Held(), 1);
    EXPECT_EQ(locks::MostHeld(), 1) << "two threads with one each are not one thread with two";
}

} // namespace

#pragma once

#include <algorithm>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

/// While one exists, the process may have no more than this of a resource.
class ProcessLimit {
public:
    ProcessLimit(__rlimit_resource resource, rlim_t limit) : resource_(resource)
    {
        EXPECT_EQ(getrlimit(resource_, &saved_), 0);
        struct rlimit lowered = saved_;
        lowered.rlim_cur = std::min(limit, saved_.rlim_cur);
        EXPECT_EQ(setrlimit(resource_, &lowered), 0);
    }
    ~ProcessLimit() { EXPECT_EQ(setrlimit(resource_, &saved_), 0); }
    ProcessLimit(const ProcessLimit&) = delete;
    ProcessLimit& operator=(const ProcessLimit&) = delete;

private:
    __rlimit_resource resource_;
    struct rlimit saved_ = {};
};

/// While one exists, every descriptor that the process may have is taken.
class NoDescriptors {
public:
    NoDescriptors()
    {
        for (int taken = open("/dev/null", O_RDONLY); taken >= 0; taken = open("/dev/null", O_RDONLY)) {
            taken_.push_back(taken);
        }
    }
    ~NoDescriptors()
    {
        for (const int taken : taken_) {
            close(taken);
        }
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    ProcessLimit limit_{RLIMIT_NOFILE, 64}; // else they would be many
    std::vector<int> taken_;
};

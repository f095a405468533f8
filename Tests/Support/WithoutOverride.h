#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

/// While one exists, its thread lacks the rights by which a superuser passes any permission.
class WithoutOverride {
public:
    WithoutOverride()
    {
        Get(saved_);
        __user_cap_data_struct reduced[2] = {saved_[0], saved_[1]};
        reduced[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        Set(reduced);
    }
    ~WithoutOverride() { Set(saved_); }
    WithoutOverride(const WithoutOverride&) = delete;
    WithoutOverride& operator=(const WithoutOverride&) = delete;

private:
    static void Get(__user_cap_data_struct* data)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capget, &header, data), 0);
    }
    static void Set(__user_cap_data_struct* data)
    {
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        EXPECT_EQ(syscall(SYS_capset, &header, data), 0);
    }

    __user_cap_data_struct saved_[2] = {};
};

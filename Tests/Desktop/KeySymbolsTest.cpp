#include "Platform/desktop/x11/KeySymbols.h"

#include <cstdlib>

#include <gtest/gtest.h>

// Xlib reads the database once in a process, so each case runs in a separate process.

TEST(KeySymbols, LeaveNoVariableBehind)
{
    unsetenv("XKEYSYMDB");
    EXPECT_TRUE(desktop::AddToolKeySymbols());
    EXPECT_EQ(std::getenv("XKEYSYMDB"), nullptr);
}

TEST(KeySymbols, RestoreTheUsersVariable)
{
    setenv("XKEYSYMDB", "/some/where", 1);
    EXPECT_TRUE(desktop::AddToolKeySymbols());
    EXPECT_STREQ(std::getenv("XKEYSYMDB"), "/some/where");
}

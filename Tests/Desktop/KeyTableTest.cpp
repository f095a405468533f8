#include "Platform/desktop/x11/KeyTable.h"

#include <set>
#include <string>

#include <gtest/gtest.h>
#include <X11/Xlib.h>

#include "Platform/desktop/x11/KeySymbols.h"

using namespace desktop;

namespace {

constexpr int kHandedBack[] = {75, 76, 17, 10, 31, 26, 27, 28, 29, 30};

class KeyTable : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(AddToolKeySymbols()); }
};

} // namespace

TEST_F(KeyTable, EveryIdHasItsOwnSymbol)
{
    std::set<KeySym> symbols;
    for (int keyId = 0; keyId < kKeyIds; ++keyId) {
        ASSERT_NE(KeyName(keyId), nullptr) << keyId;
        const KeySym symbol = XStringToKeysym(KeyName(keyId));
        EXPECT_NE(symbol, static_cast<KeySym>(NoSymbol)) << KeyName(keyId);
        EXPECT_TRUE(symbols.insert(symbol).second) << KeyName(keyId) << " is there twice";
    }
    EXPECT_EQ(symbols.size(), 193U);
}

TEST_F(KeyTable, IdsOutsideHaveNoName)
{
    EXPECT_EQ(KeyName(-1), nullptr);
    EXPECT_EQ(KeyName(193), nullptr);
}

TEST_F(KeyTable, OnlyVendorKeysAreKept)
{
    const std::set<int> handedBack(std::begin(kHandedBack), std::end(kHandedBack));
    for (int keyId = 0; keyId < kKeyIds; ++keyId) {
        const std::string name = KeyName(keyId);
        if (handedBack.count(keyId) == 0) {
            EXPECT_EQ(name.substr(0, 4), "XF86") << "letters, digits and editing keys stay with the desktop: " << name;
            EXPECT_EQ(name.find("Switch_VT"), std::string::npos) << name;
            EXPECT_EQ(name.find("Numeric"), std::string::npos) << name;
        }
    }
}

TEST_F(KeyTable, TheReleasedKeysAreThoseThatEveryProgramNeeds)
{
    std::set<std::string> names;
    for (const int keyId : kHandedBack) {
        names.insert(KeyName(keyId));
        EXPECT_FALSE(IsToolKey(keyId));
    }
    EXPECT_EQ(names, (std::set<std::string>{"XF86PowerOff", "XF86Close", "Up", "Down", "Left", "Right", "Return",
                                            "XF86Back", "XF86AudioRaiseVolume", "XF86AudioLowerVolume"}));
}

TEST_F(KeyTable, HasTwoToolKeys)
{
    std::set<std::string> names;
    for (int keyId = -1; keyId <= kKeyIds; ++keyId) {
        if (IsToolKey(keyId)) {
            names.insert(KeyName(keyId));
        }
    }
    EXPECT_EQ(names, (std::set<std::string>{"XF86SimpleMenu", "XF86More"}));
}

TEST_F(KeyTable, ToolKeySymbolsTranslateBothWays)
{
    for (const char* name : {"XF86SimpleMenu", "XF86More"}) {
        EXPECT_STREQ(XKeysymToString(XStringToKeysym(name)), name);
    }
    EXPECT_EQ(XStringToKeysym("XF86SimpleMenu"), 0x1008FFF1U);
    EXPECT_EQ(XStringToKeysym("XF86More"), 0x1008FFF2U);
}

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Diagnostics/Readiness/FileTree.h"

namespace {

namespace fs = std::filesystem;
using readiness::FileTree;

class FileTreeTest : public testing::Test {
protected:
    FileTreeTest()
    {
        std::string name = testing::TempDir() + "treeXXXXXX";
        root_ = mkdtemp(name.data());
        fs::create_directories(root_ + "/a/b");
    }
    ~FileTreeTest() override { fs::remove_all(root_); }

    std::string root_;
};

TEST_F(FileTreeTest, LinksLeadWhereTheTvWouldGo)
{
    fs::create_symlink("/a", root_ + "/absolute");
    fs::create_symlink("../../../../a/b", root_ + "/a/above");
    fs::create_symlink("absolute/b", root_ + "/chain");
    fs::create_symlink("/gone/file", root_ + "/dangling");
    const std::pair<const char*, const char*> kCases[] = {
        {"/a/b", "/a/b"},     {"/absolute/b/x", "/a/b/x"}, {"/a/above/x", "/a/b/x"},    {"/chain/x", "/a/b/x"},
        {"/chain/", "/a/b/"}, {"/dangling", "/gone/file"}, {"/a/../../../a/b", "/a/b"}, {"/none/x", "/none/x"},
        {"//a//./b", "/a/b"},
    };
    const FileTree tree(root_ + "//");
    for (const auto& [path, expected] : kCases) {
        EXPECT_EQ(tree.Locate(tree.Name(path)), root_ + expected) << path;
    }
}

TEST_F(FileTreeTest, ALinkToItselfIsLeftToTheSystem)
{
    fs::create_symlink("loop", root_ + "/loop");
    const FileTree tree(root_);
    EXPECT_EQ(tree.Locate(root_ + "/loop/x"), root_ + "/loop/x");
}

TEST_F(FileTreeTest, WhatIsOutsideComesBackUnchanged)
{
    EXPECT_EQ(FileTree(root_).Locate("/etc/../etc/hosts"), "/etc/../etc/hosts");
    EXPECT_EQ(FileTree(root_).Locate(root_ + "more/x"), root_ + "more/x");
    EXPECT_TRUE(FileTree("/").IsThisMachines());
    EXPECT_EQ(FileTree("/").Locate("/a/../b"), "/a/../b");
}

TEST_F(FileTreeTest, ARootThatIsNoDirectoryIsRefused)
{
    std::ofstream(root_ + "/file") << "x";
    EXPECT_THROW(FileTree(root_ + "/file"), std::runtime_error);
    EXPECT_THROW(FileTree(root_ + "/none"), std::runtime_error);
}

} // namespace

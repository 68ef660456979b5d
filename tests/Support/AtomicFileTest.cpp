// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/AtomicFile.h"

#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>

namespace vantrell::testing {

namespace {

int entryCount(const std::filesystem::path &folder) {
    return int(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(AtomicFile, replacesWholeContentsAndLeavesNothingElse) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "file";
    ASSERT_TRUE(writeFileAtomically(path, std::string(100000, 'a')));
    ASSERT_TRUE(writeFileAtomically(path, "short"));
    EXPECT_EQ(readFile(path).value_or(""), "short");
    EXPECT_EQ(entryCount(folder.path()), 1);
}

TEST(AtomicFile, keepsTheOldFileWhenTheNewOneCannotBeWritten) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "file";
    ASSERT_TRUE(writeFileAtomically(path, "old"));

    EXPECT_FALSE(writeFileAtomically(folder / "missing/file", "new"));

    // A folder in the way makes the rename fail after everything was written.
    std::filesystem::create_directories(folder / "folder/inside");
    const auto blocked = writeFileAtomically(folder / "folder", "new");
    ASSERT_FALSE(blocked);
    EXPECT_EQ(blocked.error().domain, "posix");
    EXPECT_EQ(readFile(path).value_or(""), "old");
    EXPECT_EQ(entryCount(folder.path()), 2);
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/Trash.h"

#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace vantrell::testing {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

std::string noteOf(const fs::path &trashed) {
    return fileContents(trashed.parent_path().parent_path() / "info" /
                        (trashed.filename().string() + ".trashinfo"));
}

class TrashTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder / "data"};
};

TEST_F(TrashTest, keepsAFileWithItsOldPlaceAndNoTwoUnderOneName) {
    const fs::path file = folder / "Capture ü 1%.mp4";
    std::vector<fs::path> trashed;
    for (int i = 0; i < 3; ++i) {
        writeTestFile(file, 1000, std::uint64_t(i) + 1);
        const std::string bytes = sha256Of(file);
        const auto moved = Trash::moveToTrash(file);
        ASSERT_TRUE(moved) << moved.error().message;
        EXPECT_FALSE(fs::exists(file));
        EXPECT_EQ(sha256Of(*moved), bytes);
        trashed.push_back(*moved);
    }
    EXPECT_EQ(trashed[0], folder / "data/Trash/files/Capture ü 1%.mp4");
    EXPECT_EQ(trashed[2].filename(), "Capture ü 1% 3.mp4");
    const std::string note = noteOf(trashed[2]);
    EXPECT_THAT(note,
                HasSubstr("[Trash Info]\nPath=" + folder.path().string() + "/Capture%20%C3%BC%201%25.mp4\n"));
    const QString date = QString::fromStdString(note.substr(note.find("Date=") + 5, 19));
    EXPECT_NEAR(double(QDateTime::fromString(date, Qt::ISODate).secsTo(QDateTime::currentDateTime())), 0, 60);
    struct stat info{};
    ASSERT_EQ(::stat((folder / "data/Trash").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    // A folder goes whole; a link goes itself, and what it leads to stays.
    fs::create_directory(folder / "inner");
    writeTestFile(folder / "inner/kept", 10);
    fs::create_symlink(folder / "inner", folder / "link");
    ASSERT_TRUE(Trash::moveToTrash(folder / "link"));
    EXPECT_TRUE(fs::exists(folder / "inner/kept"));
    const auto whole = Trash::moveToTrash(folder / "inner/../inner");
    ASSERT_TRUE(whole);
    EXPECT_TRUE(fs::exists(*whole / "kept"));
}

TEST_F(TrashTest, leavesTheFileAloneWhenItCannotGo) {
    const auto gone = Trash::moveToTrash(folder / "no such file");
    ASSERT_FALSE(gone);
    EXPECT_EQ(gone.error().code, ENOENT);
    EXPECT_FALSE(Trash::moveToTrash("/"));

    // Somebody else's place in the name of the trash.
    const fs::path file = folder / "movie.mp4";
    writeTestFile(file, 100);
    fs::create_directories(folder / "elsewhere");
    fs::create_directories(folder / "data/Trash");
    fs::create_symlink(folder / "elsewhere", folder / "data/Trash/files");
    EXPECT_FALSE(Trash::moveToTrash(file));
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(fs::is_empty(folder / "elsewhere"));
}

TEST_F(TrashTest, usesTheTopOfAnotherDisk) {
    struct stat here{}, there{};
    const fs::path top = "/dev/shm";
    ASSERT_EQ(::stat(folder.path().c_str(), &here), 0);
    if (::stat(top.c_str(), &there) != 0 || here.st_dev == there.st_dev)
        GTEST_SKIP() << "one disk only";
    const std::string name = "vantrell-trash-test." + std::to_string(::getpid());
    fs::create_directories(top / name / "deep");
    writeTestFile(top / name / "deep/movie.mp4", 100);
    const auto moved = Trash::moveToTrash(top / name / "deep/movie.mp4");
    fs::remove_all(top / name);
    ASSERT_TRUE(moved) << moved.error().message;
    EXPECT_EQ(moved->parent_path(), top / (".Trash-" + std::to_string(::getuid())) / "files");
    EXPECT_THAT(noteOf(*moved), HasSubstr("\nPath=" + name + "/deep/movie.mp4\n"));
    fs::remove(*moved);
    const fs::path trash = moved->parent_path().parent_path();
    fs::remove(trash / "info" / (moved->filename().string() + ".trashinfo"));
    // Only when there was nothing else in it.
    std::error_code error;
    for (const fs::path &part : {trash / "files", trash / "info", trash})
        fs::remove(part, error);
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureStorage.h"

#include "TestSupport/TemporaryFolder.h"

#include <QUuid>

#include <gmock/gmock.h>

#include <fstream>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

class CaptureStorageTest : public ::testing::Test {
protected:
    void SetUp() override { qputenv("XDG_DATA_HOME", data.path().c_str()); }

    static std::filesystem::path makeFile(const std::filesystem::path &path) {
        std::ofstream(path) << "x";
        return path;
    }

    TemporaryFolder data;
};

TEST_F(CaptureStorageTest, namesFilesByTimeAndKeepsTwoOfOneSecondApart) {
    const std::filesystem::path first = CaptureStorage::newFileURL("mov");
    EXPECT_THAT(first.filename().string(),
                ::testing::MatchesRegex("Vantrell Capture [0-9]{4}-[0-9]{2}-[0-9]{2} "
                                        "[0-9]{2}\\.[0-9]{2}\\.[0-9]{2} [0-9A-F]{4}\\.mov"));
    EXPECT_EQ(first.parent_path(), data / "VantrellCapture/Captures");
    EXPECT_TRUE(std::filesystem::is_directory(first.parent_path()));
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_NE(first, CaptureStorage::newFileURL("mov"));

    const QUuid id("{0f3c1a52-9b77-4d2e-8c11-5a6b7c8d9e0f}");
    EXPECT_EQ(CaptureStorage::sidecarURL(id, "thumb.jpg").filename(),
              "0F3C1A52-9B77-4D2E-8C11-5A6B7C8D9E0F.thumb.jpg");
    EXPECT_EQ(CaptureStorage::journalURL(), data / "VantrellCapture/upload-journal.json");
    EXPECT_EQ(CaptureStorage::analyticsQueueURL(), data / "VantrellCapture/analytics-queue.json");
}

TEST_F(CaptureStorageTest, prunesByAgeExceptWhatIsKept) {
    const std::filesystem::path folder = CaptureStorage::directory();
    const std::filesystem::path movie = makeFile(folder / "movie.mov");
    const std::filesystem::path pending = makeFile(folder / "pending.mov");
    const std::filesystem::path hidden = makeFile(folder / ".hidden");
    std::filesystem::create_directories(folder / "stray/inside");
    const std::filesystem::path journal = makeFile(CaptureStorage::journalURL());
    const auto now = std::chrono::system_clock::now();

    CaptureStorage::pruneOldFiles({}, now + 24h * 6);
    EXPECT_TRUE(std::filesystem::exists(movie));

    CaptureStorage::pruneOldFiles({pending.string()}, now + 24h * 8);
    EXPECT_FALSE(std::filesystem::exists(movie));
    EXPECT_FALSE(std::filesystem::exists(hidden));
    EXPECT_FALSE(std::filesystem::exists(folder / "stray"));
    EXPECT_TRUE(std::filesystem::exists(pending));
    EXPECT_TRUE(std::filesystem::exists(journal));

    // A pending file is recognised however its path is written.
    std::filesystem::create_symlink(folder, data / "link");
    for (const std::filesystem::path &spelling :
         {folder / "../Captures/./pending.mov", data / "link/pending.mov"}) {
        CaptureStorage::pruneOldFiles({spelling.string()}, now + 24h * 8);
        EXPECT_TRUE(std::filesystem::exists(pending)) << spelling;
    }
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CapturePruning.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieJournal.h"
#include "Recording/RecordingRecord.h"
#include "Support/AtomicFile.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "Upload/JournalText.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using ::testing::UnorderedElementsAre;

namespace vantrell::testing {

namespace {

TEST(CapturePruning, deletesOldCapturesAndKeepsWhatIsUploadedRecordedOrToBeRecovered) {
    const TemporaryFolder folder;
    const ScopedEnvironment data("XDG_DATA_HOME", folder.path().string());
    const std::filesystem::path captures = CaptureStorage::directory();
    const auto write = [&](const std::string &name, const std::string &text = "x") {
        ASSERT_TRUE(writeFileAtomically(captures / name, text));
    };
    write("old.mov");
    write("old.json");
    write("wanted.mov");
    write("uploading.mov");
    write("ID.thumb.jpg");
    write("unfinished.mov");
    write(MovieJournal::pathFor("unfinished.mov").string());
    write("cut.recording", recordingLines::beginning({}, {}) + recordingLines::segment("segment.mov") +
                               recordingLines::movie("joined.mov"));
    write("segment.mov");
    write("joined.mov");
    UploadJournalEntry entry;
    entry.captureId = QUuid::createUuid();
    entry.projectId = "p";
    entry.kind = "video";
    entry.mime = "video/quicktime";
    entry.masterPath = (captures / "uploading.mov").string();
    entry.thumbPath = (captures / "ID.thumb.jpg").string();
    ASSERT_TRUE(writeFileAtomically(CaptureStorage::journalURL(), encodeJournal({entry})));

    const auto names = [&] {
        std::vector<std::string> found;
        for (const auto &file : std::filesystem::directory_iterator(captures))
            found.push_back(file.path().filename());
        return found;
    };
    const auto now = std::chrono::system_clock::now();
    pruneCaptures({}, now + 24h * 6);
    EXPECT_EQ(names().size(), 10U);
    pruneCaptures({captures / "../Captures/wanted.mov"}, now + 24h * 8);
    EXPECT_THAT(names(), UnorderedElementsAre("wanted.mov", "uploading.mov", "ID.thumb.jpg", "unfinished.mov",
                                              MovieJournal::pathFor("unfinished.mov"), "cut.recording",
                                              "segment.mov", "joined.mov"));

    ASSERT_TRUE(writeFileAtomically(CaptureStorage::journalURL(), "nonsense"));
    pruneCaptures({}, now + 24h * 8);
    EXPECT_EQ(names().size(), 8U);
}

} // namespace
} // namespace vantrell::testing

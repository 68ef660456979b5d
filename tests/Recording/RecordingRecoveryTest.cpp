// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingRecovery.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/MovieWriter.h"
#include "Recording/RecordingJournal.h"
#include "Recording/RecordingRecord.h"
#include "Support/AtomicFile.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

using std::filesystem::exists;
using std::filesystem::path;

RecordingOptions windowOptions() {
    RecordingOptions options;
    options.target.display = {"DP-1", "A Monitor", {-640, 0, 640, 480}, {-1280, 0, 1280, 960}, 2, false};
    options.target.rect = {10, 20, 100, 50};
    options.target.window = WindowDescription{
        77, "org.example", "Example", "A \"title\"\xff", {-630, 20, 100, 50}, {-1260, 40, 200, 100}};
    options.target.scale = 2;
    options.target.source = {-1260, 40, 200, 100};
    options.separateCursor = false;
    options.fps = 30;
    return options;
}

RecordingOptions displayOptions() {
    RecordingOptions options;
    options.target =
        CaptureTarget::wholeDisplay({"DP-1", "A Monitor", {0, 0, 640, 480}, {0, 0, 640, 480}, 1, true});
    return options;
}

/// A movie of that many seconds; unfinished, it stands still after its only picture.
void writeSegment(const path &file, double seconds, bool isFinished) {
    auto writer = *MovieWriter::create(file, {.elapsed = [seconds] { return seconds; }});
    const TrackId track = writer->addVideoTrack({.size = {640, 480}, .decoderConfiguration = {1, 2, 3}});
    const std::vector<std::uint8_t> data(100, 7);
    ASSERT_TRUE(writer->append(track, {.data = data, .isKey = true}));
    const TrackEnd ends[] = {{track, std::int64_t(seconds * 90000)}};
    if (isFinished)
        ASSERT_TRUE(writer->finish(ends));
}

class RecordingRecoveryTest : public ::testing::Test {
protected:
    path newJournal(const std::string &lines) {
        const path journal = captures / "a.recording";
        EXPECT_TRUE(writeFileAtomically(
            journal, recordingLines::beginning(displayOptions(), clock.wallNow()) + lines));
        return journal;
    }
    RecordingRecovery::Recovered recoverLayers(const path &what) {
        auto recovered = RecordingRecovery::recover(what, clock.wallNow());
        EXPECT_TRUE(recovered) << description(recovered.error());
        return recovered ? std::move(*recovered) : RecordingRecovery::Recovered();
    }
    std::optional<CaptureResult> recover(const path &what) { return recoverLayers(what).screen; }

    ManualClock clock;
    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder.path().string()};
    path captures = CaptureStorage::directory();
};

TEST(RecordingRecord, saysEverythingUpToWhereItBreaksOff) {
    const auto startedAt = Clock::WallTime(std::chrono::milliseconds(1772719629123));
    const RawEvent click{12.25, InputEvent::Kind::down, {-100.5, 30}, Rect{11, 21, 100, 50}};
    const std::string beginning = recordingLines::beginning(windowOptions(), startedAt);
    const std::string text =
        beginning + recordingLines::segment("/somewhere/a.mov") + recordingLines::anchor(11.5) +
        recordingLines::event(click) + recordingLines::segment("b.mov") +
        recordingLines::event({13, InputEvent::Kind::up, {1, 2}, {}}) + recordingLines::movie("c.mov");
    const auto whole = recordingLines::read(text);
    ASSERT_TRUE(whole) << whole.error().message;
    RecordingOptions expected = windowOptions();
    expected.target.window->title = "A \"title\"\xef\xbf\xbd";
    EXPECT_EQ(whole->options.target.display, expected.target.display);
    EXPECT_EQ(whole->options.target.window, expected.target.window);
    EXPECT_EQ(whole->options.target.rect, expected.target.rect);
    EXPECT_EQ(whole->options.target.source, expected.target.source);
    EXPECT_EQ(whole->options.fps, 30);
    EXPECT_FALSE(whole->options.separateCursor);
    EXPECT_EQ(whole->startedAt, startedAt);
    ASSERT_EQ(whole->segments.size(), 2U);
    EXPECT_EQ(whole->segments[0].file, "a.mov");
    EXPECT_EQ(whole->segments[0].anchorHostTime, 11.5);
    EXPECT_FALSE(whole->segments[1].anchorHostTime);
    ASSERT_EQ(whole->events.size(), 2U);
    EXPECT_EQ(whole->events[0], click);
    EXPECT_EQ(whole->movies, std::vector<path>{"c.mov"});

    for (std::size_t size = 0; size < text.size(); ++size) {
        const auto cut = recordingLines::read(text.substr(0, size));
        ASSERT_EQ(cut.has_value(), size >= beginning.size()) << size;
        if (cut)
            ASSERT_LE(cut->events.size(), 2U);
    }
    const auto zeros =
        recordingLines::read(beginning + recordingLines::segment("a.mov") + std::string(50, '\0'));
    ASSERT_TRUE(zeros);
    EXPECT_EQ(zeros->segments.size(), 1U);
}

TEST_F(RecordingRecoveryTest, joinsSegmentsWithTheirEvents) {
    writeSegment(captures / "1.mov", 2, true);
    writeSegment(captures / "3.mov", 1.5, false);
    const path journal = newJournal(recordingLines::segment("1.mov") + recordingLines::anchor(100) +
                                    recordingLines::event({101, InputEvent::Kind::down, {5, -10}, {}}) +
                                    recordingLines::segment("2.mov") + recordingLines::segment("3.mov") +
                                    recordingLines::anchor(200) +
                                    recordingLines::event({201, InputEvent::Kind::down, {6, -10}, {}}));
    EXPECT_EQ(RecordingRecovery::abandoned(captures), std::vector{journal});

    const auto capture = recover(journal);
    ASSERT_TRUE(capture);
    EXPECT_TRUE(capture->name.ends_with(" (recovered)")) << capture->name;
    EXPECT_EQ(capture->durationMs, 3500);
    EXPECT_NEAR(readMovieFacts(capture->fileURL)->durationMs, 3500, 0.1);
    EXPECT_EQ(capture->metadata.source, CaptureKind::display);
    EXPECT_EQ(capture->metadata.recording->anchorHostTime, 100);
    const auto &events = capture->metadata.recording->events;
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].t, 1000);
    EXPECT_EQ(events[1].t, 3000);

    // Until somebody has taken it over it is offered again.
    EXPECT_EQ(RecordingRecovery::abandoned(captures), std::vector{journal});
    RecordingRecovery::forget(journal);
    EXPECT_TRUE(RecordingRecovery::abandoned(captures).empty());
    EXPECT_TRUE(exists(captures / "1.mov"));
}

TEST_F(RecordingRecoveryTest, takesTheMovieThatWasJoinedAlready) {
    writeSegment(captures / "1.mov", 2, true);
    writeSegment(captures / "2.mov", 1, true);
    writeSegment(captures / "joined.mov", 3, true);
    const path journal = newJournal(recordingLines::segment("1.mov") + recordingLines::segment("2.mov") +
                                    recordingLines::movie("joined.mov"));
    const auto capture = recover(journal);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->fileURL, captures / "joined.mov");
}

TEST_F(RecordingRecoveryTest, findsTheMovieInThePlaceToWhichItWasMoved) {
    writeSegment(captures / "1.mov", 2, true);
    const path journal = newJournal(recordingLines::segment("1.mov") + recordingLines::anchor(100) +
                                    recordingLines::event({101, InputEvent::Kind::down, {5, -10}, {}}) +
                                    recordingLines::movie("1.mov"));
    const path newPlace = folder / "caf\xe9.mov";
    RecordingRecovery::noteMove(journal, newPlace);
    EXPECT_EQ(recover(journal)->fileURL, captures / "1.mov") << "cut off before it was moved";
    std::filesystem::rename(captures / "1.mov", newPlace);
    const auto capture = recover(journal);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->fileURL, newPlace);
    EXPECT_EQ(capture->metadata.recording->events.size(), 1U);
    std::filesystem::remove(newPlace); // QTemporaryDir cannot
}

TEST_F(RecordingRecoveryTest, forgetsWhatHoldsNothing) {
    writeSegment(captures / "1.mov", 0, true);
    const path journal = newJournal(recordingLines::segment("1.mov") + recordingLines::segment("2.mov"));
    std::filesystem::remove(captures / "1.mov");
    EXPECT_FALSE(recover(journal));
    EXPECT_FALSE(exists(journal));
    ASSERT_TRUE(writeFileAtomically(journal, "torn at once"));
    EXPECT_FALSE(recover(journal));
    EXPECT_FALSE(exists(journal));
}

TEST_F(RecordingRecoveryTest, offersAMovieWhoseRecordingIsUnknown) {
    writeSegment(captures / "alone.mov", 1.5, false);
    EXPECT_EQ(RecordingRecovery::abandoned(captures), std::vector{captures / "alone.mov"});
    const auto capture = recover(captures / "alone.mov");
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->durationMs, 1500);
    EXPECT_EQ(capture->metadata.pixelSize, (PixelSize{640, 480}));
    EXPECT_TRUE(RecordingRecovery::abandoned(captures).empty());
}

TEST_F(RecordingRecoveryTest, leavesARecordingAloneWhileItIsMade) {
    RecordingJournal journal(captures / "live.recording", displayOptions(), clock);
    journal.addSegment(captures / "1.mov");
    ASSERT_TRUE(eventually([&] { return exists(journal.path()); }));
    writeSegment(captures / "1.mov", 1, false);
    EXPECT_TRUE(RecordingRecovery::abandoned(captures).empty());
    const auto refused = RecordingRecovery::recover(journal.path(), clock.wallNow());
    ASSERT_FALSE(refused);
    EXPECT_EQ(std::get<PlatformError>(refused.error()).code, EWOULDBLOCK);
}

TEST_F(RecordingRecoveryTest, journalKeepsEventsWithinASecondAndGoesWhenDiscarded) {
    RecordingJournal journal(captures / "live.recording", displayOptions(), clock);
    const auto eventsOnDisk = [&] {
        const auto record = recordingLines::read(readFile(journal.path()).value_or(""));
        return record ? record->events.size() : 0;
    };
    journal.addSegment(captures / "1.mov");
    journal.addEvent({1, InputEvent::Kind::down, {1, 1}, {}});
    journal.addEvent({2, InputEvent::Kind::up, {1, 1}, {}});
    clock.advance(std::chrono::seconds(1));
    EXPECT_TRUE(eventually([&] { return eventsOnDisk() == 2; }));
    journal.addEvent({3, InputEvent::Kind::down, {1, 1}, {}});
    EXPECT_TRUE(runTask(journal.close({})));
    EXPECT_EQ(eventsOnDisk(), 3U);
    journal.addEvent({4, InputEvent::Kind::up, {1, 1}, {}});
    journal.discard();
    EXPECT_TRUE(eventually([&] { return !exists(journal.path()); }));
}

TEST_F(RecordingRecoveryTest, offersTheCameraBesideItsScreenUntilBothAreTaken) {
    using namespace recordingLines;
    writeSegment(captures / "1.mov", 2, true);
    writeSegment(captures / "2.mov", 2, false);
    writeSegment(captures / "c1.mov", 1.5, true);
    writeSegment(captures / "c2.mov", 1.5, false);
    writeSegment(captures / "c3.mov", 1, false);
    const path journal =
        newJournal(segment("1.mov") + anchor(100) + cameraSegment("c1.mov") + cameraAnchor("c1.mov", 100.4) +
                   segment("2.mov") + cameraSegment("c2.mov") + anchor(200) + cameraAnchor("c2.mov", 200.3) +
                   cameraSegment("c3.mov"));
    // None of the camera's movies is a recording of its own.
    EXPECT_EQ(RecordingRecovery::abandoned(captures), std::vector{journal});

    const auto both = recoverLayers(journal);
    ASSERT_TRUE(both.screen && both.camera);
    EXPECT_EQ(both.screen->metadata.recording->anchorHostTime, 100);
    EXPECT_EQ(both.camera->metadata.source, CaptureKind::camera);
    EXPECT_DOUBLE_EQ(*both.camera->metadata.recording->anchorHostTime, 100.4);
    // 1.9 s after the first one began, the second did: as far from the screen's second stretch as in life.
    EXPECT_EQ(both.camera->durationMs, 3400);
    EXPECT_TRUE(both.camera->name.ends_with(" (recovered)")) << both.camera->name;

    RecordingRecovery::forget(journal, RecordingLayer::screen);
    EXPECT_EQ(RecordingRecovery::abandoned(captures), std::vector{journal});
    const auto rest = recoverLayers(journal);
    EXPECT_FALSE(rest.screen);
    ASSERT_TRUE(rest.camera);
    EXPECT_EQ(rest.camera->fileURL, both.camera->fileURL);
    EXPECT_DOUBLE_EQ(*rest.camera->metadata.recording->anchorHostTime, 100.4);
    RecordingRecovery::forget(journal, RecordingLayer::camera);
    EXPECT_TRUE(RecordingRecovery::abandoned(captures).empty());
}

} // namespace
} // namespace vantrell::testing

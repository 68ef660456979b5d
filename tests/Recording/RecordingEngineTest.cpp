// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingEngine.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieWriter.h"
#include "Platform/NullInputMonitor.h"
#include "Recording/RecordingRecovery.h"
#include "ScriptedStreams.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

RecordingOptions smallDisplay() {
    RecordingOptions options;
    options.target =
        CaptureTarget::wholeDisplay({"DP-1", "A Monitor", {0, 0, 64, 64}, {0, 0, 64, 64}, 1, true});
    return options;
}

/// A recording whose streams write real movies, as fast or as slowly as the test says.
class RecordingEngineTest : public ::testing::Test {
protected:
    using Stopped = std::expected<RecordingStopOutcome, RecordingStopFailure>;

    ScriptedStreams::Stream &stream() { return *streams.streams.back(); }

    /// The newest stream has written its first picture; more may come as long as the writer lives.
    void capture() {
        const auto &movie = stream().configuration.outputFile;
        writers[movie] = *MovieWriter::create(movie);
        writers[movie]->addVideoTrack({.size = {64, 64}, .decoderConfiguration = {1, 2, 3}});
        const std::vector<std::uint8_t> picture(100, 7);
        ASSERT_TRUE(writers[movie]->append({0}, {.data = picture, .isKey = true}));
        stream().events.firstFrame(clock.hostNow());
        settle();
    }

    void finishMovie(const std::filesystem::path &file) {
        const TrackEnd ends[] = {{{0}, 90000}};
        ASSERT_TRUE(writers.at(file)->finish(ends));
        writers.erase(file);
    }

    std::unique_ptr<RecordingEngine> newEngine() {
        RecordingOptions options = smallDisplay();
        options.autoCamera = true;
        return std::make_unique<RecordingEngine>(RecordingPorts{streams, source, input, clock},
                                                 std::move(options));
    }

    Stopped stopThatTimesOut() {
        auto stopping = engine->stop({});
        EXPECT_FALSE(stopping.isReady());
        clock.advance(16s);
        return runTask(std::move(stopping));
    }

    static std::vector<std::filesystem::path> abandoned() {
        return RecordingRecovery::abandoned(CaptureStorage::directory());
    }

    /// The engine is gone: what it leaves, once its workers have let go of it.
    std::filesystem::path leftJournal() {
        engine.reset();
        EXPECT_TRUE(eventually([] { return abandoned().size() == 1; }));
        return abandoned().at(0);
    }

    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder.path().string()};
    ManualClock clock;
    ScriptedStreams streams;
    std::shared_ptr<ScriptedSource> source = std::make_shared<ScriptedSource>();
    NullInputMonitor input{PlatformError{"test", 1, "no pointer here"}};
    std::map<std::filesystem::path, std::unique_ptr<MovieWriter>> writers;
    std::unique_ptr<RecordingEngine> engine = newEngine();
};

TEST_F(RecordingEngineTest, aMovieThatASlowDiskFinishesAfterTheTimeOutIsOffered) {
    streams.script.finishes.reset();
    ASSERT_TRUE(runTask(engine->start({})));
    capture();
    const std::filesystem::path movie = stream().configuration.outputFile;
    const Stopped stopped = stopThatTimesOut();
    ASSERT_FALSE(stopped);
    EXPECT_EQ(stopped.error().failure, Failure(CaptureError::encodeFailed));
    EXPECT_EQ(description(stopped.error()), "Saving the recording timed out");
    EXPECT_TRUE(stopped.error().isRecoverable);

    // Not while it is still being written, and not forgotten for that.
    const std::filesystem::path journal = leftJournal();
    const auto early = RecordingRecovery::recover(journal, clock.wallNow());
    ASSERT_FALSE(early);
    EXPECT_EQ(description(early.error()), "The recording is still being saved");
    finishMovie(movie);
    const auto capture = RecordingRecovery::recover(journal, clock.wallNow());
    ASSERT_TRUE(capture && capture->screen);
    EXPECT_EQ(capture->screen->fileURL, movie);
    EXPECT_EQ(capture->screen->durationMs, 1000);
}

TEST_F(RecordingEngineTest, aLastPartThatIsNotSavedInTimeIsOfferedBesideThePartialCapture) {
    ASSERT_TRUE(runTask(engine->start({})));
    capture();
    finishMovie(stream().configuration.outputFile);
    ASSERT_TRUE(runTask(engine->pause({})));
    streams.script.finishes.reset();
    ASSERT_TRUE(runTask(engine->resume({})));
    capture();
    const std::filesystem::path last = stream().configuration.outputFile;
    const Stopped stopped = stopThatTimesOut();
    ASSERT_TRUE(stopped) << description(stopped.error());
    EXPECT_TRUE(stopped->isPartial);
    EXPECT_TRUE(stopped->isRestRecoverable);
    EXPECT_TRUE(stopped->capture.name.ends_with(" (partial)")) << stopped->capture.name;
    RecordingRecovery::forget(stopped->journal);
    finishMovie(last);
    const auto rest = RecordingRecovery::recover(leftJournal(), clock.wallNow());
    ASSERT_TRUE(rest && rest->screen);
    EXPECT_EQ(rest->screen->fileURL, last);
}

TEST_F(RecordingEngineTest, saysOfThePointerWhatTheDesktopLetsItKnowAndNoMore) {
    for (const bool separates : {true, false}) {
        source->tells = source->separates = separates;
        source->at = PixelRect{0, 0, 64, 64};
        engine = newEngine();
        ASSERT_TRUE(runTask(engine->start({})));
        EXPECT_EQ(stream().configuration.cursor, separates ? CursorMode::asMetadata : CursorMode::inPicture);
        capture();
        if (separates)
            stream().events.pointerMoved(clock.hostNow(), {0.5, 0.25});
        settle();
        finishMovie(stream().configuration.outputFile);
        const Stopped stopped = runTask(engine->stop({}));
        ASSERT_TRUE(stopped);
        // The desktop would still tell of a sharing.
        EXPECT_EQ(source.use_count(), 1);
        const RecordingInfo &info = *stopped->capture.metadata.recording;
        EXPECT_EQ(info.cursorInVideo, !separates);
        EXPECT_EQ(info.autoCamera, false);
        ASSERT_EQ(info.events.size(), separates ? 1u : 0u);
        if (separates)
            EXPECT_EQ(info.events[0], (InputEvent{0, InputEvent::Kind::move, 32, 16}));
    }
}

TEST_F(RecordingEngineTest, leavesNothingWhenNoPictureCameOrTheStartWasCancelled) {
    streams.script.fails = PlatformError{"screen", 7, "The window was closed"};
    ASSERT_TRUE(runTask(engine->start({})));
    const Stopped stopped = runTask(engine->stop({}));
    ASSERT_FALSE(stopped);
    EXPECT_FALSE(stopped.error().isRecoverable);
    EXPECT_EQ(description(stopped.error()), "The window was closed");
    EXPECT_TRUE(eventually([] { return abandoned().empty(); }));

    streams.script.startError = Cancelled{};
    engine = newEngine();
    const auto started = runTask(engine->start({}));
    ASSERT_FALSE(started);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(started.error()));
    EXPECT_TRUE(eventually([] { return std::filesystem::is_empty(CaptureStorage::directory()); }));
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/CameraEngine.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieReader.h"
#include "Platform/CameraError.h"
#include "Recording/RecordingRecovery.h"
#include "ScriptedCameras.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

RecordingOptions optionsWithCamera() {
    RecordingOptions options;
    options.target =
        CaptureTarget::wholeDisplay({"DP-1", "A Monitor", {0, 0, 64, 64}, {0, 0, 64, 64}, 1, true});
    options.recordingId = "A-1";
    return options;
}

class CameraEngineTest : public ::testing::Test {
protected:
    /// A file of a second that begins at that host time.
    void recordAt(double hostTime) {
        engine.start(journal);
        cameras.picture(hostTime);
        runTask(engine.finishFile({}));
    }
    static std::size_t movies() {
        std::size_t count = 0;
        for (const auto &entry : std::filesystem::directory_iterator(CaptureStorage::directory()))
            count += entry.path().extension() == ".mov" ? 1 : 0;
        return count;
    }

    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder.path().string()};
    ManualClock clock;
    ScriptedCameras cameras;
    std::shared_ptr<RecordingJournal> journal = std::make_shared<RecordingJournal>(
        CaptureStorage::newFileURL("recording"), optionsWithCamera(), clock);
    CameraEngine engine{{cameras, cameras, clock}, std::nullopt};
};

TEST_F(CameraEngineTest, makesOneMovieInStepWithTheScreenOfFilesThatBeganLaterAndEarlier) {
    ASSERT_TRUE(runTask(engine.open({})));
    // The screen's stretches: 100 to 102 s and 200 to 203 s. The camera needed 300 ms, then was 40 ms early,
    // and each of its files lasts a second.
    recordAt(100.3);
    recordAt(199.96);
    EXPECT_EQ(engine.anchorHostTime(), 100.3);
    EXPECT_EQ(engine.segmentURLs().size(), 2U);
    const auto capture = runTask(engine.stop({{"1.mov", 100, 2000}, {"2.mov", 200, 3000}}, {}));
    ASSERT_TRUE(capture);
    const CaptureMetadata &metadata = capture->metadata;
    EXPECT_EQ(metadata.source, CaptureKind::camera);
    EXPECT_EQ(metadata.pixelSize, (PixelSize{64, 48}));
    EXPECT_EQ(metadata.recording->recordingId, "A-1");
    EXPECT_DOUBLE_EQ(*metadata.recording->anchorHostTime, 100.3);
    // The second file begins 40 ms before the screen's third second: 1.66 s after the first one did.
    EXPECT_NEAR(readMovieFacts(capture->fileURL)->durationMs, 2660, 0.1);
    EXPECT_EQ(capture->durationMs, 2660);
    EXPECT_EQ(capture->mime, "video/quicktime");
    EXPECT_EQ(movies(), 1U);
}

TEST_F(CameraEngineTest, keepsWhatIsThereAndWaitsFifteenSecondsForTheRest) {
    const LogCapture log;
    ASSERT_TRUE(runTask(engine.open({})));
    engine.start(journal);
    cameras.picture(100);
    ASSERT_TRUE(cameras.session().writer->finish(std::vector<TrackEnd>{{{0}, 90000}}));
    cameras.session().events.recordingFailed({"test", 1, "the disk hiccuped"});
    EXPECT_TRUE(eventually([this] { return engine.segmentURLs().size() == 1; }));

    cameras.answersStop = false;
    engine.endFile();
    engine.start(journal);
    cameras.picture(200);
    auto finishing = engine.finishFile({});
    EXPECT_FALSE(finishing.isReady());
    clock.advance(16s);
    runTask(std::move(finishing));
    EXPECT_TRUE(log.contains("camera segment finalize timed out"));
    const auto capture = runTask(engine.stop({}, {}));
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->durationMs, 1000);
    EXPECT_EQ(capture->metadata.recording->anchorHostTime, 100);
}

TEST_F(CameraEngineTest, goesOnWithTheSameCameraWhenItComesBackAndWithNoOther) {
    ASSERT_TRUE(runTask(engine.open({})));
    std::vector<bool> problems;
    engine.onProblem = [&](const auto &problem) { problems.push_back(problem.has_value()); };
    engine.start(journal);
    cameras.picture(100);
    cameras.connected = {{"other", "Other", true}};
    cameras.session().events.stoppedWithError(cameraError(CameraErrorCode::unplugged));
    cameras.end(1);
    EXPECT_TRUE(eventually([this] { return engine.segmentURLs().size() == 1; }));
    cameras.notify();
    EXPECT_EQ(cameras.sessions.size(), 1U);
    EXPECT_TRUE(engine.problem());

    cameras.connected = {{"built-in", "Built-in", true}};
    cameras.notify();
    EXPECT_TRUE(eventually([this] { return cameras.sessions.size() == 2; }));
    EXPECT_EQ(cameras.session().wanted, "built-in");
    EXPECT_EQ(problems, (std::vector{true, false}));
    cameras.picture(103);
    const auto capture = runTask(engine.stop({{"1.mov", 99.5, 10000}}, {}));
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->durationMs, 4000);
}

TEST_F(CameraEngineTest, leavesNothingWhenItIsCancelledOrHasRecordedNothing) {
    ASSERT_TRUE(runTask(engine.open({})));
    recordAt(100);
    engine.start(journal);
    cameras.picture(101);
    runTask(engine.cancel({}));
    EXPECT_EQ(movies(), 0U);

    CameraEngine idle({cameras, cameras, clock}, "unknown");
    ASSERT_TRUE(runTask(idle.open({})));
    EXPECT_FALSE(runTask(idle.stop({}, {})));
    const LogCapture log;
    cameras.openError = cameraError(CameraErrorCode::noCamera);
    CameraEngine none({cameras, cameras, clock}, std::nullopt);
    EXPECT_FALSE(runTask(none.open({})));
    EXPECT_TRUE(log.contains("camera init: no capture device found"));
}

} // namespace
} // namespace vantrell::testing

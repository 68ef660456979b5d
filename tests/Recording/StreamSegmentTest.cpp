// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/StreamSegment.h"
#include "ScriptedStreams.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"

#include <gtest/gtest.h>

#include <thread>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

class StreamSegmentTest : public ::testing::Test {
protected:
    void start() { ASSERT_TRUE(runTask(segment.start(&streams, &source, {}, {}))); }
    ScriptedStreams::Stream &stream() { return *streams.streams.back(); }

    ScriptedStreams streams;
    ScriptedSource source;
    ManualClock clock;
    StreamSegment segment{"segment.mov", clock};
};

TEST_F(StreamSegmentTest, anchorsAtTheFirstFrameOrElseAtTheStart) {
    start();
    EXPECT_EQ(stream().configuration.outputFile, "segment.mov");
    EXPECT_EQ(segment.anchorHostTime(), clock.hostNow());
    std::thread capture([this] {
        stream().events.firstFrame(1000.25);
        stream().events.firstFrame(1001);
    });
    capture.join();
    EXPECT_EQ(segment.anchorHostTime(), 1000.25);
}

TEST_F(StreamSegmentTest, keepsAResultThatCameBeforeAnybodyWaited) {
    start();
    std::thread([this] { stream().events.recordingFinished({2.5, 10, 3}); }).join();
    const auto result = runTask(segment.finish({}));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->durationSeconds, 2.5);
    EXPECT_EQ(result->droppedFrames, 3);
}

TEST_F(StreamSegmentTest, passesTheStreamsFailureOn) {
    streams.script.fails = PlatformError{"posix", ENOSPC, "disk full"};
    start();
    const auto result = runTask(segment.finish({}));
    ASSERT_FALSE(result);
    EXPECT_EQ(description(result.error()), "disk full");
    clock.advance(16s); // the watchdog has been called off
    EXPECT_EQ(clock.sleeperCount(), 0);
}

TEST_F(StreamSegmentTest, aStreamThatOutlivesItsTimeOutReachesNothingOfTheSegment) {
    LogCapture log;
    streams.script.finishes.reset();
    int metered = 0;
    auto slow = std::make_unique<StreamSegment>("slow.mov", clock);
    slow->onMicSample = [&metered](auto) { ++metered; };
    slow->onFirstFrame = [](double) { ADD_FAILURE() << "told after the end"; };
    slow->onSpontaneousEnd = [](auto) { ADD_FAILURE() << "told after the end"; };
    ASSERT_TRUE(runTask(slow->start(&streams, &source, {}, {})));
    const auto left = streams.streams.back();
    auto finishing = slow->finish({});
    clock.advance(14900ms);
    EXPECT_FALSE(finishing.isReady());
    clock.advance(200ms);
    const auto result = runTask(std::move(finishing));
    ASSERT_FALSE(result);
    EXPECT_EQ(description(result.error()), "Saving the recording timed out");
    EXPECT_EQ(log.count("segment finalize timed out"), 1);

    const std::vector<float> samples{1.0F};
    left->events.microphoneSamples(samples);
    slow.reset();
    left->events.microphoneSamples(samples);
    left->events.firstFrame(1000);
    left->events.stoppedWithError({"screen", 7, "late"});
    left->events.recordingFinished({});
    settle();
    EXPECT_EQ(metered, 1);
    EXPECT_TRUE(eventually([&] { return left->destroyed.load(); }));
}

TEST_F(StreamSegmentTest, tellsOnceOnTheMainThreadThatTheStreamEnded) {
    LogCapture log;
    std::vector<std::optional<PlatformError>> ends;
    const auto main = std::this_thread::get_id();
    segment.onSpontaneousEnd = [&](std::optional<PlatformError> error) {
        EXPECT_EQ(std::this_thread::get_id(), main);
        ends.push_back(std::move(error));
    };
    start();
    std::thread([this] {
        stream().events.stoppedWithError({"screen", 7, "The window was closed"});
        stream().events.stoppedWithError({"screen", 7, "again"});
    }).join();
    settle();
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends.front()->message, "The window was closed");
    EXPECT_TRUE(log.contains("stream stopped externally: The window was closed"));
}

} // namespace
} // namespace vantrell::testing

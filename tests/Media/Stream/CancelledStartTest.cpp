// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedCaptureStream.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <semaphore>

namespace vantrell::testing {

namespace {

/// A screen that takes its time to open.
class SlowSource final : public FrameSource {
public:
    std::expected<void, PlatformError> open() override {
        isOpening.release();
        mayOpen.acquire();
        return {};
    }
    PixelSize size() const override { return {16, 16}; }
    std::expected<FrameWait, PlatformError> wait(double, std::optional<double>) override {
        return std::exchange(m_isShown, true) ? FrameWait::interrupted : FrameWait::changed;
    }
    std::expected<FrameUpdate, PlatformError> fetch() override {
        return FrameUpdate{.hostTime = 1, .size = size(), .content = std::span<const FramePatch>(m_patches)};
    }
    void interrupt() override {}

    std::binary_semaphore isOpening{0};
    std::binary_semaphore mayOpen{0};

private:
    bool m_isShown = false;
    std::vector<std::uint8_t> m_pixels = std::vector<std::uint8_t>(std::size_t(16 * 16 * 4), 99);
    std::array<FramePatch, 1> m_patches{FramePatch{{0, 0, 16, 16}, m_pixels.data(), 64}};
};

TEST(StagedCaptureStream, leavesNoMovieBehindWhenItsStartIsCancelled) {
    const TemporaryFolder folder;
    CaptureStreamConfiguration configuration;
    configuration.outputFile = folder / "stretch.mov";
    CaptureStreamEvents events;
    events.stoppedWithError = [](const PlatformError &error) { ADD_FAILURE() << error.message; };
    events.recordingFinished = [](RecordingSummary) { ADD_FAILURE() << "nobody wants it"; };
    events.recordingFailed = [](const PlatformError &error) { ADD_FAILURE() << error.message; };
    auto source = std::make_unique<SlowSource>();
    SlowSource &slow = *source;
    auto stream = std::make_unique<StagedCaptureStream>(
        configuration, events, std::move(source),
        std::make_shared<EncoderChoice>(EncoderPreference::software, std::vector<LibavEncoder::Codec>()),
        nullptr);
    std::stop_source cancel;
    auto starting = stream->start(cancel.get_token());
    slow.isOpening.acquire();
    cancel.request_stop();
    const auto started = runTask(std::move(starting));
    ASSERT_FALSE(started);
    EXPECT_TRUE(std::holds_alternative<Cancelled>(started.error()));
    slow.mayOpen.release();
    stream.reset();
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

} // namespace
} // namespace vantrell::testing

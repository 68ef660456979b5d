// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

CaptureMetadata minimal() {
    CaptureMetadata metadata;
    metadata.type = "screenshot";
    metadata.capturedAt = iso8601(std::chrono::sys_days(std::chrono::year(2026) / 3 / 5) +
                                  std::chrono::seconds(50829) + std::chrono::milliseconds(900));
    metadata.source = CaptureKind::display;
    metadata.display = {{1536, 864}, 1.25};
    metadata.pixelSize = {1920, 1080};
    return metadata;
}

TEST(CaptureMetadata, writesCompactSortedJsonWithoutAbsentFields) {
    EXPECT_EQ(minimal().jsonData(), R"({"capturedAt":"2026-03-05T14:07:09Z","display":{"scaleFactor":1.25,)"
                                    R"("size":{"height":864,"width":1536}},"pixelSize":{"height":1080,)"
                                    R"("width":1920},"source":"display","type":"screenshot","version":1})");
}

TEST(CaptureMetadata, readsBackEverythingItWrites) {
    CaptureMetadata metadata = minimal();
    metadata.type = "recording";
    metadata.source = CaptureKind::window;
    metadata.window =
        WindowInfo{"org.example.editor", "Editor", "a \"title\" · é", {10.5, 20, 300, 200}, false};
    metadata.region = Rect{1, 2, 3, 4};
    metadata.recording = RecordingInfo{
        60,    1234.5, {{0, InputEvent::Kind::down, -10.3, 4}, {16.7, InputEvent::Kind::exit, 0, 200}},
        99.25, true,   {}};
    const auto read = CaptureMetadata::fromJson(metadata.jsonData());
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, metadata);
}

TEST(CaptureMetadata, survivesATitleThatIsNotUtf8) {
    CaptureMetadata metadata = minimal();
    metadata.window = WindowInfo{{}, {}, "broken \xff title", {}, false};
    EXPECT_TRUE(CaptureMetadata::fromJson(metadata.jsonData()));
}

TEST(CaptureMetadata, saysWhatIsWrongWithABadDocument) {
    const auto failureOf = [](const std::string &displayWidth, const std::string &pixelWidth) {
        const auto read = CaptureMetadata::fromJson(
            R"({"version":1,"type":"recording","capturedAt":"x","source":"display","pixelSize":{"width":)" +
            pixelWidth + R"(,"height":1},"display":{"size":{"width":)" + displayWidth +
            R"(,"height":1},"scaleFactor":1}})");
        return read ? "none" : read.error().message;
    };
    EXPECT_EQ(failureOf("1", "1920.0"), "none");
    EXPECT_EQ(failureOf("\"wide\"", "1"), "display.size.width is string, not a number");
    for (const char *width : {"1e300", "-1", "4294967297", "0.5"})
        EXPECT_EQ(failureOf("1", width), "pixelSize is no size in pixels") << width;
}

} // namespace
} // namespace vantrell::testing

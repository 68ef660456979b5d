// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/ScreenshotEngine.h"

#include "Capture/Thumbnailer.h"
#include "TestSupport/TemporaryFolder.h"

#include <QDateTime>
#include <QImage>

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

QSize thumbnailSize(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    const auto jpeg = Thumbnailer::jpegThumbnail(image);
    const QImage decoded = QImage::fromData(QByteArray::fromStdString(jpeg.value_or("")), "JPEG");
    EXPECT_NEAR(qRed(decoded.pixel(0, 0)), 255, 4);
    EXPECT_NEAR(qBlue(decoded.pixel(decoded.width() - 1, decoded.height() - 1)), 0, 4);
    return decoded.size();
}

TEST(Thumbnailer, shrinksToFiveHundredAndTwelveAndNeverEnlarges) {
    EXPECT_EQ(thumbnailSize(400, 300), QSize(400, 300));
    EXPECT_EQ(thumbnailSize(3024, 1964), QSize(512, 332));
    EXPECT_EQ(thumbnailSize(2, 5000), QSize(1, 512));
    EXPECT_EQ(Thumbnailer::jpegThumbnail(QImage()), std::nullopt);
}

TEST(ScreenshotEngine, namesCapturesByWindowOrByTime) {
    const auto name = [](std::optional<CaptureKind> still, const std::optional<WindowDescription> &window) {
        const QDateTime evening(QDate(2026, 3, 4), QTime(21, 5, 33));
        return ScreenshotEngine::captureName(
            still, window, std::chrono::system_clock::from_time_t(evening.toSecsSinceEpoch()));
    };
    EXPECT_EQ(name(CaptureKind::display, {}), "Screen Mar 4 at 9.05.33 PM");
    EXPECT_EQ(name({}, {}), "Capture Mar 4 at 9.05.33 PM");
    EXPECT_EQ(name({}, WindowDescription{.applicationName = "Files", .title = "Pictures"}),
              "Files · Pictures");
    EXPECT_EQ(name({}, WindowDescription{.applicationName = "Files", .title = ""}), "Files");
    EXPECT_EQ(name(CaptureKind::window, WindowDescription{}), "Window");
}

TEST(ScreenshotEngine, packagesAnImageWithItsTransparency) {
    const TemporaryFolder data;
    qputenv("XDG_DATA_HOME", data.path().c_str());
    QImage image(30, 20, QImage::Format_ARGB32);
    image.fill(QColor(10, 20, 30, 128));
    const Display display{"DP-1", "DP-1", {0, 0, 1536, 864}, {0, 0, 1920, 1080}, 1.25, true};
    const auto capture = ScreenshotEngine::package(image, CaptureTarget::area(display, {5, 10, 30, 20}));
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->kind, CaptureResult::Kind::image);
    EXPECT_EQ(capture->durationMs, std::nullopt);
    EXPECT_EQ(capture->metadata.pixelSize, (PixelSize{30, 20}));
    EXPECT_EQ(capture->metadata.region, (Rect{4, 8, 24, 16}));
    const QImage stored(QString::fromStdString(capture->fileURL.string()));
    EXPECT_EQ(stored.pixelColor(3, 3), QColor(10, 20, 30, 128));
    EXPECT_TRUE(capture->thumbnailJPEG);
}

TEST(ScreenshotEngine, failsTypedWhenTheImageCannotBeStored) {
    qputenv("XDG_DATA_HOME", "/proc/nowhere");
    QImage image(3, 3, QImage::Format_RGB32);
    const auto unwritable = ScreenshotEngine::package(image, {});
    ASSERT_FALSE(unwritable);
    EXPECT_EQ(description(unwritable.error()), "Could not encode the capture");
    EXPECT_EQ(ScreenshotEngine::scaleFactor({}, "DP-1"), 2.0);
}

} // namespace
} // namespace vantrell::testing

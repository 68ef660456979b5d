// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/ScreenshotEngine.h"

#include "Capture/CaptureStorage.h"
#include "Capture/Thumbnailer.h"
#include "Platform/DisplayLayout.h"
#include "Support/AtomicFile.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <QBuffer>
#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace vantrell {

namespace {

/// Points from the display's top-left corner.
Rect onDisplay(const Display &display, const PixelRect &desktopPixels) {
    const Rect rect = inPointsOf(display, desktopPixels);
    return {rect.x - display.frame.x, rect.y - display.frame.y, rect.width, rect.height};
}

bool isTranslucent(const QImage &image) {
    if (!image.hasAlphaChannel())
        return false;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        if (std::any_of(line, line + argb.width(), [](QRgb pixel) { return qAlpha(pixel) < 255; }))
            return true;
    }
    return false;
}

/// What a still is packaged with.
struct StillFacts {
    std::string source;
    Display display;
    double scale;
    std::optional<WindowInfo> window;
    std::optional<Rect> region;
};

Task<ScreenshotEngine::Result> packaged(StillCapture::Result still, StillFacts facts, std::stop_token stop) {
    if (!still) {
        co_return std::unexpected(std::visit([](auto &&error) { return ScreenshotError(std::move(error)); },
                                             std::move(still.error())));
    }
    const auto done = co_await runBlocking(
        [image = std::move(*still), facts = std::move(facts)]() mutable {
            if (facts.window)
                facts.window->hasAlpha = isTranslucent(image);
            return ScreenshotEngine::package(image, facts.source, facts.display, facts.scale, facts.window,
                                             facts.region);
        },
        stop);
    if (!done)
        co_return std::unexpected(ScreenshotError(Cancelled{}));
    if (!*done)
        co_return std::unexpected(ScreenshotError(done->error()));
    co_return **done;
}

} // namespace

Task<ScreenshotEngine::Result> ScreenshotEngine::captureWindow(StillCapture *stills, WindowDescription window,
                                                               Display on, double scale,
                                                               std::stop_token stop) {
    StillFacts facts{"window", on, scale, windowInfo(window, onDisplay(on, window.pixels)), {}};
    auto still = co_await stills->captureWindow(window.id, stop);
    co_return co_await packaged(std::move(still), std::move(facts), stop);
}

Task<ScreenshotEngine::Result> ScreenshotEngine::captureDisplay(StillCapture *stills, Display display,
                                                                double scale, std::stop_token stop) {
    StillFacts facts{"display", display, scale, {}, {}};
    auto still = co_await stills->captureArea(display.pixels, stop);
    co_return co_await packaged(std::move(still), std::move(facts), stop);
}

Task<ScreenshotEngine::Result> ScreenshotEngine::captureArea(StillCapture *stills, PixelRect area, Display on,
                                                             double scale, std::stop_token stop) {
    StillFacts facts{"region", on, scale, {}, onDisplay(on, area)};
    auto still = co_await stills->captureArea(area, stop);
    co_return co_await packaged(std::move(still), std::move(facts), stop);
}

std::expected<CaptureResult, CaptureError> ScreenshotEngine::package(const QImage &image,
                                                                     const std::string &source,
                                                                     const Display &display, double scale,
                                                                     const std::optional<WindowInfo> &window,
                                                                     const std::optional<Rect> &region) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (image.isNull() || !image.save(&buffer, "PNG"))
        return std::unexpected(CaptureError::encodeFailed);
    CaptureResult capture;
    capture.fileURL = CaptureStorage::newFileURL("png");
    if (const auto written =
            writeFileAtomically(capture.fileURL, std::string_view(png.constData(), size_t(png.size())));
        !written) {
        qCCritical(logCapture, "screenshot not written: %s", written.error().message.c_str());
        return std::unexpected(CaptureError::encodeFailed);
    }
    capture.kind = "image";
    capture.mime = "image/png";
    capture.name = captureName(source, window);
    capture.metadata.type = "screenshot";
    capture.metadata.capturedAt = iso8601(std::chrono::system_clock::now());
    capture.metadata.source = source;
    capture.metadata.display = {{display.frame.width, display.frame.height}, scale};
    capture.metadata.window = window;
    capture.metadata.region = region;
    capture.metadata.pixelSize = {image.width(), image.height()};
    capture.previewImage = image;
    capture.thumbnailJPEG = Thumbnailer::jpegThumbnail(image);
    return capture;
}

double ScreenshotEngine::scaleFactor(const std::vector<Display> &displays, const std::string &displayId) {
    const auto found = std::ranges::find(displays, displayId, &Display::id);
    return found == displays.end() ? 2.0 : found->scale;
}

std::string ScreenshotEngine::captureName(const std::string &source, const std::optional<WindowInfo> &window,
                                          std::chrono::system_clock::time_point now) {
    if (window) {
        const std::string application = window->appName.value_or("Window");
        const std::string title = window->title.value_or("");
        return title.empty() ? application : application + " · " + title;
    }
    const QDateTime time = QDateTime::fromSecsSinceEpoch(
        std::chrono::floor<std::chrono::seconds>(now).time_since_epoch().count());
    const QString text = QLocale::c().toString(time, "MMM d 'at' h.mm.ss AP");
    return (source == "display" ? "Screen " : "Capture ") + text.toStdString();
}

WindowInfo ScreenshotEngine::windowInfo(const WindowDescription &window, const Rect &captureRect) {
    return {window.applicationId, window.applicationName, window.title, captureRect, false};
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/ScreenshotEngine.h"

#include "Capture/CaptureStorage.h"
#include "Capture/Thumbnailer.h"
#include "Support/AtomicFile.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <QBuffer>
#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace vantrell {

namespace {

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

Task<ScreenshotEngine::Result> packaged(StillCapture::Result still, CaptureTarget target,
                                        std::stop_token stop) {
    if (!still) {
        co_return std::unexpected(std::visit([](auto &&error) { return ScreenshotError(std::move(error)); },
                                             std::move(still.error())));
    }
    const auto done = co_await runBlocking(
        [image = std::move(*still), target = std::move(target)] {
            return ScreenshotEngine::package(image, target);
        },
        stop);
    if (!done)
        co_return std::unexpected(
            std::visit([](const auto &error) { return ScreenshotError(error); }, done.error()));
    co_return *done;
}

} // namespace

Task<ScreenshotEngine::Result> ScreenshotEngine::capture(StillCapture *stills, CaptureTarget target,
                                                         std::stop_token stop) {
    auto still = target.window ? co_await stills->captureWindow(target.window->id, stop)
                               : co_await stills->captureArea(target.source, stop);
    co_return co_await packaged(std::move(still), std::move(target), stop);
}

std::expected<CaptureResult, CaptureError> ScreenshotEngine::package(const QImage &image,
                                                                     const CaptureTarget &target) {
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
    capture.kind = CaptureResult::Kind::image;
    capture.mime = "image/png";
    capture.name = captureName(target.kind(), target.window);
    capture.metadata.type = "screenshot";
    capture.metadata.capturedAt = iso8601(std::chrono::system_clock::now());
    capture.metadata.source = target.kind();
    capture.metadata.display = target.displayInfo();
    capture.metadata.window = target.windowInfo();
    if (capture.metadata.window)
        capture.metadata.window->hasAlpha = isTranslucent(image);
    capture.metadata.region = target.region();
    capture.metadata.pixelSize = {image.width(), image.height()};
    capture.previewImage = image;
    capture.thumbnailJPEG = Thumbnailer::jpegThumbnail(image);
    return capture;
}

double ScreenshotEngine::scaleFactor(const std::vector<Display> &displays, const std::string &displayId) {
    const auto found = std::ranges::find(displays, displayId, &Display::id);
    return found == displays.end() ? 2.0 : found->scale;
}

std::string ScreenshotEngine::captureName(std::optional<CaptureKind> kind,
                                          const std::optional<WindowDescription> &window,
                                          std::chrono::system_clock::time_point now) {
    if (window) {
        const std::string application = window->applicationName.value_or("Window");
        const std::string title = window->title.value_or("");
        return title.empty() ? application : application + " · " + title;
    }
    const QDateTime time = QDateTime::fromSecsSinceEpoch(
        std::chrono::floor<std::chrono::seconds>(now).time_since_epoch().count());
    const QString text = QLocale::c().toString(time, "MMM d 'at' h.mm.ss AP");
    const char *const prefix = kind == CaptureKind::display  ? "Screen "
                               : kind == CaptureKind::camera ? "Camera "
                                                             : "Capture ";
    return prefix + text.toStdString();
}

} // namespace vantrell

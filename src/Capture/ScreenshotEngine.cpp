// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/ScreenshotEngine.h"

#include "Capture/CaptureStorage.h"
#include "Capture/Thumbnailer.h"
#include "Support/AtomicFile.h"
#include "Support/Log.h"

#include <QBuffer>
#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace vantrell {

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

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandStillCapture.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"
#include "Platform/Wayland/StillPermission.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <QFile>
#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace vantrell {

namespace {

using Picture = std::expected<QImage, PlatformError>;

PlatformError unreadable() {
    return screenError(ScreenErrorCode::noPicture, "The desktop's picture of the screen cannot be read");
}

/// The portal leaves a file that nobody else wants.
Picture readAndRemove(const QString &path) {
    QImage picture(path);
    QFile::remove(path);
    if (picture.isNull())
        return std::unexpected(unreadable());
    return picture;
}

/// One picture of a source, read like a recording's first.
Picture firstPictureOf(FrameSource &frames) {
    if (auto opened = frames.open(); !opened)
        return std::unexpected(opened.error());
    const auto update = frames.fetch();
    if (!update)
        return std::unexpected(update.error());
    const auto *patches = std::get_if<std::span<const FramePatch>>(&update->content);
    if (!patches || patches->empty() || update->size.isEmpty())
        return std::unexpected(unreadable());
    QImage picture(update->size.width, update->size.height, QImage::Format_RGB32);
    picture.fill(Qt::black);
    for (const FramePatch &patch : *patches) {
        for (int y = 0; y < patch.rect.height; ++y)
            std::memcpy(picture.scanLine(patch.rect.y + y) + std::ptrdiff_t(patch.rect.x) * 4,
                        patch.pixels + y * patch.stride, std::size_t(patch.rect.width) * 4);
    }
    // What the compositor leaves in the fourth byte is anything.
    return picture.convertToFormat(QImage::Format_RGB888).convertToFormat(QImage::Format_RGB32);
}

/// Cuts an area out of the desktop's own picture, which is as large as all displays together in units that
/// the desktop chose.
Picture cutOut(const QImage &desktop, const std::vector<Display> &displays, const PixelRect &area) {
    Rect bounds = displays.front().frame;
    for (const Display &display : displays) {
        const double right = std::max(bounds.maxX(), display.frame.maxX());
        const double bottom = std::max(bounds.maxY(), display.frame.maxY());
        bounds.x = std::min(bounds.x, display.frame.x);
        bounds.y = std::min(bounds.y, display.frame.y);
        bounds.width = right - bounds.x;
        bounds.height = bottom - bounds.y;
    }
    const double across = desktop.width() / bounds.width;
    const double down = desktop.height() / bounds.height;
    QImage picture(area.width, area.height, QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    for (const Display &display : displays) {
        const PixelRect seen = intersection(display.pixels, area);
        if (seen.isEmpty())
            continue;
        const Rect points = inPointsOf(display, seen);
        const QRectF from((points.x - bounds.x) * across, (points.y - bounds.y) * down, points.width * across,
                          points.height * down);
        const QRect to(seen.x - area.x, seen.y - area.y, seen.width, seen.height);
        const QRect whole = from.toAlignedRect();
        if (whole.size() == to.size())
            painter.drawImage(to.topLeft(), desktop, whole);
        else
            painter.drawImage(QRectF(to), desktop, from);
    }
    return picture;
}

/// GNOME asks its user once, and keeps a no.
PlatformError stillsRefused() {
    PlatformError error = portalError(PortalErrorCode::refused);
    error.message = "The desktop refuses screenshots: allow them in its privacy settings";
    return error;
}

StillCapture::Error asStillError(PortalRequests::Failure failure) {
    return failure;
}

} // namespace

Task<StillCapture::Result> WaylandStillCapture::captureWindow(std::uint32_t window, std::stop_token stop) {
    const std::shared_ptr<WaylandCapture> source = m_backend.chosenWindow(window);
    if (!source)
        co_return std::unexpected(
            Error(screenError(ScreenErrorCode::noSuchWindow, "The window is not shared any more")));
    if (auto picture = co_await source->pictureInUse(stop); !picture.isNull())
        co_return picture;
    const std::shared_ptr<FrameSource> frames = source->makeFrames(CursorMode::leftOut);
    co_return co_await runBlocking([frames] { return firstPictureOf(*frames); }, stop);
}

Task<StillCapture::Result> WaylandStillCapture::captureArea(PixelRect area, std::stop_token stop) {
    const auto displays = m_backend.displays();
    if (!displays)
        co_return std::unexpected(Error(displays.error()));
    const auto wanted = areaOnDisplays(*displays, area);
    if (!wanted)
        co_return std::unexpected(Error(wanted.error()));
    // What is recorded is there already.
    const Display &display = displayHolding(*displays, *wanted);
    const auto inUse =
        intersection(*wanted, display.pixels) == *wanted ? m_backend.captureOfDisplay(display.id) : nullptr;
    if (inUse) {
        const QImage picture = co_await inUse->pictureInUse(stop);
        if (!picture.isNull())
            co_return co_await runBlocking(
                [picture, shown = display, part = *wanted] { return cutOut(picture, {shown}, part); }, stop);
    }
    // What the user has agreed to share is there without another question, and without the pointer.
    if (m_backend.isRemembered(*wanted, *displays)) {
        auto shared = co_await fromCast(*wanted, stop);
        const auto *refusal = shared ? nullptr : std::get_if<PlatformError>(&shared.error());
        // One that hangs does so for stills, too.
        if (!refusal || isPortalError(*refusal, PortalErrorCode::silent))
            co_return shared;
    }
    const auto desktop = co_await wholeDesktop(stop);
    if (desktop)
        co_return co_await runBlocking(
            [picture = *desktop, all = *displays, part = *wanted] { return cutOut(picture, all, part); },
            stop);
    const auto *error = std::get_if<PlatformError>(&desktop.error());
    const bool isRefused = error && isPortalError(*error, PortalErrorCode::refused);
    if (isRefused && co_await mayBeForbiddenStills(m_backend.portal().bus(), stop))
        co_return std::unexpected(Error(stillsRefused()));
    // A desktop that takes no stills, or fails to (sway's part needs a program for it), shares its screen.
    if (isRefused || (error && isPortalError(*error, PortalErrorCode::missing)))
        co_return co_await fromCast(*wanted, stop);
    co_return std::unexpected(desktop.error());
}

Task<StillCapture::Result> WaylandStillCapture::wholeDesktop(std::stop_token stop) {
    // It may ask for the permission, once.
    PortalRequests::Request request{
        QStringLiteral("Screenshot"), QStringLiteral("Screenshot"), {}, {}, std::nullopt};
    request.arguments = QVariantList{QString()};
    request.options.insert(QStringLiteral("interactive"), false);
    const auto answer = co_await m_backend.portal().ask(std::move(request), stop);
    if (!answer)
        co_return std::unexpected(asStillError(answer.error()));
    const QUrl file(answer->results.value(QStringLiteral("uri")).toString());
    if (!file.isLocalFile())
        co_return std::unexpected(Error(unreadable()));
    co_return co_await runBlocking([path = file.toLocalFile()] { return readAndRemove(path); }, stop);
}

Task<StillCapture::Result> WaylandStillCapture::fromCast(PixelRect area, std::stop_token stop) {
    CaptureRequest request{CaptureRequest::Area{area}};
    request.hidesPointer = true;
    const auto chosen = co_await m_backend.choose(std::move(request), stop);
    if (!chosen)
        co_return std::unexpected(chosen.error());
    const std::shared_ptr<FrameSource> frames = chosen->source->makeFrames(CursorMode::leftOut);
    co_return co_await runBlocking([frames] { return firstPictureOf(*frames); }, stop);
}

} // namespace vantrell

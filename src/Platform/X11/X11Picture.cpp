// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Picture.h"

#include "Platform/ScreenError.h"
#include "Platform/X11/ShmSegment.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <sys/mman.h>

namespace vantrell {

namespace {

/// The picture format of a visual; Format_Invalid when there is none like it.
QImage::Format formatOf(const X11Connection &connection, xcb_visualid_t wanted) {
    constexpr auto ownOrder =
        std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    if (xcb_get_setup(connection.xcb())->image_byte_order != ownOrder)
        return QImage::Format_Invalid;
    const xcb_screen_t &screen = connection.screen();
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            const xcb_visualtype_t &visual = *visuals.data;
            if (visual.visual_id != wanted)
                continue;
            const int depth = depths.data->depth;
            const auto has = [&](std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
                return visual.red_mask == red && visual.green_mask == green && visual.blue_mask == blue;
            };
            if (depth == 32 && has(0xff0000, 0xff00, 0xff))
                return QImage::Format_ARGB32_Premultiplied;
            if (depth == 24 && has(0xff0000, 0xff00, 0xff))
                return QImage::Format_RGB32;
            if (depth == 30 && has(0x3ff00000, 0xffc00, 0x3ff))
                return QImage::Format_RGB30;
            if (depth == 16 && has(0xf800, 0x7e0, 0x1f))
                return QImage::Format_RGB16;
            return QImage::Format_Invalid;
        }
    }
    return QImage::Format_Invalid;
}

struct SharedMemory {
    std::uint8_t *data;
    std::size_t size;
};

/// The same pixels through memory that is shared with the server, and not copied afterwards: a picture of a
/// large screen takes a third of the time. None where that does not work.
std::optional<QImage> readShared(const X11Connection &connection, xcb_drawable_t drawable,
                                 const PixelRect &part, QImage::Format format) {
    const int pixelBytes = QImage::toPixelFormat(format).bitsPerPixel() / 8;
    const auto stride = std::size_t((part.width * pixelBytes + 3) / 4 * 4);
    auto segment = ShmSegment::create(connection, stride * std::size_t(part.height));
    if (!segment)
        return std::nullopt;
    const auto reply =
        xcbReply(connection.xcb(),
                 xcb_shm_get_image(connection.xcb(), drawable, std::int16_t(part.x), std::int16_t(part.y),
                                   std::uint16_t(part.width), std::uint16_t(part.height), ~0u,
                                   XCB_IMAGE_FORMAT_Z_PIXMAP, (*segment)->id(), 0),
                 xcb_shm_get_image_reply);
    if (!reply || reply->size != (*segment)->size())
        return std::nullopt;
    const std::size_t size = (*segment)->size();
    auto *memory = new SharedMemory{(*segment)->releaseMemory(), size};
    return QImage(
        memory->data, part.width, part.height, qsizetype(stride), format,
        [](void *shared) {
            const std::unique_ptr<SharedMemory> owned(static_cast<SharedMemory *>(shared));
            ::munmap(owned->data, owned->size);
        },
        memory);
}

/// Programs that never think of alpha leave colours above it, which later arithmetic takes for an overflow.
void limitColoursToAlpha(QImage &image) {
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(line[x]);
            line[x] = qRgba(std::min(qRed(line[x]), alpha), std::min(qGreen(line[x]), alpha),
                            std::min(qBlue(line[x]), alpha), alpha);
        }
    }
}

} // namespace

std::expected<QImage, PlatformError> readX11Picture(const X11Connection &connection, xcb_drawable_t drawable,
                                                    const PixelRect &part, xcb_visualid_t visual) {
    const QImage::Format format = formatOf(connection, visual);
    if (format == QImage::Format_Invalid)
        return std::unexpected(
            screenError(ScreenErrorCode::unsupportedPixels, "The display's pixel format is not supported"));
    constexpr int largePixels = 512 * 512;
    if (format == QImage::Format_RGB32 && part.width * part.height >= largePixels)
        if (auto image = readShared(connection, drawable, part, format))
            return std::move(*image);
    const auto cookie =
        xcb_get_image(connection.xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, std::int16_t(part.x),
                      std::int16_t(part.y), std::uint16_t(part.width), std::uint16_t(part.height), ~0u);
    const auto reply = xcbReply(connection.xcb(), cookie, xcb_get_image_reply);
    if (connection.isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!reply)
        return std::unexpected(
            screenError(ScreenErrorCode::windowClosed, "The window was closed before it was captured"));
    QImage image(part.width, part.height, format);
    if (image.isNull())
        return std::unexpected(
            screenError(ScreenErrorCode::outOfMemory, "There is not enough memory for the picture"));
    // Both pad their rows to 32 bits.
    const auto bytes = std::size_t(image.bytesPerLine()) * std::size_t(image.height());
    if (std::size_t(xcb_get_image_data_length(reply.get())) < bytes)
        return std::unexpected(
            screenError(ScreenErrorCode::unsupportedPixels, "The display's pixel format is not supported"));
    std::memcpy(image.bits(), xcb_get_image_data(reply.get()), bytes);
    if (format == QImage::Format_ARGB32_Premultiplied)
        limitColoursToAlpha(image);
    return image;
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/Thumbnailer.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImage>

#include <algorithm>

namespace vantrell {

std::optional<std::string> Thumbnailer::jpegThumbnail(const QImage &image) {
    if (image.isNull())
        return std::nullopt;
    const double scale = std::min(512.0 / std::max(image.width(), image.height()), 1.0);
    const int width = std::max(int(image.width() * scale), 1);
    const int height = std::max(int(image.height() * scale), 1);
    QImage small = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied)
                       .scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    small.setColorSpace(QColorSpace::SRgb);

    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (small.isNull() || !small.save(&buffer, "JPEG", 80))
        return std::nullopt;
    return bytes.toStdString();
}

} // namespace vantrell

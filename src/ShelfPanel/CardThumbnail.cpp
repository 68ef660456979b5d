// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardThumbnail.h"

#include <QRect>

namespace vantrell {

namespace {

/// Null: there is none, or only a JPEG.
const QImage *previewOf(const ShelfItem &item) {
    if (item.capture && !item.capture->previewImage.isNull())
        return &item.capture->previewImage;
    const bool hasJpeg = item.capture && item.capture->thumbnailJPEG;
    return !hasJpeg && item.restoredPreview && !item.restoredPreview->isNull() ? &*item.restoredPreview
                                                                               : nullptr;
}

} // namespace

qint64 CardThumbnail::keyOf(const ShelfItem &item) {
    if (const QImage *preview = previewOf(item))
        return preview->cacheKey();
    return item.capture && item.capture->thumbnailJPEG ? qint64(std::intptr_t(item.capture.get())) : 0;
}

CardThumbnail CardThumbnail::of(const ShelfItem &item) {
    if (const QImage *preview = previewOf(item))
        return {*preview, nullptr, keyOf(item)};
    return keyOf(item) != 0 ? CardThumbnail{{}, item.capture, keyOf(item)} : CardThumbnail();
}

QImage CardThumbnail::scaledTo(QSize pixels) const {
    QImage image = preview;
    if (image.isNull() && capture && capture->thumbnailJPEG) {
        const std::string &jpeg = *capture->thumbnailJPEG;
        image = QImage::fromData(reinterpret_cast<const uchar *>(jpeg.data()), int(jpeg.size()));
    }
    if (image.isNull())
        return {};
    const QSize shown = pixels.scaled(image.size(), Qt::KeepAspectRatio).expandedTo({1, 1});
    QRect part({}, shown);
    part.moveCenter(image.rect().center());
    return image.copy(part)
        .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace vantrell

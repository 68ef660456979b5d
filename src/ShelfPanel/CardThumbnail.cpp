// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardThumbnail.h"

#include <QRect>

namespace vantrell {

CardThumbnail CardThumbnail::of(const ShelfItem &item) {
    if (item.capture && !item.capture->previewImage.isNull())
        return {item.capture->previewImage, nullptr, item.capture->previewImage.cacheKey()};
    if (item.capture && item.capture->thumbnailJPEG)
        return {{}, item.capture, qint64(std::intptr_t(item.capture.get()))};
    if (item.restoredPreview && !item.restoredPreview->isNull())
        return {*item.restoredPreview, nullptr, item.restoredPreview->cacheKey()};
    return {};
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

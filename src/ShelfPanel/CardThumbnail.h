// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Shelf/ShelfItem.h"

#include <QImage>
#include <QSize>

#include <memory>

namespace vantrell {

/// What a card's small picture is made from.
struct CardThumbnail {
    /// Null: there is only the capture's JPEG, or nothing at all.
    QImage preview;
    std::shared_ptr<const CaptureResult> capture;
    /// Tells one source from another; 0 when there is none.
    qint64 key = 0;

    static CardThumbnail of(const ShelfItem &item);
    static qint64 keyOf(const ShelfItem &item);

    /// The picture cut to the proportions of `pixels` and scaled to it; null when it is damaged. Reentrant,
    /// and slow for large pictures.
    QImage scaledTo(QSize pixels) const;
};

} // namespace vantrell

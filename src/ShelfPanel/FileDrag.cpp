// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/FileDrag.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QPixmap>
#include <QUrl>

namespace vantrell {

void dragFile(const std::filesystem::path &file, const QImage &picture, const QSize &size) {
    // By its bytes: a name need not be text.
    const QByteArray bytes = QByteArray::fromStdString(file.string());
    auto *data = new QMimeData;
    data->setUrls({QUrl::fromEncoded("file://" + bytes.toPercentEncoding("/"))});
    // Of the application: the card and its window may go meanwhile.
    auto *drag = new QDrag(qApp);
    drag->setMimeData(data);
    if (!picture.isNull()) {
        QPixmap shown = QPixmap::fromImage(picture);
        shown.setDevicePixelRatio(double(picture.width()) / size.width());
        drag->setPixmap(shown);
        drag->setHotSpot({size.width() / 2, size.height() / 2});
    }
    // Never moved: the upload needs the file where it is.
    drag->exec(Qt::CopyAction);
}

} // namespace vantrell

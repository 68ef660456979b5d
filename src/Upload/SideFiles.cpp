// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/SideFiles.h"

#include "Support/AtomicFile.h"
#include "Support/Log.h"

#include <QImageReader>

namespace vantrell::sideFiles {

namespace {

bool writeSideFile(const std::string &path, const std::string &bytes) {
    const auto written = writeFileAtomically(path, bytes);
    if (!written)
        qCCritical(logUpload, "side file not written: %s", written.error().message.c_str());
    return written.has_value();
}

} // namespace

Written write(const UploadJournalEntry &entry, const CaptureResult &capture) {
    return {
        .thumb = entry.thumbPath && capture.thumbnailJPEG &&
                 writeSideFile(*entry.thumbPath, *capture.thumbnailJPEG),
        .meta = entry.metaPath && writeSideFile(*entry.metaPath, capture.metadata.jsonData()),
    };
}

std::optional<std::string> read(const std::optional<std::string> &path) {
    if (!path)
        return std::nullopt;
    auto bytes = readFile(*path);
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

QImage preview(const UploadJournalEntry &entry) {
    constexpr QSize largest(640, 640);
    const std::string path = entry.thumbPath         ? *entry.thumbPath
                             : entry.kind == "image" ? entry.masterPath
                                                     : std::string();
    if (path.empty())
        return {};
    QImageReader reader(QString::fromStdString(path));
    if (const QSize size = reader.size(); size.width() > largest.width() || size.height() > largest.height())
        reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace vantrell::sideFiles

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Upload/UploadJournalEntry.h"

#include <QImage>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// The files that go with a capture's main file. These block on the disk: worker threads.
namespace sideFiles {

/// Which of an entry's side files are on disk.
struct Written {
    bool thumb = false;
    bool meta = false;
};

/// Writes the capture's thumbnail and metadata to the paths that the entry names. Failures are logged.
Written write(const UploadJournalEntry &entry, const CaptureResult &capture);

/// A side file's bytes; none when there is none to read.
std::optional<std::string> read(const std::optional<std::string> &path);

/// What a card shows of a capture of an earlier run: its thumbnail, or the picture itself. Null when there is
/// neither.
QImage preview(const UploadJournalEntry &entry);

} // namespace sideFiles

} // namespace vantrell

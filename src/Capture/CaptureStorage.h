// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <chrono>
#include <filesystem>
#include <set>
#include <string>

class QUuid;

namespace vantrell {

/// Where the application keeps its files: `$XDG_DATA_HOME/VantrellCapture` with the journal and the event
/// queue, and its folder "Captures" with recordings, screenshots and their side files. Stateless;
/// thread-safe. No operation reports an error: a folder that cannot be made shows at the write that follows.
class CaptureStorage {
public:
    /// The captures folder, made with its parents when it is missing.
    static std::filesystem::path directory();

    /// A new capture file, "Vantrell Capture <local date and time> <4 characters>.<ext>". Not created.
    static std::filesystem::path newFileURL(const std::string &ext);

    /// A side file of a capture: "thumb.jpg", "sidecar.json".
    static std::filesystem::path sidecarURL(const QUuid &captureId, const std::string &suffix);

    /// The side files that an upload keeps of its capture.
    static std::filesystem::path thumbnailOf(const QUuid &captureId);
    static std::filesystem::path sidecarOf(const QUuid &captureId);
    /// The side files that lie with a capture, wherever that is, under its base name.
    static std::filesystem::path thumbnailBeside(const std::filesystem::path &capture);
    static std::filesystem::path sidecarBeside(const std::filesystem::path &capture);

    /// Where a crash leaves its report. Not made.
    static std::filesystem::path crashFolder();

    static std::filesystem::path journalURL();
    static std::filesystem::path analyticsQueueURL();

    /// Deletes what was created in the captures folder, and last written, more than 7 days before `now`,
    /// except the paths in `keeping`, however those are written. Entries without a readable creation date
    /// stay.
    static void pruneOldFiles(const std::set<std::string> &keeping,
                              std::chrono::system_clock::time_point now = std::chrono::system_clock::now());
};

} // namespace vantrell

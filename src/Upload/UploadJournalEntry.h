// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <QUuid>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// The durable record of one upload that has not ended. Its identity is `captureId`.
struct UploadJournalEntry {
    enum class Phase {
        /// Waits to be registered with the service.
        queued = 1,
        /// Registered; the main file is being sent.
        uploading,
        /// Everything was sent; the service has not yet said that it has it.
        confirming,
        /// Parked until the user retries.
        failed,
    };

    QUuid captureId;
    std::string projectId;
    /// "video" or "image".
    std::string kind;
    std::string mime;
    std::optional<std::string> name;
    std::optional<std::int64_t> durationMs;
    /// The bytes of real paths (see FilePath.h): absolute, without links or detours.
    std::string masterPath;
    std::optional<std::string> thumbPath;
    std::optional<std::string> metaPath;
    /// The service's id of the capture, once it was registered.
    std::optional<std::string> assetId;
    /// Address of the resumable upload. A secret: it is never logged.
    std::optional<std::string> tusLocation;
    Phase phase = Phase::queued;
    /// The sentence that the user was shown when the upload was parked.
    std::optional<std::string> failureReason;
    /// True when the project was found deleted, or when none was known (`projectId` is empty then).
    std::optional<bool> projectGone;
    std::chrono::sys_seconds createdAt;

    std::filesystem::path masterFile() const { return masterPath; }
    /// Forgets what the service knows of the capture: the next attempt registers it anew.
    void reset();

    /// JSON with the fields' names as keys; absent optionals are left out. A path that is not UTF-8 is
    /// written as a "file:///" address (see FilePath.h); elsewhere such bytes are replaced when the JSON is
    /// written.
    nlohmann::json encode() const;
    /// Failures stay in the reader.
    static UploadJournalEntry decode(JsonReader &reader);

    bool operator==(const UploadJournalEntry &) const = default;
};

} // namespace vantrell

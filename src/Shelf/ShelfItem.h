// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"

#include <QImage>
#include <QUuid>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace vantrell {

/// One card of the shelf.
struct ShelfItem {
    struct Uploading {
        /// 0 to 1.
        double progress = 0;
        bool operator==(const Uploading &) const = default;
    };
    struct Done {
        std::string projectId;
        bool operator==(const Done &) const = default;
    };
    struct Failed {
        std::string message;
        bool operator==(const Failed &) const = default;
    };
    /// The capture is still being finished.
    struct Processing {
        bool operator==(const Processing &) const = default;
    };
    /// Its project is gone and the user has not chosen another.
    struct NeedsProject {
        bool operator==(const NeedsProject &) const = default;
    };
    using Status = std::variant<Uploading, Done, Failed, Processing, NeedsProject>;

    QUuid id;
    /// Null while it is processed, and on cards restored at launch.
    std::shared_ptr<const CaptureResult> capture;
    /// The upload behind the card.
    std::optional<QUuid> entryId;
    Status status;
    /// Shown when there is no capture name.
    std::string placeholderName;
    /// What its user should know besides the status: why the recording ended, that its sound is missing.
    /// Empty: nothing.
    std::string note;
    /// Only on cards restored at launch.
    std::optional<QImage> restoredPreview;
    std::optional<std::filesystem::path> restoredFileURL;
    std::optional<std::int64_t> restoredDurationMs;

    // The capture's, or the restored card's.

    std::optional<std::filesystem::path> fileURL() const;
    /// Absent for stills, and as long as it is not known.
    std::optional<std::int64_t> durationMs() const;
    /// The capture's name, or the placeholder.
    const std::string &title() const;
    /// What the card says about its state.
    std::string statusText() const;
    bool isDone() const { return std::holds_alternative<Done>(status); }
    /// The card offers to try again.
    bool canRetry() const {
        return std::holds_alternative<Failed>(status) || std::holds_alternative<NeedsProject>(status);
    }
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Cancelled.h"
#include "Support/Task.h"

#include <QUuid>

#include <expected>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>

namespace vantrell {

/// Why nothing can be delivered.
struct DeliveryRefusal {
    std::string sentence;
    bool isNotConnected = false;
};

/// Another process that uploads for this one. Main thread.
class UploadAgent {
public:
    using Refusal = DeliveryRefusal;
    /// The asset's id; else why there is none yet: a sentence, or nobody waited for it to the end.
    using Asset = std::expected<std::string, std::variant<std::string, Cancelled>>;

    virtual ~UploadAgent() = default;

    /// Looks ahead whether it could.
    virtual Task<std::expected<void, Refusal>> prepare(std::stop_token stop) = 0;

    /// Hands a capture's file over with the side files beside it, and waits until it has arrived.
    virtual Task<Asset> upload(std::filesystem::path file, std::optional<std::string> projectId,
                               std::stop_token stop) = 0;
    /// Waits until an upload of the journal that it has taken over has arrived.
    virtual Task<Asset> awaitUpload(QUuid journalId, std::stop_token stop) = 0;
};

} // namespace vantrell

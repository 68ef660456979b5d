// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Session/ApplicationBus.h"
#include "Support/Task.h"

#include <QVariantList>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// The application that runs in this session, spoken to over the session bus. Main thread.
class RunningApplication {
public:
    struct CallError {
        /// For the user.
        std::string sentence;
        bool isNotConnected = false;
        /// It does not run, or not any more.
        bool isGone = false;
    };
    using Answer = std::expected<QVariantList, CallError>;
    /// How an upload ended there; the error is the sentence of its card.
    struct Uploaded {
        std::string file;
        std::string projectId;
        std::expected<std::string, std::string> assetId;
    };

    /// Whether one runs now. Without a bus none does.
    static bool isThere();

    /// Waits until one comes; false when the stop is requested before.
    static Task<bool> arrival(std::stop_token stop);

    /// Waits for as long as the method takes, which may be an upload's time. One that is only just starting
    /// is asked again until it has started.
    static Task<Answer> call(std::string method, QVariantList arguments, std::stop_token stop,
                             std::string interface = applicationBus::interface);

    /// Waits for the end of an upload that it knows by that journal id.
    static Task<std::expected<Uploaded, CallError>> awaitUpload(std::string id, std::stop_token stop);
};

} // namespace vantrell

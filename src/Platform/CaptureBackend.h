// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureRequest.h"
#include "Platform/CaptureSource.h"
#include "Platform/Display.h"
#include "Platform/WindowAppearance.h"
#include "Platform/WindowDescription.h"
#include "Support/Cancelled.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <stop_token>
#include <variant>
#include <vector>

namespace vantrell {

/// Port: the screen of this desktop session, what there is to capture. Main thread.
class CaptureBackend {
public:
    /// Not the pointer alone: with libstdc++ 12 no task can yield what a null pointer converts to.
    struct Chosen {
        /// Never null.
        std::shared_ptr<CaptureSource> source;
    };
    using ChoiceError = std::variant<PlatformError, Cancelled>;
    using Choice = std::expected<Chosen, ChoiceError>;

    virtual ~CaptureBackend() = default;

    /// The displays as they are now, the primary one first.
    virtual std::expected<std::vector<Display>, PlatformError> displays() = 0;

    /// Windows are picked in the desktop's own dialog and nowhere else.
    virtual bool hasOwnPicker() const { return false; }

    /// Windows of applications that can be captured, the topmost first.
    virtual std::expected<std::vector<WindowDescription>, PlatformError> windows() = 0;

    /// What a picker of windows shows of one; empty when it is gone.
    virtual WindowAppearance appearance([[maybe_unused]] std::uint32_t window) { return {}; }

    /// Finds what is wanted, at once or after the desktop's dialog, which may take minutes and which the user
    /// may dismiss (Cancelled). The backend outlives the source. Errors: noSuchDisplay, noSuchWindow,
    /// badArea, noDialog.
    virtual Task<Choice> choose(CaptureRequest request, std::stop_token stop) = 0;

    /// Waits for what choices that were stopped leave to be done, some seconds at most. A program that ends
    /// before may be asked again what the desktop knew.
    virtual Task<> settled([[maybe_unused]] std::stop_token stop) { co_return; }
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureBackend.h"

#include <string>

namespace vantrell {

/// Stands in where nothing can be captured and says why.
class NullCaptureBackend final : public CaptureBackend {
public:
    /// `sentence` tells the user what is missing.
    explicit NullCaptureBackend(std::string sentence);

    std::expected<std::vector<Display>, PlatformError> displays() override;
    std::expected<std::vector<WindowDescription>, PlatformError> windows() override;
    Task<Choice> choose(CaptureRequest request, std::stop_token stop) override;

private:
    PlatformError m_error;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/NullCaptureBackend.h"

#include "Platform/ScreenError.h"

#include <utility>

namespace vantrell {

NullCaptureBackend::NullCaptureBackend(std::string sentence)
    : m_error(screenError(ScreenErrorCode::noSession, std::move(sentence))) {}

std::expected<std::vector<Display>, PlatformError> NullCaptureBackend::displays() {
    return std::unexpected(m_error);
}

std::expected<std::vector<WindowDescription>, PlatformError> NullCaptureBackend::windows() {
    return std::unexpected(m_error);
}

Task<CaptureBackend::Choice> NullCaptureBackend::choose(CaptureRequest, std::stop_token) {
    co_return std::unexpected(ChoiceError(m_error));
}

} // namespace vantrell

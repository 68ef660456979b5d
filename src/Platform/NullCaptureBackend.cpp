// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/NullCaptureBackend.h"

#include "Platform/ScreenError.h"

#include <utility>

namespace vantrell {
namespace {

class NullStream final : public CaptureStream {
public:
    explicit NullStream(PlatformError error) : m_error(std::move(error)) {}

    Task<std::expected<void, PlatformError>> start(std::stop_token) override {
        co_return std::unexpected(m_error);
    }
    void stop() override {}

private:
    PlatformError m_error;
};

} // namespace

NullCaptureBackend::NullCaptureBackend(std::string sentence)
    : m_error(screenError(ScreenErrorCode::noSession, std::move(sentence))) {}

std::expected<std::vector<Display>, PlatformError> NullCaptureBackend::displays() {
    return std::unexpected(m_error);
}

std::expected<std::vector<WindowDescription>, PlatformError> NullCaptureBackend::windows() {
    return std::unexpected(m_error);
}

std::unique_ptr<CaptureStream> NullCaptureBackend::makeStream(CaptureStreamConfiguration,
                                                              CaptureStreamEvents) {
    return std::make_unique<NullStream>(m_error);
}

} // namespace vantrell

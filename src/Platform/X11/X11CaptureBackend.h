// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureBackend.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11WindowCatalog.h"

#include <memory>

namespace vantrell {

/// The screen of an X11 session. Main thread.
class X11CaptureBackend final : public CaptureBackend {
public:
    /// Fails when no X server answers.
    static std::expected<std::unique_ptr<X11CaptureBackend>, PlatformError> create();

    std::expected<std::vector<Display>, PlatformError> displays() override;
    std::expected<std::vector<WindowDescription>, PlatformError> windows() override;
    WindowAppearance appearance(std::uint32_t window) override;
    /// At once.
    Task<Choice> choose(CaptureRequest request, std::stop_token stop) override;

private:
    using Found = std::expected<std::shared_ptr<CaptureSource>, PlatformError>;

    explicit X11CaptureBackend(std::unique_ptr<X11Connection> connection);
    Found find(const CaptureRequest::WholeDisplay &wanted, const std::vector<Display> &displays);
    Found find(const CaptureRequest::Area &wanted, const std::vector<Display> &displays);
    Found find(const CaptureRequest::Window &wanted, const std::vector<Display> &displays);
    Found find(const CaptureRequest::LetDesktopAsk &wanted, const std::vector<Display> &displays);

    std::unique_ptr<X11Connection> m_connection;
    X11WindowCatalog m_catalog;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/PortalRequests.h"
#include "Platform/CaptureBackend.h"
#include "Platform/Wayland/CastCloser.h"
#include "Platform/Wayland/CastQuestions.h"
#include "Platform/Wayland/CastTokens.h"
#include "Platform/Wayland/ScreenCastSession.h"
#include "Platform/Wayland/WaylandCapture.h"

#include <QDBusConnection>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantrell {

/// The screen of a Wayland session, which the desktop shares through its portal: displays and areas of them
/// without asking again where its user has agreed once, windows through its own dialog. Main thread.
class WaylandCaptureBackend final : public CaptureBackend {
public:
    /// `displays` lists the monitors.
    explicit WaylandCaptureBackend(
        QDBusConnection bus, std::function<std::expected<std::vector<Display>, PlatformError>()> displays);
    ~WaylandCaptureBackend() override;

    std::expected<std::vector<Display>, PlatformError> displays() override { return m_displays(); }
    bool hasOwnPicker() const override { return true; }
    /// Always fails: only the desktop's own dialog knows them.
    std::expected<std::vector<WindowDescription>, PlatformError> windows() override;
    Task<Choice> choose(CaptureRequest request, std::stop_token stop) override;
    Task<> settled(std::stop_token stop) override { return m_questions.answered(std::move(stop)); }

    /// The window that was chosen under that number, as long as somebody has it.
    std::shared_ptr<WaylandCapture> chosenWindow(std::uint32_t id) const;
    /// A display or an area of it that somebody has, if there is one.
    std::shared_ptr<WaylandCapture> captureOfDisplay(const std::string &id) const;
    /// The area lies on one display, which is shared without asking.
    bool isRemembered(const PixelRect &area, const std::vector<Display> &displays);
    PortalRequests &portal() { return m_portal; }

private:
    /// What a request comes to.
    struct Wanted {
        CaptureKind kind = CaptureKind::display;
        Display display;
        /// Of an area, in the desktop's pixels.
        PixelRect place;
        ScreenCastSession::Wish wish;
        bool isRemembered = true;
        bool isDisplayTold = false;
    };
    std::expected<Wanted, PlatformError> wantedBy(const CaptureRequest &request,
                                                  const std::vector<Display> &displays);
    Task<Choice> share(Wanted wanted, std::vector<Display> displays, std::stop_token stop);
    std::shared_ptr<WaylandCapture> captureOf(Wanted wanted, std::unique_ptr<ScreenCastSession> session,
                                              std::shared_ptr<CastFeed> feed, PixelSize picture);

    PortalRequests m_portal;
    CastCloser m_closer;
    const std::function<std::expected<std::vector<Display>, PlatformError>()> m_displays;
    CastTokens m_tokens;
    std::uint32_t m_lastWindow = 0;
    struct Shared {
        std::weak_ptr<WaylandCapture> capture;
        /// Empty when the desktop does not tell which it is, and for windows.
        std::string displayId;
    };
    std::vector<Shared> m_shared;
    CastQuestions m_questions{m_portal};
};

} // namespace vantrell

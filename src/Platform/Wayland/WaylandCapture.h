// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureSource.h"
#include "Platform/Wayland/CastCloser.h"
#include "Platform/Wayland/CastFeed.h"
#include "Platform/Wayland/PipeWireFrameSource.h"
#include "Platform/Wayland/ScreenCastSession.h"

#include <QImage>

#include <memory>
#include <optional>
#include <stop_token>

namespace vantrell {

/// What the desktop shares with us: a display, a part of one, or a window. The sharing lasts as long as the
/// object, over all stretches of a recording; between them nothing is sent. Main thread.
class WaylandCapture final : public CaptureSource {
public:
    /// `cut`: the part of the cast that is wanted. `closer` outlives it.
    WaylandCapture(CastCloser &closer, std::unique_ptr<ScreenCastSession> session,
                   std::shared_ptr<CastFeed> feed, Facts facts, std::optional<PipeWireFrameSource::Cut> cut);
    ~WaylandCapture() override;

    const Facts &facts() const override { return m_facts; }
    std::optional<PixelRect> place() const override;
    bool tellsPointer() const override { return separatesPointer(); }
    bool separatesPointer() const override {
        return m_session->pointer() == ScreenCastSession::Pointer::metadata;
    }
    std::optional<std::string> restoreToken() const override { return m_session->restoreToken(); }
    std::unique_ptr<FrameSource> makeFrames(CursorMode cursor) override;

    /// The whole of what is shared, as it is recorded just now; null when it is not. With the pointer only
    /// where the desktop cannot leave it out.
    Task<QImage> pictureInUse(std::stop_token stop) const;

private:
    CastCloser &m_closer;
    std::unique_ptr<ScreenCastSession> m_session;
    const std::shared_ptr<CastFeed> m_feed;
    const Facts m_facts;
    const std::optional<PipeWireFrameSource::Cut> m_cut;
};

} // namespace vantrell

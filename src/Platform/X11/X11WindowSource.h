// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Damage.h"
#include "Platform/X11/X11FrameSource.h"
#include "Platform/X11/X11PatchReader.h"
#include "Platform/X11/X11WindowPlace.h"
#include "Support/BlockMap.h"

#include <optional>
#include <span>

namespace vantrell {

/// A window's own content (COMPOSITE), also while it is covered or moved. While it is not shown at all
/// (another virtual desktop, minimised) its last picture stays. When its size changes, the picture's does.
/// Closing it ends the source with `windowClosed`.
class X11WindowSource final : public X11FrameSource {
public:
    X11WindowSource(xcb_window_t window, bool showsCursor);

    std::expected<void, PlatformError> open() override;
    PixelSize size() const override { return m_content.size(); }
    std::expected<FrameUpdate, PlatformError> fetch() override;

private:
    void handle(const xcb_generic_event_t &event, double now) override;
    std::optional<PlatformError> ended() const override;
    /// Takes the window's present pixels and place. True when there are any.
    bool renew();
    void take(const X11WindowPlace &place, PixelSize pixmap);
    std::expected<FrameUpdate, PlatformError> read(double changedAt);
    void drawPointer(const FramePatch &patch);
    FrameUpdate update(double changedAt, std::span<const FramePatch> patches) const;

    xcb_window_t m_window;
    bool m_isClosed = false;
    /// The window was mapped, moved or resized since its place and pixels were asked for.
    bool m_isOutdated = true;
    std::optional<X11Damage> m_damage;
    std::optional<X11PatchReader> m_reader;
    xcb_pixmap_t m_pixmap = XCB_NONE;
    PixelSize m_pixmapSize;
    int m_border = 0;
    /// The content in the pixmap, and its place on the desktop.
    PixelRect m_content;
    PixelRect m_place;
    /// Blocks of the content that must be fetched.
    BlockMap m_stale;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/BlockMap.h"
#include "Platform/FrameSource.h"
#include "Platform/X11/ShmSegment.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11Cursor.h"
#include "Platform/X11/X11Wakeup.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

/// A part of the desktop: sleeps until the server reports damage (DAMAGE) and fetches the damaged parts only
/// (MIT-SHM). What lies outside of the desktop is black. The pointer is drawn into the pixels when asked for,
/// and its movements are then changes (XFIXES, XInput 2).
class X11FrameSource final : public FrameSource {
public:
    /// `area` in the desktop's pixels.
    X11FrameSource(const PixelRect &area, bool showsCursor);
    ~X11FrameSource() override;

    std::expected<void, PlatformError> open() override;
    PixelSize size() const override { return m_area.size(); }
    std::expected<FrameWait, PlatformError> wait(double notBefore, std::optional<double> deadline) override;
    std::expected<FrameUpdate, PlatformError> fetch() override;
    void interrupt() override { m_wakeup.interrupt(); }

private:
    void drainEvents();
    void handle(const xcb_generic_event_t &event);
    void noteChange(double hostTime);
    /// Takes the damage so far and the pointer's new place into `m_stale`.
    std::expected<void, PlatformError> collectChanges();
    std::expected<void, PlatformError> fetchStale();
    PixelRect onPicture(const PixelRect &desktop) const;

    PixelRect m_area;
    bool m_showsCursor;
    X11Wakeup m_wakeup;

    std::unique_ptr<X11Connection> m_x11;
    PixelSize m_desktop;
    std::uint8_t m_firstDamageEvent = 0;
    xcb_damage_damage_t m_damage = XCB_NONE;
    xcb_xfixes_region_t m_region = XCB_NONE;
    std::unique_ptr<ShmSegment> m_memory;
    std::optional<X11Cursor> m_cursor;

    std::optional<double> m_changedAt;
    bool m_damaged = false;
    /// When the pointer is looked at next although no device reported a movement.
    double m_nextPointerLook = 0;
    int m_failedFetches = 0;
    /// Blocks of the picture that must be fetched.
    BlockMap m_stale;
    std::vector<FramePatch> m_patches;
};

} // namespace vantrell

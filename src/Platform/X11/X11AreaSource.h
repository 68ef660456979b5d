// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11AreaPlace.h"
#include "Platform/X11/X11Damage.h"
#include "Platform/X11/X11FrameSource.h"
#include "Platform/X11/X11PatchReader.h"
#include "Support/BlockMap.h"

#include <memory>
#include <optional>

namespace vantrell {

/// A part of the desktop, over whatever monitors it lies; what lies outside of the desktop is black. It goes
/// with its display (X11AreaPlace) and ends with `displayGone` when that is away for longer than a change of
/// the displays' arrangement takes; nothing is fetched meanwhile.
class X11AreaSource final : public X11FrameSource {
public:
    X11AreaSource(std::shared_ptr<X11AreaPlace> place, bool showsCursor);

    std::expected<void, PlatformError> open() override;
    PixelSize size() const override { return m_area.size(); }
    std::expected<FrameUpdate, PlatformError> fetch() override;

private:
    void handle(const xcb_generic_event_t &event, double now) override;
    std::optional<PlatformError> ended() const override;
    std::optional<double> endsAt() const override;
    std::expected<void, PlatformError> watchMonitors();
    std::expected<void, PlatformError> followDisplay();
    FrameUpdate update(double changedAt, std::span<const FramePatch> patches) const;
    PixelRect onPicture(const PixelRect &desktop) const;

    const std::shared_ptr<X11AreaPlace> m_place;
    PixelRect m_area;
    PixelSize m_desktop;
    /// None without RANDR.
    std::optional<std::uint8_t> m_firstMonitorEvent;
    bool m_monitorsChanged = false;
    std::optional<double> m_goneSince;
    std::optional<X11Damage> m_damage;
    std::optional<X11PatchReader> m_reader;
    /// Blocks of the picture that must be fetched.
    BlockMap m_stale;
};

} // namespace vantrell

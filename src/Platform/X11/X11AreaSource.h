// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11AreaPlace.h"
#include "Platform/X11/X11Damage.h"
#include "Platform/X11/X11FrameSource.h"
#include "Platform/X11/X11PatchReader.h"
#include "Platform/X11/X11UnderPanels.h"
#include "Support/BlockMap.h"

#include <memory>
#include <optional>

namespace vantrell {

/// A part of the desktop, over whatever monitors it lies, without this application's own panels
/// (X11UnderPanels); what lies outside of the desktop is black. It goes
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
    std::optional<double> looksAt() const override;
    void look(double now) override;
    std::expected<void, PlatformError> watchMonitors();
    std::expected<void, PlatformError> followDisplay();
    void renewPicture();
    bool isDrawn(const xcb_generic_event_t &event, double now, double &when);
    void findStale();
    void leaveOutHidden();
    std::optional<std::vector<PixelRect>> readable();
    enum class Reading { refused = 1, disturbed, torn, done };
    Reading read(std::span<const PixelRect> rects);
    void finish(const FramePatch &patch);
    FrameUpdate update(double changedAt, std::span<const FramePatch> patches) const;
    PixelRect onPicture(const PixelRect &desktop) const;
    PixelRect onDesktop(const PixelRect &picture) const;

    const std::shared_ptr<X11AreaPlace> m_place;
    PixelRect m_area;
    PixelSize m_desktop;
    /// None without RANDR.
    std::optional<std::uint8_t> m_firstMonitorEvent;
    bool m_monitorsChanged = false;
    std::optional<double> m_goneSince;
    /// Leaves out what panels hide, so that what they draw wakes nobody.
    std::optional<X11Damage> m_damage;
    QRegion m_hidden;
    std::optional<X11PatchReader> m_reader;
    /// None where the display server lacks what it takes.
    std::unique_ptr<X11UnderPanels> m_underPanels;
    /// Blocks of the picture that must be fetched, and those of them that cannot be yet.
    BlockMap m_stale;
    BlockMap m_held;
    /// Since the pixels were asked for.
    bool m_isDrawnMeanwhile = false;
    /// A picture of this size has been fetched.
    bool m_hasPicture = false;
    /// Host time: then the first one is taken, whatever is missing.
    double m_pictureDue = 0;
    std::span<FramePatch> m_patches;
};

} // namespace vantrell

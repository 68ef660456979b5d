// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Damage.h"
#include "Platform/X11/X11FrameSource.h"
#include "Platform/X11/X11PatchReader.h"
#include "Support/BlockMap.h"

#include <optional>

namespace vantrell {

/// A part of the desktop, over whatever monitors it lies; what lies outside of the desktop is black.
class X11AreaSource final : public X11FrameSource {
public:
    /// `area` in the desktop's pixels.
    X11AreaSource(const PixelRect &area, bool showsCursor);

    std::expected<void, PlatformError> open() override;
    PixelSize size() const override { return m_area.size(); }
    std::expected<FrameUpdate, PlatformError> fetch() override;

private:
    void handle(const xcb_generic_event_t &event, double now) override;
    PixelRect onPicture(const PixelRect &desktop) const;

    PixelRect m_area;
    PixelSize m_desktop;
    std::optional<X11Damage> m_damage;
    std::optional<X11PatchReader> m_reader;
    /// Blocks of the picture that must be fetched.
    BlockMap m_stale;
    int m_failedFetches = 0;
};

} // namespace vantrell

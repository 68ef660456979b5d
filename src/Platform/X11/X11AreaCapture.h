// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureSource.h"
#include "Platform/X11/X11AreaPlace.h"

#include <memory>

namespace vantrell {

/// A display or a part of the desktop to record. Main thread.
class X11AreaCapture final : public CaptureSource {
public:
    static std::shared_ptr<X11AreaCapture> ofDisplay(const Display &display);
    /// `display` holds (the most of) the area.
    static std::shared_ptr<X11AreaCapture> ofArea(const Display &display, const PixelRect &area);

    const Facts &facts() const override { return m_facts; }
    std::optional<PixelRect> place() const override { return m_place->place(); }
    std::unique_ptr<FrameSource> makeFrames(CursorMode cursor) override;

private:
    X11AreaCapture(Facts facts, std::shared_ptr<X11AreaPlace> place);

    const Facts m_facts;
    /// Kept up to date by the frame sources, on their threads.
    const std::shared_ptr<X11AreaPlace> m_place;
};

} // namespace vantrell

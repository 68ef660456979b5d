// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureSource.h"
#include "Platform/X11/X11WindowCatalog.h"

namespace vantrell {

/// A window to record. Main thread.
class X11WindowCapture final : public CaptureSource {
public:
    /// `display` holds (the most of) the window. The catalog outlives the source.
    X11WindowCapture(const X11WindowCatalog &catalog, const Display &display,
                     const WindowDescription &window);

    const Facts &facts() const override { return m_facts; }
    /// A round trip.
    std::optional<PixelRect> place() const override { return m_catalog.bounds(m_facts.window->id); }
    std::unique_ptr<FrameSource> makeFrames(CursorMode cursor) override;

private:
    const X11WindowCatalog &m_catalog;
    const Facts m_facts;
};

} // namespace vantrell

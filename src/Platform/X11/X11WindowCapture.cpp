// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowCapture.h"

#include "Platform/X11/X11WindowSource.h"

namespace vantrell {

X11WindowCapture::X11WindowCapture(const X11WindowCatalog &catalog, const Display &display,
                                   const WindowDescription &window)
    : m_catalog(catalog), m_facts{CaptureKind::window, display, window, window.pixels, display.scale} {}

std::unique_ptr<FrameSource> X11WindowCapture::makeFrames(CursorMode cursor) {
    return std::make_unique<X11WindowSource>(m_facts.window->id, cursor == CursorMode::inPicture);
}

} // namespace vantrell

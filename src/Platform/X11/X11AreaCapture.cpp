// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11AreaCapture.h"

#include "Platform/X11/X11AreaSource.h"

#include <utility>

namespace vantrell {

X11AreaCapture::X11AreaCapture(Facts facts, std::shared_ptr<X11AreaPlace> place)
    : m_facts(std::move(facts)), m_place(std::move(place)) {}

std::shared_ptr<X11AreaCapture> X11AreaCapture::ofDisplay(const Display &display) {
    Facts facts{CaptureKind::display, display, std::nullopt, display.pixels, display.scale};
    return std::shared_ptr<X11AreaCapture>(
        new X11AreaCapture(std::move(facts), std::make_shared<X11AreaPlace>(display)));
}

std::shared_ptr<X11AreaCapture> X11AreaCapture::ofArea(const Display &display, const PixelRect &area) {
    Facts facts{CaptureKind::area, display, std::nullopt, area, display.scale};
    return std::shared_ptr<X11AreaCapture>(
        new X11AreaCapture(std::move(facts), std::make_shared<X11AreaPlace>(display, area)));
}

std::unique_ptr<FrameSource> X11AreaCapture::makeFrames(CursorMode cursor) {
    return std::make_unique<X11AreaSource>(m_place, cursor == CursorMode::inPicture);
}

} // namespace vantrell

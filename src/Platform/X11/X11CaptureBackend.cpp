// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11CaptureBackend.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"
#include "Platform/X11/X11AreaCapture.h"
#include "Platform/X11/X11Displays.h"
#include "Platform/X11/X11WindowAppearance.h"
#include "Platform/X11/X11WindowCapture.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

std::unexpected<PlatformError> refusal(ScreenErrorCode code, std::string sentence) {
    return std::unexpected(screenError(code, std::move(sentence)));
}

} // namespace

X11CaptureBackend::X11CaptureBackend(std::unique_ptr<X11Connection> connection)
    : m_connection(std::move(connection)), m_catalog(*m_connection) {}

std::expected<std::unique_ptr<X11CaptureBackend>, PlatformError> X11CaptureBackend::create() {
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    return std::unique_ptr<X11CaptureBackend>(new X11CaptureBackend(std::move(*connection)));
}

std::expected<std::vector<Display>, PlatformError> X11CaptureBackend::displays() {
    return listX11Displays(*m_connection);
}

std::expected<std::vector<WindowDescription>, PlatformError> X11CaptureBackend::windows() {
    const auto all = displays();
    if (!all)
        return std::unexpected(all.error());
    return m_catalog.windows(*all);
}

WindowAppearance X11CaptureBackend::appearance(std::uint32_t window) {
    return {x11WindowIcon(*m_connection, window), x11VisiblePart(window)};
}

Task<CaptureBackend::Choice> X11CaptureBackend::choose(CaptureRequest request, std::stop_token) {
    const auto all = displays();
    if (!all)
        co_return std::unexpected(ChoiceError(all.error()));
    Found found = std::visit([&](const auto &wanted) { return find(wanted, *all); }, request.what);
    if (!found)
        co_return std::unexpected(ChoiceError(std::move(found.error())));
    co_return Chosen{std::move(*found)};
}

X11CaptureBackend::Found X11CaptureBackend::find(const CaptureRequest::WholeDisplay &wanted,
                                                 const std::vector<Display> &displays) {
    const auto display = wanted.id ? std::ranges::find(displays, *wanted.id, &Display::id) : displays.begin();
    if (display == displays.end())
        return refusal(ScreenErrorCode::noSuchDisplay, "There is no display " + wanted.id.value_or(""));
    return X11AreaCapture::ofDisplay(*display);
}

X11CaptureBackend::Found X11CaptureBackend::find(const CaptureRequest::Area &wanted,
                                                 const std::vector<Display> &displays) {
    const auto area = areaOnDisplays(displays, wanted.pixels);
    if (!area)
        return std::unexpected(area.error());
    return X11AreaCapture::ofArea(displayHolding(displays, *area), *area);
}

X11CaptureBackend::Found X11CaptureBackend::find(const CaptureRequest::Window &wanted,
                                                 const std::vector<Display> &displays) {
    const auto all = m_catalog.windows(displays);
    if (!all)
        return std::unexpected(all.error());
    const auto window = std::ranges::find(*all, wanted.id, &WindowDescription::id);
    if (window == all->end())
        return refusal(ScreenErrorCode::noSuchWindow, "There is no window " + std::to_string(wanted.id));
    return std::make_shared<X11WindowCapture>(m_catalog, displayHolding(displays, window->pixels), *window);
}

X11CaptureBackend::Found X11CaptureBackend::find(const CaptureRequest::LetDesktopAsk &,
                                                 const std::vector<Display> &) {
    return refusal(ScreenErrorCode::noDialog, "This desktop does not ask what to record: name a display, a "
                                              "window or an area");
}

} // namespace vantrell

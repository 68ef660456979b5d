// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandCaptureBackend.h"

#include "Platform/DisplayLayout.h"
#include "Platform/ScreenError.h"
#include "Platform/Wayland/ScreenNudge.h"
#include "Support/BlockingWork.h"
#include "Support/ScopeExit.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vantrell {

namespace {

constexpr const char *noWindowList =
    "On Wayland no program is told of the windows: the desktop asks which one to record";

/// A display of which nothing is kept alive, for pictures that are taken at once.
class PlaceOnScreen final : public CaptureSource {
public:
    explicit PlaceOnScreen(Facts facts) : m_facts(std::move(facts)) {}

    const Facts &facts() const override { return m_facts; }
    std::optional<PixelRect> place() const override { return m_facts.place; }
    std::unique_ptr<FrameSource> makeFrames(CursorMode) override { return nullptr; }

private:
    const Facts m_facts;
};

/// The display that the desktop has shared, as far as it tells.
std::optional<Display> sharedDisplay(const std::vector<Display> &displays, const ScreenCastSession &session,
                                     PixelSize picture) {
    const auto found = [&](auto matches) -> std::optional<Display> {
        std::optional<Display> only;
        for (const Display &display : displays) {
            if (!matches(display))
                continue;
            if (only)
                return std::nullopt;
            only = display;
        }
        return only;
    };
    if (displays.size() == 1)
        return displays.front();
    const auto position = session.position();
    const bool isAtCorner = position && position->x == 0 && position->y == 0;
    if (position && (displays.front().isPlaceShared || !isAtCorner)) {
        const auto size = session.logicalSize();
        if (auto display = found([&](const Display &each) {
                return each.frame.x == position->x && each.frame.y == position->y &&
                       (!size || std::abs(size->width - each.frame.width) <= 1);
            }))
            return display;
    }
    return found([&](const Display &each) { return each.pixels.size() == picture; });
}

/// Not about what was chosen earlier: another choice would fare no better.
bool isDesktopBroken(const PlatformError &error) {
    return isScreenError(error, ScreenErrorCode::connectionLost) ||
           isPortalError(error, PortalErrorCode::missing) || isPortalError(error, PortalErrorCode::gone) ||
           isPortalError(error, PortalErrorCode::silent);
}

} // namespace

WaylandCaptureBackend::WaylandCaptureBackend(
    QDBusConnection bus, std::function<std::expected<std::vector<Display>, PlatformError>()> displays)
    : m_portal(std::move(bus)), m_displays(std::move(displays)) {}

WaylandCaptureBackend::~WaylandCaptureBackend() = default;

std::expected<std::vector<WindowDescription>, PlatformError> WaylandCaptureBackend::windows() {
    return std::unexpected(screenError(ScreenErrorCode::noSuchWindow, noWindowList));
}

std::shared_ptr<WaylandCapture> WaylandCaptureBackend::chosenWindow(std::uint32_t id) const {
    for (const Shared &each : m_shared) {
        auto capture = each.capture.lock();
        if (capture && capture->facts().window && capture->facts().window->id == id)
            return capture;
    }
    return nullptr;
}

std::shared_ptr<WaylandCapture> WaylandCaptureBackend::captureOfDisplay(const std::string &id) const {
    for (const Shared &each : m_shared)
        if (auto capture = each.capture.lock(); capture && each.displayId == id)
            return capture;
    return nullptr;
}

bool WaylandCaptureBackend::isRemembered(const PixelRect &area, const std::vector<Display> &displays) {
    const Display &display = displayHolding(displays, area);
    return intersection(area, display.pixels) == area && m_tokens.ofDisplay(display.id);
}

std::expected<WaylandCaptureBackend::Wanted, PlatformError>
WaylandCaptureBackend::wantedBy(const CaptureRequest &request, const std::vector<Display> &displays) {
    Wanted wanted;
    wanted.display = displays.front();
    wanted.wish.separatesPointer = request.separatesPointer;
    wanted.wish.hidesPointer = request.hidesPointer || request.isForStill;
    if (const auto *whole = std::get_if<CaptureRequest::WholeDisplay>(&request.what)) {
        if (whole->id) {
            const auto found = std::ranges::find(displays, *whole->id, &Display::id);
            if (found == displays.end())
                return std::unexpected(
                    screenError(ScreenErrorCode::noSuchDisplay, "There is no display " + *whole->id));
            wanted.display = *found;
        }
    } else if (const auto *area = std::get_if<CaptureRequest::Area>(&request.what)) {
        const auto onDisplays = areaOnDisplays(displays, area->pixels);
        if (!onDisplays)
            return std::unexpected(onDisplays.error());
        wanted.kind = CaptureKind::area;
        wanted.display = displayHolding(displays, *onDisplays);
        // The desktop shares single displays.
        wanted.place = intersection(*onDisplays, wanted.display.pixels);
    } else if (const auto *ask = std::get_if<CaptureRequest::LetDesktopAsk>(&request.what)) {
        wanted.isRemembered = false;
        wanted.wish.restoreToken = ask->restoreToken;
        if (ask->kind == CaptureRequest::LetDesktopAsk::Kind::window) {
            wanted.kind = CaptureKind::window;
            wanted.wish.source = ScreenCastSession::Source::window;
        }
    } else {
        return std::unexpected(screenError(ScreenErrorCode::noSuchWindow, noWindowList));
    }
    if (wanted.kind == CaptureKind::display)
        wanted.place = wanted.display.pixels;
    if (wanted.isRemembered)
        wanted.wish.restoreToken = m_tokens.ofDisplay(wanted.display.id);
    return wanted;
}

Task<CaptureBackend::Choice> WaylandCaptureBackend::choose(CaptureRequest request, std::stop_token stop) {
    auto all = displays();
    if (!all)
        co_return std::unexpected(ChoiceError(all.error()));
    co_await m_questions.answered(stop);
    auto wanted = wantedBy(request, *all);
    if (!wanted)
        co_return std::unexpected(ChoiceError(wanted.error()));
    const bool isPlace = !std::holds_alternative<CaptureRequest::LetDesktopAsk>(request.what);
    if (request.isForStill && isPlace) {
        CaptureSource::Facts facts{wanted->kind, wanted->display, {}, wanted->place, wanted->display.scale};
        co_return Chosen{std::make_shared<PlaceOnScreen>(std::move(facts))};
    }
    auto shared = co_await share(*wanted, *all, stop);
    // What was agreed to earlier may be another display, or none any more: then it is asked anew, once.
    const auto *error = shared ? nullptr : std::get_if<PlatformError>(&shared.error());
    const bool isOutdated =
        error && !isDesktopBroken(*error) && wanted->isRemembered && wanted->wish.restoreToken;
    if (isOutdated && !stop.stop_requested()) {
        m_tokens.keep(wanted->display.id, std::nullopt);
        wanted->wish.restoreToken.reset();
        shared = co_await share(*wanted, *all, stop);
    }
    co_return shared;
}

Task<CaptureBackend::Choice> WaylandCaptureBackend::share(Wanted wanted, std::vector<Display> displays,
                                                          std::stop_token stop) {
    co_await m_closer.closed(stop);
    // One that rests may still have a picture on its way.
    std::erase_if(m_shared, [](const Shared &each) { return each.capture.expired(); });
    if (!m_shared.empty()) {
        co_await runBlocking(nudgeScreens, stop);
        co_await m_closer.closed(stop);
    }
    const auto keep = [this, wanted](std::string token) {
        if (wanted.isRemembered)
            m_tokens.keep(wanted.display.id, std::move(token));
    };
    auto opened = co_await m_questions.ask(wanted.wish, keep, stop);
    if (!opened)
        co_return std::unexpected(ChoiceError(opened.error()));
    std::unique_ptr<ScreenCastSession> session = std::move(opened->session);
    std::shared_ptr<CastFeed> pictures;
    const ScopeExit close([&] { m_closer.close(std::move(session), pictures); });
    auto remote = co_await session->openRemote(stop);
    if (!remote)
        co_return std::unexpected(ChoiceError(remote.error()));
    const bool wantsPointer = session->pointer() == ScreenCastSession::Pointer::metadata;
    const auto feed = CastFeed::open(std::move(remote->socket), session->node(), wantsPointer);
    if (!feed)
        co_return std::unexpected(ChoiceError(feed.error()));
    pictures = *feed;
    const auto picture = co_await pictures->firstPicture(wanted.kind == CaptureKind::window, stop);
    if (!picture)
        co_return std::unexpected(ChoiceError(picture.error()));
    const auto display = sharedDisplay(displays, *session, *picture);
    if (wanted.kind == CaptureKind::area && display && display->id != wanted.display.id)
        co_return std::unexpected(ChoiceError(
            screenError(ScreenErrorCode::badArea, "The area is on " + wanted.display.name +
                                                      ": choose that display when the desktop asks")));
    if (wanted.kind != CaptureKind::window && display) {
        const bool isAnother = display->id != wanted.display.id;
        if (isAnother && wanted.isRemembered && wanted.wish.restoreToken)
            co_return std::unexpected(ChoiceError(
                screenError(ScreenErrorCode::noSuchDisplay, "The desktop shares another display")));
        wanted.display = *display;
        wanted.isDisplayTold = true;
        if (wanted.kind == CaptureKind::display)
            wanted.place = display->pixels;
    }
    if (wanted.isRemembered)
        m_tokens.keep(wanted.display.id, session->restoreToken());
    co_return Chosen{captureOf(std::move(wanted), std::move(session), std::move(pictures), *picture)};
}

std::shared_ptr<WaylandCapture> WaylandCaptureBackend::captureOf(Wanted wanted,
                                                                 std::unique_ptr<ScreenCastSession> session,
                                                                 std::shared_ptr<CastFeed> feed,
                                                                 PixelSize picture) {
    CaptureSource::Facts facts{wanted.kind, wanted.display, {}, wanted.place, wanted.display.scale};
    std::optional<PipeWireFrameSource::Cut> cut;
    if (wanted.kind == CaptureKind::area) {
        const PixelRect &display = wanted.display.pixels;
        cut = {.part = {wanted.place.x - display.x, wanted.place.y - display.y, wanted.place.width,
                        wanted.place.height},
               .of = display.size()};
    }
    if (wanted.kind == CaptureKind::window) {
        // Where it is nobody tells: its own corner counts as the display's.
        const PixelRect place{wanted.display.pixels.x, wanted.display.pixels.y, picture.width,
                              picture.height};
        WindowDescription window;
        window.id = ++m_lastWindow;
        window.pixels = place;
        window.frame = inPointsOf(wanted.display, place);
        facts.place = place;
        facts.window = std::move(window);
    }
    std::string displayId = wanted.isDisplayTold ? wanted.display.id : std::string();
    auto capture = std::make_shared<WaylandCapture>(m_closer, std::move(session), std::move(feed),
                                                    std::move(facts), cut);
    m_shared.push_back({capture, std::move(displayId)});
    return capture;
}

} // namespace vantrell

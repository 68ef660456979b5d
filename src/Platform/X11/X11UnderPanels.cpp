// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11UnderPanels.h"

#include "Platform/PixelBlend.h"

#include <xcb/composite.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace vantrell {

namespace {

/// Windows so near to a panel are kept whole as well: when it is dragged on, they need not be asked.
constexpr int nearPanel = 96;
/// A panel that is hidden and shown again costs nobody a repaint.
constexpr double idleSeconds = 2;
/// How long a program may take to draw what was covered, and what has just come.
constexpr double repaintPatience = 3;
constexpr double newWindowPatience = 0.15;
constexpr int mostRounds = 5;
constexpr int pixelBytes = 4;

QRect toQt(const PixelRect &rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

PixelRect fromQt(const QRect &rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

} // namespace

X11UnderPanels::X11UnderPanels(const X11Connection &connection, X11PatchReader reader)
    : m_connection(&connection), m_stack(connection), m_compositor(connection), m_background(connection),
      m_reader(std::move(reader)) {
    m_stack.ignore(m_background.window());
}

std::unique_ptr<X11UnderPanels> X11UnderPanels::create(const X11Connection &connection) {
    const bool hasAll = connection.require(&xcb_composite_id, "Composite") &&
                        connection.require(&xcb_damage_id, "DAMAGE") && connection.requireXFixes() &&
                        connection.hasBgrxPixels(connection.screen().root_visual);
    auto reader = hasAll ? X11PatchReader::create(connection, {1, 1}) : std::unexpected(PlatformError());
    if (!reader)
        return nullptr;
    xcb_discard_reply(connection.xcb(), xcb_composite_query_version(connection.xcb(), 0, 4).sequence);
    return std::unique_ptr<X11UnderPanels>(new X11UnderPanels(connection, std::move(*reader)));
}

X11UnderPanels::~X11UnderPanels() {
    releaseAll();
}

void X11UnderPanels::setArea(const PixelRect &area) {
    m_isOutdated |= area != m_area;
    m_area = area;
}

bool X11UnderPanels::handles(const xcb_generic_event_t &event, double now, double &hostTime) {
    for (X11CoveredWindow &window : m_covered) {
        if (!window.handles(event, now, hostTime))
            continue;
        m_isDrawnMeanwhile = true;
        return noteChange(hostTime);
    }
    hostTime = now;
    if (m_compositor.handles(event)) {
        for (X11CoveredWindow &window : m_covered)
            window.outdate();
        m_isOutdated = true;
        m_havePanelsChanged = true;
        return isActive();
    }
    if (m_background.handles(event)) {
        m_isOutdated |= isActive();
        return noteChange(hostTime);
    }
    followWindow(event);
    const auto change = m_stack.handle(event);
    if (change == X11WindowStack::Change::nothing)
        return false;
    if (change == X11WindowStack::Change::panels) {
        m_havePanelsChanged = true;
        if (m_panels.hasBegun())
            m_panels.follow(m_stack.windows(), m_compositor.isRunning(), now);
    }
    m_isOutdated |= m_havePanelsChanged || isActive();
    // A panel that comes is damage on the root: that wakes up.
    return isActive() && (change == X11WindowStack::Change::panels || noteChange(hostTime));
}

void X11UnderPanels::followWindow(const xcb_generic_event_t &event) {
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    if (type == XCB_DESTROY_NOTIFY) {
        const auto gone = reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window;
        if (X11CoveredWindow *covered = find(gone)) {
            covered->release(false);
            std::erase_if(m_covered, [gone](const X11CoveredWindow &each) { return each.window() == gone; });
        }
    } else if (type == XCB_MAP_NOTIFY) {
        const auto mapped = reinterpret_cast<const xcb_map_notify_event_t &>(event).window;
        if (X11CoveredWindow *covered = find(mapped))
            covered->outdate(true);
        else if (isActive())
            m_fresh.push_back(mapped);
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if (X11CoveredWindow *covered = find(configured.window))
            covered->outdate();
    }
}

/// True when it is to be fetched at once.
bool X11UnderPanels::noteChange(double hostTime) {
    if (!isActive())
        return false;
    if (!m_compositor.isRunning())
        return true;
    // Soon the compositor draws, and then all of it is one change.
    m_lag.wait(hostTime);
    return false;
}

std::optional<double> X11UnderPanels::looksAt() const {
    std::optional<double> at;
    const auto sooner = [&at](std::optional<double> time) {
        if (time)
            at = std::min(at.value_or(*time), *time);
    };
    for (const X11CoveredWindow &window : m_covered)
        sooner(window.looksAt());
    sooner(m_panels.looksAt());
    sooner(m_lag.looksAt());
    if (m_idleSince)
        sooner(*m_idleSince + idleSeconds);
    return at;
}

std::optional<double> X11UnderPanels::look(double now) {
    const auto waitedSince = m_lag.look(now);
    bool hasChanged = false;
    for (X11CoveredWindow &window : m_covered) {
        const bool wasMissing = !window.missing().isEmpty();
        window.look(now);
        hasChanged |= wasMissing && window.missing().isEmpty();
    }
    if (m_panels.look(now)) {
        m_isOutdated = true;
        hasChanged = true;
    }
    if (m_idleSince && now >= *m_idleSince + idleSeconds) {
        m_idleSince.reset();
        releaseAll();
    }
    return waitedSince || !hasChanged ? waitedSince : std::optional(now);
}

std::vector<X11UnderPanels::Layer> X11UnderPanels::layersUnder(int margin, QRegion &composed) const {
    const bool hasCompositor = m_compositor.isRunning();
    std::vector<Layer> layers;
    composed = m_panels.seenOn(m_area, margin);
    QRegion rest = composed;
    // Without a compositor the root shows what lies above the panels as it is, and nothing blends.
    QRegion underPanels = hasCompositor ? composed : QRegion();
    for (auto window = m_stack.windows().rbegin(); window != m_stack.windows().rend(); ++window) {
        if (!window->isMapped)
            continue;
        if (window->isPanel) {
            underPanels += toQt(window->place).adjusted(-margin, -margin, margin, margin);
            continue;
        }
        const QRegion part = window->covers() & rest;
        if (part.isEmpty())
            continue;
        const QRegion seen = part & underPanels;
        const bool blends = hasCompositor && window->hasAlpha;
        if (!blends)
            rest -= part;
        composed -= part - seen;
        if (!seen.isEmpty() && window->hasPixels)
            layers.push_back({window->id, window->place, window->border, blends, seen});
    }
    if (!rest.isEmpty())
        layers.push_back({.place = fromQt(rest.boundingRect()), .seen = rest});
    return layers;
}

void X11UnderPanels::update(double now, const std::function<void(const PixelRect &)> &stale) {
    const bool hasChanged = m_isOutdated;
    for (int left = mostRounds; m_isOutdated && left > 0; --left) {
        m_isOutdated = false;
        m_havePanelsChanged = false;
        m_stack.update();
        m_panels.follow(m_stack.windows(), m_compositor.isRunning(), now);
        if (m_panels.seenOn(m_area).isEmpty()) {
            showRoot(now, stale);
            continue;
        }
        m_idleSince.reset();
        QRegion composed;
        keepWhole(layersUnder(m_compositor.isRunning() ? 0 : nearPanel, composed), now);
        auto layers = layersUnder(0, composed);
        std::ranges::reverse(layers);
        const bool hasBackground = !layers.empty() && layers.front().window == XCB_NONE;
        m_background.show(hasBackground ? layers.front().place : PixelRect(), m_compositor.isRunning());
        if (layers == m_layers && composed == m_composed)
            continue;
        for (const QRect &rect : m_composed + composed)
            stale(fromQt(rect));
        m_layers = std::move(layers);
        m_composed = composed;
    }
    if (hasChanged)
        placeCovered();
}

void X11UnderPanels::showRoot(double now, const std::function<void(const PixelRect &)> &stale) {
    if (isActive())
        m_idleSince = now;
    for (const QRect &rect : std::exchange(m_composed, QRegion()))
        stale(fromQt(rect));
    m_layers.clear();
    m_background.show({}, m_compositor.isRunning());
}

void X11UnderPanels::keepWhole(const std::vector<Layer> &near, double now) {
    for (const Layer &layer : near) {
        if (layer.window == XCB_NONE || find(layer.window))
            continue;
        if (auto window = X11CoveredWindow::keepWhole(*m_connection, layer.window))
            m_covered.push_back(std::move(*window));
    }
    for (X11CoveredWindow &window : m_covered)
        window.ask();
    for (X11CoveredWindow &window : m_covered) {
        if (window.answer())
            m_fresh.push_back(window.window());
        if (std::ranges::find(m_fresh, window.window()) != m_fresh.end())
            missWhatIsCovered(window, now);
    }
}

void X11UnderPanels::missWhatIsCovered(X11CoveredWindow &covered, double now) const {
    const X11WindowStack::Window *window = m_stack.find(covered.window());
    if (!window)
        return;
    const PixelRect &place = window->place;
    covered.miss((m_stack.above(*window) & toQt(place)).translated(-place.x, -place.y), now,
                 m_compositor.isRunning() ? newWindowPatience : repaintPatience);
}

/// Where windows that are kept whole are seen on the root.
void X11UnderPanels::placeCovered() {
    for (X11CoveredWindow &covered : m_covered) {
        if (const X11WindowStack::Window *window = m_stack.find(covered.window()))
            covered.setPlace(window->place, window->border,
                             window->isMapped ? window->covers() - m_stack.above(*window) : QRegion());
    }
}

void X11UnderPanels::releaseAll() {
    for (X11CoveredWindow &window : m_covered)
        window.release(true);
    m_covered.clear();
}

X11CoveredWindow *X11UnderPanels::find(xcb_window_t window) {
    const auto found = std::ranges::find(m_covered, window, &X11CoveredWindow::window);
    return found == m_covered.end() ? nullptr : &*found;
}

const X11CoveredWindow *X11UnderPanels::find(xcb_window_t window) const {
    const auto found = std::ranges::find(m_covered, window, &X11CoveredWindow::window);
    return found == m_covered.end() ? nullptr : &*found;
}

QRegion X11UnderPanels::held() const {
    QRegion held = m_lag.waiting() & m_composed;
    for (const Layer &layer : m_layers) {
        if (const X11CoveredWindow *window = find(layer.window))
            held += window->missing().translated(layer.place.x, layer.place.y) & layer.seen;
    }
    return held;
}

bool X11UnderPanels::hides(const PixelRect &drawn) const {
    return isActive() && !m_isOutdated && (QRegion(toQt(drawn)) - m_composed).isEmpty();
}

/// What was drawn into windows that are kept whole comes to the root by any look at it. Not by a GetImage:
/// the server writes the damage that this makes into the middle of its reply.
void X11UnderPanels::bringToRoot() {
    xcb_connection_t *xcb = m_connection->xcb();
    if (m_lookPixmap == XCB_NONE) {
        m_lookPixmap = xcb_generate_id(xcb);
        xcb_create_pixmap(xcb, m_connection->screen().root_depth, m_lookPixmap, m_connection->root(), 1, 1);
        m_lookContext = xcb_generate_id(xcb);
        const std::array<std::uint32_t, 2> values{XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
        xcb_create_gc(xcb, m_lookContext, m_lookPixmap, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES,
                      values.data());
    }
    xcb_copy_area(xcb, m_connection->root(), m_lookPixmap, m_lookContext, 0, 0, 0, 0, 1, 1);
}

bool X11UnderPanels::askDamage() {
    m_isDrawnMeanwhile = false;
    const bool grabs = isActive();
    m_isDamageExact = std::exchange(m_isAskedWhole, grabs) && grabs && !m_compositor.isRunning();
    if (grabs) {
        xcb_grab_server(m_connection->xcb());
        bringToRoot();
    }
    for (X11CoveredWindow &window : m_covered)
        window.askDamage(grabs);
    return grabs;
}

void X11UnderPanels::answerDamage(const QRegion &onRoot,
                                  const std::function<void(const PixelRect &)> &stale) {
    const auto show = [&stale](const QRegion &region) {
        for (const QRect &part : region)
            stale(fromQt(part));
    };
    const bool isExact = m_isDamageExact && !m_isOutdated;
    QRegion beside = onRoot - m_composed;
    for (X11CoveredWindow &window : m_covered) {
        const QRegion drawn = window.answerDamage();
        if (drawn.isEmpty())
            continue;
        // The server brings to the root one rectangle around all that was drawn.
        if (isExact)
            beside -= window.shown() & (QRegion(drawn.boundingRect()) - drawn);
        if (const auto layer = std::ranges::find(m_layers, window.window(), &Layer::window);
            layer != m_layers.end()) {
            const bool waits = m_compositor.isRunning();
            m_lag.add(layer->seen & drawn, waits ? (drawn & toQt(m_area)) - m_composed : QRegion());
        }
    }
    show(beside);
    show(m_lag.release(onRoot));
}

std::optional<X11PatchReader::Cut> X11UnderPanels::cutOf(const Layer &layer) const {
    if (layer.window == XCB_NONE)
        return m_background.cut();
    const X11CoveredWindow *window = find(layer.window);
    return window ? window->cut() : std::nullopt;
}

bool X11UnderPanels::ask(std::span<const PixelRect> parts) {
    m_pieces.clear();
    int pixels = 1;
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (!cutOf(m_layers[i]))
            continue;
        for (const PixelRect &part : parts) {
            for (const QRect &rect : m_layers[i].seen &toQt(part)) {
                m_pieces.push_back({i, fromQt(rect)});
                pixels += rect.width() * rect.height();
            }
        }
    }
    if (!m_reader.reserve({pixels, 1}))
        m_pieces.clear();
    const bool grabs = !m_pieces.empty();
    if (grabs)
        xcb_grab_server(m_connection->xcb());
    for (const Piece &piece : m_pieces)
        m_reader.ask(*cutOf(m_layers[piece.layer]), {&piece.place, 1});
    return grabs;
}

bool X11UnderPanels::answer() {
    const auto read = m_reader.answer();
    if (!read) {
        for (X11CoveredWindow &window : m_covered)
            window.outdate();
        m_isOutdated = true;
        return false;
    }
    m_read = *read;
    return true;
}

void X11UnderPanels::draw(const PixelRect &part, std::uint8_t *pixels, std::ptrdiff_t stride) const {
    const auto at = [&](int x, int y) {
        return pixels + (y - part.y) * stride + std::ptrdiff_t(x - part.x) * pixelBytes;
    };
    for (const QRect &rect : m_composed &toQt(part)) {
        for (int y = rect.top(); y <= rect.bottom(); ++y)
            std::memset(at(rect.x(), y), 0, std::size_t(rect.width()) * pixelBytes);
    }
    for (std::size_t i = 0; i < m_pieces.size(); ++i) {
        const PixelRect &place = m_pieces[i].place;
        if (intersection(place, part) != place)
            continue;
        for (int y = 0; y < place.height; ++y) {
            const std::uint8_t *from = m_read[i].pixels + y * m_read[i].stride;
            std::uint8_t *to = at(place.x, place.y + y);
            if (!m_layers[m_pieces[i].layer].blends) {
                std::memcpy(to, from, std::size_t(place.width) * pixelBytes);
                continue;
            }
            for (int x = 0; x < place.width; ++x, from += pixelBytes, to += pixelBytes) {
                std::uint32_t over = 0;
                std::memcpy(&over, from, sizeof over);
                blendOver(over, to);
            }
        }
    }
}

} // namespace vantrell

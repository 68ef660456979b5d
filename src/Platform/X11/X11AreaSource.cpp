// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11AreaSource.h"

#include "Platform/ScreenError.h"
#include "Support/HostTime.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vantrell {

namespace {

/// More patches than this cost more in requests than the pixels between them.
constexpr int mostPatches = 12;
/// Of the same patches, while panels move.
constexpr int mostReads = 3;
/// The first picture waits no longer for programs that have to draw what was covered.
constexpr double firstPatience = 0.7;
/// While displays are arranged anew, each of them may be switched off for a moment.
constexpr double displayPatience = 1.5;

PlatformError displayGone() {
    return screenError(ScreenErrorCode::displayGone, "The recorded display was disconnected");
}

} // namespace

X11AreaSource::X11AreaSource(std::shared_ptr<X11AreaPlace> place, bool showsCursor)
    : X11FrameSource(showsCursor), m_place(std::move(place)) {}

std::expected<void, PlatformError> X11AreaSource::open() {
    if (auto connected = connect(); !connected)
        return connected;
    if (!x11().hasBgrxPixels(x11().screen().root_visual))
        return std::unexpected(unsupportedPixels());
    m_desktop = {x11().screen().width_in_pixels, x11().screen().height_in_pixels};
    constexpr std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY | X11UnderPanels::rootEvents;
    xcb_change_window_attributes(xcb(), x11().root(), XCB_CW_EVENT_MASK, &structure);
    if (auto watching = watchMonitors(); !watching)
        return watching;
    m_area = m_place->place();
    renewPicture();
    m_underPanels = X11UnderPanels::create(x11());

    auto reader = X11PatchReader::create(x11(), m_area.size());
    if (!reader)
        return std::unexpected(reader.error());
    m_reader.emplace(std::move(*reader));
    auto damage = X11Damage::create(x11(), x11().root());
    if (!damage)
        return std::unexpected(damage.error());
    m_damage = *damage;
    xcb_flush(xcb());
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    noteChange(hostNow());
    return {};
}

void X11AreaSource::renewPicture() {
    m_stale = BlockMap(m_area.size());
    m_stale.markAll();
    m_held = BlockMap(m_area.size());
    m_hasPicture = false;
    m_pictureDue = hostNow() + firstPatience;
}

std::expected<void, PlatformError> X11AreaSource::watchMonitors() {
    const xcb_query_extension_reply_t *randr = xcb_get_extension_data(xcb(), &xcb_randr_id);
    if (!randr || !randr->present)
        return {};
    xcb_discard_reply(xcb(), xcb_randr_query_version(xcb(), 1, 5).sequence);
    xcb_randr_select_input(xcb(), x11().root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    // After the selection: what changed before it makes no event.
    const auto monitors = listX11Monitors(x11());
    if (monitors.empty())
        return {};
    m_firstMonitorEvent = randr->first_event;
    if (!m_place->follow(monitors))
        return std::unexpected(displayGone());
    return {};
}

void X11AreaSource::handle(const xcb_generic_event_t &event, double now) {
    double when = now;
    const std::uint8_t type = event.response_type & ~X11Connection::sentEventBit;
    const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
    if (isDrawn(event, now, when)) {
        m_isDrawnMeanwhile = true;
        noteChange(when);
    } else if (type == XCB_CONFIGURE_NOTIFY && configured.window == x11().root()) {
        m_desktop = {configured.width, configured.height};
        m_monitorsChanged = true;
        m_stale.markAll();
        noteChange(now);
    } else if (m_firstMonitorEvent && (type == *m_firstMonitorEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                       type == *m_firstMonitorEvent + XCB_RANDR_NOTIFY)) {
        m_monitorsChanged = true;
        noteChange(now);
    }
}

bool X11AreaSource::isDrawn(const xcb_generic_event_t &event, double now, double &when) {
    if (m_damage->handles(event, now, when))
        return !m_underPanels || !m_underPanels->hides(m_damage->place());
    return m_underPanels && m_underPanels->handles(event, now, when);
}

std::optional<PlatformError> X11AreaSource::ended() const {
    const auto end = endsAt();
    return end && hostNow() >= *end ? std::optional(displayGone()) : std::nullopt;
}

std::optional<double> X11AreaSource::endsAt() const {
    return m_goneSince ? std::optional(*m_goneSince + displayPatience) : std::nullopt;
}

std::optional<double> X11AreaSource::looksAt() const {
    if (!m_underPanels)
        return std::nullopt;
    const auto at = m_underPanels->looksAt();
    // Only when something is missing is the first picture late.
    return at && !m_hasPicture && !m_goneSince ? std::min(*at, m_pictureDue) : at;
}

void X11AreaSource::look(double now) {
    const bool isLate = !m_hasPicture && !m_goneSince && now >= m_pictureDue;
    if (const auto since = m_underPanels->look(now); since || isLate)
        noteChange(since.value_or(now));
}

std::expected<void, PlatformError> X11AreaSource::followDisplay() {
    if (!std::exchange(m_monitorsChanged, false) || !m_firstMonitorEvent)
        return {};
    const bool isThere = m_place->follow(listX11Monitors(x11()));
    if (x11().isBroken())
        return std::unexpected(X11Connection::lostError());
    if (!isThere) {
        m_goneSince = m_goneSince.value_or(hostNow());
        return {};
    }
    m_goneSince.reset();
    const PixelRect area = m_place->place();
    if (area.size() != m_area.size()) {
        if (auto reserved = m_reader->reserve(area.size()); !reserved)
            return reserved;
        m_area = area;
        renewPicture();
    }
    m_area = area;
    m_stale.markAll();
    return {};
}

PixelRect X11AreaSource::onPicture(const PixelRect &desktop) const {
    return {desktop.x - m_area.x, desktop.y - m_area.y, desktop.width, desktop.height};
}

PixelRect X11AreaSource::onDesktop(const PixelRect &picture) const {
    return {picture.x + m_area.x, picture.y + m_area.y, picture.width, picture.height};
}

FrameUpdate X11AreaSource::update(double changedAt, std::span<const FramePatch> patches) const {
    return {.hostTime = changedAt, .size = m_area.size(), .content = patches, .pointer = {}};
}

std::expected<FrameUpdate, PlatformError> X11AreaSource::fetch() {
    const double changedAt = takeChangeTime();
    if (auto followed = followDisplay(); !followed)
        return std::unexpected(followed.error());
    // What is in its place now is another display's.
    if (m_goneSince)
        return update(changedAt, {});
    for (int left = mostReads; left > 0; --left) {
        findStale();
        if (x11().isBroken())
            return std::unexpected(X11Connection::lostError());
        const auto rects = readable();
        if (!rects)
            return update(changedAt, {});
        const Reading reading = read(*rects);
        if (x11().isBroken())
            return std::unexpected(X11Connection::lostError());
        if (reading == Reading::refused) {
            // The desktop has just become smaller: its new size is among the events that wait.
            if (auto refused = pictureRefused(); !refused)
                return std::unexpected(refused.error());
            return update(changedAt, {});
        }
        pictureRead();
        if (m_monitorsChanged)
            return update(changedAt, {});
        // Better a first picture with a panel in it than none, on a machine that is too slow for both.
        const bool isTakenAnyway = left == 1 && !m_hasPicture && hostNow() >= m_pictureDue;
        if ((reading == Reading::disturbed && !isTakenAnyway) || (reading == Reading::torn && left > 1))
            continue;
        if (m_underPanels)
            m_underPanels->pictureTaken();
        m_stale = m_held;
        m_hasPicture = true;
        for (const FramePatch &patch : m_patches)
            finish(patch);
        return update(changedAt, m_patches);
    }
    noteChange(hostNow());
    return update(changedAt, {});
}

void X11AreaSource::findStale() {
    const auto mark = [this](const PixelRect &desktop) { m_stale.mark(onPicture(desktop)); };
    const bool isGrabbed = m_underPanels && m_underPanels->askDamage();
    // The look at the root has brought there what was drawn into windows that are kept whole.
    if (isGrabbed)
        m_damage->expectDamage();
    m_damage->ask();
    if (isGrabbed)
        xcb_ungrab_server(xcb());
    askForPointer();
    const bool isPlain = !m_underPanels || !m_underPanels->isActive();
    QRegion drawn;
    m_damage->answer([&](const PixelRect &rect) {
        if (isPlain)
            mark(rect);
        else
            drawn += QRect(rect.x, rect.y, rect.width, rect.height);
    });
    if (m_underPanels) {
        handleReceivedEvents();
        m_underPanels->answerDamage(drawn, mark);
    }
    if (PixelRect before; pointerMoved(before)) {
        mark(before);
        mark(cursor()->rect());
    }
}

/// As long as panels lie in the picture it matters where something is drawn.
void X11AreaSource::leaveOutHidden() {
    const QRegion &hidden = m_underPanels->composed();
    if (hidden == m_hidden)
        return;
    m_hidden = hidden;
    const auto events = hidden.isEmpty() ? X11Damage::Events::first : X11Damage::Events::each;
    if (m_damage->events() != events) {
        auto next = X11Damage::create(x11(), x11().root(), events);
        if (!next)
            return;
        next->forget();
        // Only now: between the two nothing is lost.
        m_damage->expectDamage();
        m_damage->ask();
        m_damage->answer([this](const PixelRect &rect) { m_stale.mark(onPicture(rect)); });
        m_damage->end();
        m_damage = *next;
    }
    if (hidden.isEmpty())
        return;
    m_damage->leaveOut(hidden);
    // What was left where a panel was makes no event before it has been asked for.
    m_damage->expectDamage();
    noteChange(hostNow());
}

/// What is to be read now, of the picture; none while there is no whole picture and parts of it are missing.
std::optional<std::vector<PixelRect>> X11AreaSource::readable() {
    m_held.clear();
    if (!m_underPanels)
        return m_stale.rectangles(mostPatches);
    m_underPanels->setArea(m_area);
    m_underPanels->update(hostNow(), [this](const PixelRect &rect) { m_stale.mark(onPicture(rect)); });
    leaveOutHidden();
    const QRegion held = m_underPanels->held();
    const bool isDue = !m_hasPicture && hostNow() >= m_pictureDue;
    if (held.isEmpty() || isDue)
        return m_stale.rectangles(mostPatches);
    if (!m_hasPicture)
        return std::nullopt;
    BlockMap present = m_stale;
    for (const QRect &part : held)
        m_held.mark(onPicture({part.x(), part.y(), part.width(), part.height()}));
    present.remove(m_held);
    BlockMap late = m_stale;
    late.remove(present);
    m_held = late;
    // Rectangles that cover more than what is marked would show what is missing.
    return present.rectangles(std::numeric_limits<int>::max());
}

X11AreaSource::Reading X11AreaSource::read(std::span<const PixelRect> rects) {
    bool isGrabbed = false;
    if (m_underPanels) {
        std::vector<PixelRect> parts(rects.begin(), rects.end());
        std::ranges::transform(parts, parts.begin(),
                               [this](const PixelRect &rect) { return onDesktop(rect); });
        isGrabbed = m_underPanels->ask(parts);
    }
    m_reader->ask({.drawable = x11().root(), .drawableSize = m_desktop, .x = m_area.x, .y = m_area.y}, rects);
    if (isGrabbed)
        xcb_ungrab_server(xcb());
    m_isDrawnMeanwhile = false;
    const auto patches = m_reader->answer();
    const bool isWhole = !m_underPanels || m_underPanels->answer();
    if (!patches)
        return Reading::refused;
    m_patches = *patches;
    // Displays and panels that moved before these pixels were read have told so by now.
    handleReceivedEvents();
    if (!isWhole || (m_underPanels && m_underPanels->mayShowPanel()))
        return Reading::disturbed;
    if (m_underPanels && m_underPanels->isOutdated())
        return Reading::torn;
    // What was drawn since the question may be in some of these pixels and not in others.
    const bool mayTear = isGrabbed && (m_isDrawnMeanwhile || m_underPanels->isDrawnMeanwhile());
    return mayTear ? Reading::torn : Reading::done;
}

void X11AreaSource::finish(const FramePatch &patch) {
    const PixelRect place = onDesktop(patch.rect);
    if (m_underPanels)
        m_underPanels->draw(place, m_reader->writable(patch), patch.stride);
    if (cursor())
        cursor()->draw(place, m_reader->writable(patch), patch.stride);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11SelectionWatcher.h"

#include <QSocketNotifier>

#include <xcb/xfixes.h>

#include <utility>

namespace vantrell {

X11SelectionWatcher::X11SelectionWatcher(const std::string &prefix, std::function<void()> changed)
    : m_changed(std::move(changed)) {
    auto connection = X11Connection::open();
    if (!connection || !(*connection)->requireXFixes())
        return;
    m_x11 = std::move(*connection);
    int number = 0;
    for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_x11->xcb()));
         screens.rem > 0 && screens.data->root != m_x11->root(); xcb_screen_next(&screens))
        ++number;
    m_selection = m_x11->atom(prefix + std::to_string(number), true);
    constexpr std::uint32_t ofOwner = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    xcb_xfixes_select_selection_input(m_x11->xcb(), m_x11->root(), m_selection, ofOwner);
    m_isOwned = askOwner();
    m_notifier = std::make_unique<QSocketNotifier>(m_x11->fd(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { readEvents(); });
    // What arrived with the answers above wakes nobody.
    QMetaObject::invokeMethod(m_notifier.get(), [this] { readEvents(); }, Qt::QueuedConnection);
}

X11SelectionWatcher::~X11SelectionWatcher() = default;

bool X11SelectionWatcher::askOwner() const {
    const auto reply = xcbReply(m_x11->xcb(), xcb_get_selection_owner(m_x11->xcb(), m_selection),
                                xcb_get_selection_owner_reply);
    return reply && reply->owner != XCB_NONE;
}

void X11SelectionWatcher::readEvents() {
    bool isAnything = false;
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(m_x11->xcb())})
        isAnything = true;
    if (m_x11->isBroken())
        m_notifier->setEnabled(false);
    if (!isAnything)
        return;
    if (const bool isOwned = askOwner(); std::exchange(m_isOwned, isOwned) != isOwned && m_changed)
        m_changed();
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"

#include <QRegion>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QSocketNotifier;
struct xcb_connection_t;

namespace vantrell {

/// What the panels need of the X server beyond what Qt does for them. Without an X server nothing happens and
/// nothing is composited. Regions are in the device's pixels from the window's corner. Main thread.
class DesktopLink {
public:
    using WindowId = std::uint32_t;

    /// The one of this process; made when it is first asked for.
    static DesktopLink &instance();
    ~DesktopLink();
    DesktopLink(const DesktopLink &) = delete;
    DesktopLink &operator=(const DesktopLink &) = delete;

    /// A compositor blends windows, and those who observe are told when one comes or goes.
    bool isComposited() const { return m_isComposited; }
    [[nodiscard]] Observation observeCompositing(std::function<void()> changed) {
        return m_compositing.observe(std::move(changed));
    }

    /// Recordings leave the window out.
    void markAsOwn(WindowId window);
    /// What of the window there is at all, and what of it the pointer meets; an empty region: everything.
    void setShape(WindowId window, const QRegion &visible, const QRegion &touchable);

    /// Calls `covered` when a window that a window manager manages has come to lie over the window. Menus,
    /// tips and lockers may lie above panels. Ends with the observation.
    [[nodiscard]] Observation watchForCover(WindowId window, std::function<void()> covered);

    WindowId focusedWindow() const;
    void focus(WindowId window);
    /// Returns when the server has done all that was asked for.
    void sync();

private:
    DesktopLink();
    struct Watch;

    void readEvents();
    void updateCompositing();
    void selectStackingEvents();
    void lookForCovers();
    bool isCovered(WindowId window) const;
    bool isManaged(WindowId window) const;
    bool hasState(WindowId window) const;

    xcb_connection_t *m_connection = nullptr;
    std::uint32_t m_root = 0;
    std::uint32_t m_compositorSelection = 0;
    std::uint32_t m_windowState = 0;
    std::uint32_t m_ownMark = 0;
    std::uint8_t m_firstFixesEvent = 0;
    bool m_isComposited = false;
    bool m_looksSoon = false;
    Observers m_compositing;
    std::vector<std::weak_ptr<Watch>> m_watches;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vantrell

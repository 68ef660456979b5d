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

/// What the panels need of the X server beyond what Qt does for them. Without an X server nothing happens;
/// and nothing is composited, except on Wayland, where all is. Regions are in the device's pixels from the
/// window's corner. Main thread.
class DesktopLink {
public:
    using WindowId = std::uint32_t;

    /// The one of this process; made when it is first asked for.
    static DesktopLink &instance();
    /// Qt's own connection: what is asked for there comes after the making of the window. Null without an X
    /// server.
    static xcb_connection_t *serverOfQt();
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

    /// Calls `pressed` with the X key symbol when one of these keys is pressed without others than the locks,
    /// whoever has the keyboard, who does not get it then. A key that another program holds is left to it.
    /// Ends with the observation.
    [[nodiscard]] Observation grabKeys(std::vector<std::uint32_t> keySymbols,
                                       std::function<void(std::uint32_t keySymbol)> pressed);

    /// Calls `painted` when something within the rectangle (pixels of the desktop) was painted on the screen,
    /// under a compositor by it. Ends with the observation.
    [[nodiscard]] Observation watchForPainting(QRect area, std::function<void()> painted);

    /// 0 and 1 are no windows: nobody, and whoever is under the pointer.
    WindowId focusedWindow() const;
    /// Gives the keyboard to the window; to whoever is under the pointer when it is gone.
    void focus(WindowId window);
    /// Returns when the server has done all that was asked for.
    void sync();

private:
    DesktopLink();
    struct Watch;
    struct KeyGrab;
    struct PaintWatch;

    void readEvents();
    void updateCompositing();
    void selectStackingEvents();
    void lookForCovers();
    void tellKey(std::uint8_t code);
    void tellPainted(const QRect &area);
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
    std::uint8_t m_firstDamageEvent = 0;
    std::vector<std::weak_ptr<Watch>> m_watches;
    std::vector<std::weak_ptr<KeyGrab>> m_keyGrabs;
    std::vector<std::weak_ptr<PaintWatch>> m_paintWatches;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vantrell

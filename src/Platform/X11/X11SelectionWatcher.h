// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QSocketNotifier;

namespace vantrell {

/// Watches who owns one of a screen's manager selections ("_NET_SYSTEM_TRAY_S", "_NET_WM_CM_S"): whether
/// there is a tray, a compositor. Without an X server there is never an owner. Main thread.
class X11SelectionWatcher {
public:
    /// `prefix` is the selection's name without the screen's number. `changed` is called when the owner has
    /// changed.
    X11SelectionWatcher(const std::string &prefix, std::function<void()> changed);
    ~X11SelectionWatcher();
    X11SelectionWatcher(const X11SelectionWatcher &) = delete;
    X11SelectionWatcher &operator=(const X11SelectionWatcher &) = delete;

    bool isOwned() const { return m_isOwned; }

private:
    bool askOwner() const;
    void readEvents();

    const std::function<void()> m_changed;
    std::unique_ptr<X11Connection> m_x11;
    xcb_atom_t m_selection = XCB_NONE;
    bool m_isOwned = false;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QRegion>

#include <optional>

namespace vantrell {

/// A compositor shows a moment later what is drawn into windows. What is read from the windows themselves
/// waits for it here, so that one picture shows a change under a panel and beside it. Without a compositor
/// nothing waits. Regions are pixels of the desktop, times host times. On the connection's thread.
class X11CompositorLag {
public:
    /// Something has changed beneath at that time.
    void wait(double hostTime) { m_since = m_since.value_or(hostTime); }

    /// What was drawn beneath and is read from there, and what the compositor has to show of it.
    void add(const QRegion &beneath, const QRegion &beside);
    /// What was drawn on the root. Returns what waits no longer.
    QRegion release(const QRegion &onRoot);

    /// What must not be read yet.
    const QRegion &waiting() const { return m_waiting; }

    /// When `look` is due; none: never.
    std::optional<double> looksAt() const;
    /// Since when something has waited, once nothing waits any longer: what is wholly hidden a compositor may
    /// never show.
    std::optional<double> look(double now);

private:
    std::optional<double> m_since;
    QRegion m_waiting;
    QRegion m_awaited;
};

} // namespace vantrell

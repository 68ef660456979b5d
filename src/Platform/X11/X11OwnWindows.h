// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11WindowStack.h"
#include "Support/Geometry.h"

#include <QRegion>

#include <optional>
#include <vector>

namespace vantrell {

/// Where this application's own panels are seen, in pixels of the desktop: where they are, and under a
/// compositor, which draws late and may fade out what is gone, also where they were a moment ago. Times are
/// host times. On the connection's thread.
class X11OwnWindows {
public:
    void follow(const std::vector<X11WindowStack::Window> &windows, bool hasCompositor, double now);
    /// `follow` has been called: from then on it is to be called after each event, lest a place be missed.
    bool hasBegun() const { return m_hasBegun; }

    /// The part of `area` that they are seen on, each of them larger by `margin`. One wholly beside the area
    /// counts for nothing.
    QRegion seenOn(const PixelRect &area, int margin = 0) const;

    /// When `look` is due; none: never.
    std::optional<double> looksAt() const;
    /// True when one is no longer seen where it was.
    bool look(double now);

private:
    /// Where a panel was.
    struct Trace {
        PixelRect place;
        double since;
        double until;
    };

    bool m_hasBegun = false;
    std::vector<PixelRect> m_places;
    std::vector<Trace> m_traces;
};

} // namespace vantrell

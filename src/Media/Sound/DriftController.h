// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Finds how much a sound device's clock differs from the host's, from how far the sound has slipped, and
/// says by how much to stretch it: a proportional-integral controller. Thread-bound.
class DriftController {
public:
    /// Takes the slip of the block that comes now (seconds; positive when it belongs later than where it
    /// would be put) and the block's length. Returns the part by which to stretch the sound from here on
    /// (positive: make it longer).
    double update(double slip, double seconds);

    /// The stretch in force.
    double stretch() const { return m_stretch; }

    /// Another device, another clock.
    void reset() { *this = {}; }

private:
    double m_integral = 0;
    double m_stretch = 0;
};

} // namespace vantrell

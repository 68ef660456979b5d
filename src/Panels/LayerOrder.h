// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QPointer>

#include <vector>

namespace vantrell {

class LayerWindow;

/// Which of our surfaces lies above which: all share one layer, where a compositor stacks them in the order
/// in which they came. Main thread.
class LayerOrder {
public:
    LayerOrder();

    /// Above all others.
    void raise(LayerWindow &window);

private:
    /// What comes last lies lowest, not highest.
    const bool m_isReversed;
    /// From the lowest to the highest.
    std::vector<QPointer<LayerWindow>> m_windows;
};

} // namespace vantrell

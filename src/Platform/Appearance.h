// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"

#include <functional>
#include <utility>

namespace vantrell {

/// Port: how light the user wants programs to be. Main thread.
class ColourScheme {
public:
    virtual ~ColourScheme() = default;

    /// False also where the desktop does not say, and until it has answered.
    bool isLight() const { return m_isLight; }
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

protected:
    void set(bool isLight) {
        if (std::exchange(m_isLight, isLight) != isLight)
            m_observers.notify();
    }

private:
    bool m_isLight = false;
    Observers m_observers;
};

} // namespace vantrell

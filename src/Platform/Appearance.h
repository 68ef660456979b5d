// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"

#include <functional>
#include <utility>

namespace vantrell {

/// Port: how the user wants programs to look. What the desktop does not say is false, and everything until it
/// has answered. Main thread.
class Appearance {
public:
    virtual ~Appearance() = default;

    bool isLight() const { return m_wishes.isLight; }
    /// Nothing is to move or fade.
    bool reducesMotion() const { return m_wishes.reducesMotion; }
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

protected:
    struct Wishes {
        bool isLight = false;
        bool reducesMotion = false;
        bool operator==(const Wishes &) const = default;
    };
    const Wishes &wishes() const { return m_wishes; }
    void set(const Wishes &wishes) {
        if (std::exchange(m_wishes, wishes) != wishes)
            m_observers.notify();
    }

private:
    Wishes m_wishes;
    Observers m_observers;
};

} // namespace vantrell

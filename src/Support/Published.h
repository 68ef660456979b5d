// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"

#include <utility>

namespace vantrell {

/// A property of an observable object: assigning another value tells the object's observers. Thread-bound;
/// the observers outlive it.
template <typename T>
class Published {
public:
    explicit Published(Observers &observers, T value = {})
        : m_observers(observers), m_value(std::move(value)) {}
    Published(const Published &) = delete;

    Published &operator=(T value) {
        if (value == m_value)
            return *this;
        m_value = std::move(value);
        m_observers.notify();
        return *this;
    }
    Published &operator=(const Published &other) { return *this = other.m_value; }

    const T &get() const { return m_value; }
    operator const T &() const { return m_value; }
    const T *operator->() const { return &m_value; }

private:
    Observers &m_observers;
    T m_value;
};

} // namespace vantrell

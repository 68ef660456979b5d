// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vantrell {

/// Ends the observation when it is dropped.
using Observation = std::shared_ptr<void>;

/// Those who are told of an object's changes. Thread-bound. An observer may end its observation or start
/// another one while it is told, and may destroy the whole list.
class Observers {
public:
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        const auto observer = std::make_shared<const std::function<void()>>(std::move(changed));
        // Many come and go while nothing changes.
        if (m_observers.size() == m_observers.capacity())
            forgetEnded();
        m_observers.emplace_back(observer);
        return std::const_pointer_cast<std::function<void()>>(observer);
    }

    void notify() {
        forgetEnded();
        for (const auto &weak : std::vector(m_observers)) {
            if (const auto observer = weak.lock())
                (*observer)();
        }
    }

private:
    void forgetEnded() {
        std::erase_if(m_observers, [](const auto &observer) { return observer.expired(); });
    }

    std::vector<std::weak_ptr<const std::function<void()>>> m_observers;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/SessionMonitor.h"

namespace vantrell {

/// Stands in where nobody tells of sleep and sessions.
class NullSessionMonitor final : public SessionMonitor {
public:
    void start(std::function<void(Event)>) override {}
    void holdSleepBack(bool) override {}
    void keepAwake(bool) override {}
};

} // namespace vantrell

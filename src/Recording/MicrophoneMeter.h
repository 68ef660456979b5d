// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Clock.h"
#include "Support/EventLoop.h"

#include <functional>
#include <memory>
#include <mutex>
#include <span>

namespace vantrell {

/// The microphone's level for the interface: the peak of a block of samples, at most ten times a second.
class MicrophoneMeter {
public:
    /// `onLevel` is called with 0...1 on the thread that makes the meter, not after the meter is gone. The
    /// clock must outlive the meter.
    MicrophoneMeter(Clock &clock, std::function<void(double)> onLevel);
    ~MicrophoneMeter();
    MicrophoneMeter(const MicrophoneMeter &) = delete;
    MicrophoneMeter &operator=(const MicrophoneMeter &) = delete;

    /// Thread-safe. Samples are -1...1.
    void take(std::span<const float> samples);

private:
    Clock &m_clock;
    EventLoop m_loop;
    std::shared_ptr<std::function<void(double)>> m_onLevel;
    std::mutex m_emitMutex;
    double m_lastEmit = 0;
};

/// The largest absolute sample, at most 1; 0 for none.
double peakLevel(std::span<const float> samples);

} // namespace vantrell

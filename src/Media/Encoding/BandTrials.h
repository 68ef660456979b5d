// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "Support/SerialWorker.h"

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <tuple>

namespace vantrell {

/// Remembers for the process which pictures have passed the trial of bands. Each kind is tried once, aside,
/// when it is first asked for: a recording begins without bands and goes on with them. Thread-safe.
class BandTrials {
public:
    BandTrials() = default;
    /// Waits for a trial, which ends early.
    ~BandTrials() { m_isStopping = true; }

    /// Nothing until it is known.
    std::optional<bool> result(PixelSize picture);

private:
    /// What the layout of a picture in memory and its encoding depend on.
    using Kind = std::tuple<int, int, bool>;
    void run(PixelSize picture, const Kind &kind);

    std::atomic<bool> m_isStopping = false;
    std::mutex m_mutex;
    std::map<Kind, std::optional<bool>> m_results;
    SerialWorker m_worker;
};

} // namespace vantrell

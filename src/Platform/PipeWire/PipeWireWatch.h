// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireConnection.h"

#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

namespace vantrell {

/// Tells when the desktop's PipeWire server goes away, or answers nothing for about three seconds.
/// Thread-bound.
class PipeWireWatch {
public:
    /// Calls `lost` once, on the calling thread's event loop; never when no server is there to begin with.
    explicit PipeWireWatch(std::function<void()> lost);
    /// Nothing is called afterwards.
    ~PipeWireWatch();
    PipeWireWatch(const PipeWireWatch &) = delete;
    PipeWireWatch &operator=(const PipeWireWatch &) = delete;

    /// The server was there to begin with.
    bool isConnected() const { return m_connection != nullptr; }

private:
    void look();
    static void tell(std::shared_ptr<std::function<void()>> lost);

    const std::shared_ptr<std::function<void()>> m_lost;
    const PipeWireLoop m_loop{"pipewire watch"};
    /// Set on the loop's thread.
    std::atomic<bool> m_isAnswered = true;
    int m_silences = 0;
    std::unique_ptr<PipeWireConnection> m_connection;
    QTimer m_looking;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QTimer>

#include <functional>
#include <memory>

class QDBusServiceWatcher;

namespace vantrell {

/// Tells when asking the Secret Service again may go better: it appeared on the session bus, or one of its
/// keyrings was locked or unlocked. Only listens, so it never starts the service. Main thread.
class SecretServiceWatcher {
public:
    /// `onChange` comes from the event loop, once for a burst of changes.
    explicit SecretServiceWatcher(std::function<void()> onChange);
    ~SecretServiceWatcher();
    SecretServiceWatcher(const SecretServiceWatcher &) = delete;
    SecretServiceWatcher &operator=(const SecretServiceWatcher &) = delete;

private:
    QTimer m_settled;
    std::unique_ptr<QDBusServiceWatcher> m_service;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/BusObject.h"
#include "Support/Clock.h"
#include "Support/FileLock.h"
#include "Support/Task.h"

#include <QDBusConnection>

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Whether this process may be the application of this session: by a name on the session bus, or without a
/// bus by a lock file. Main thread.
class SingleInstance {
public:
    enum class Claim {
        /// This process is the one, until it ends.
        granted = 1,
        /// Another one runs and was asked to show itself.
        yielded,
    };

    /// The clock outlives it. `executable` is the file that runs.
    SingleInstance(QDBusConnection bus, std::string executable, Clock &clock);

    /// The same copy that runs already is asked to show itself; an older or other copy is asked to quit and
    /// waited for for three seconds, else it is asked to show itself. It is never killed.
    Task<Claim> claim(std::stop_token stop);

private:
    bool claimByFile();
    Task<bool> isSameCopy(std::stop_token stop) const;
    Task<> tell(QString method, QVariantList arguments, QString interface, std::stop_token stop) const;

    QDBusConnection m_bus;
    const std::string m_executable;
    Clock &m_clock;
    std::optional<FileLock> m_lock;
};

/// The file that this process was started from, the image's for one that runs from an image.
std::string runningExecutable();

} // namespace vantrell

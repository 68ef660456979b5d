// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDBusUnixFileDescriptor>
#include <QString>

namespace vantrell {

class BusClient;

/// One lock of logind's that keeps the computer from something while it is held. Main thread.
class LogindInhibitor {
public:
    /// `what` ("sleep:shutdown") and `mode` ("delay", "block") as logind calls them. The client must outlive
    /// this object's use, and be destroyed before the object.
    LogindInhibitor(BusClient &logind, QString what, QString mode, QString why);

    void hold(bool held);
    bool isWanted() const { return m_wanted; }
    /// logind started anew and knows of no lock.
    void holdAgain();

private:
    void ask();

    BusClient &m_logind;
    const QString m_what, m_mode, m_why;
    bool m_wanted = false;
    /// Answers to older questions do not count.
    int m_question = 0;
    QDBusUnixFileDescriptor m_lock;
};

} // namespace vantrell

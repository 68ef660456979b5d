// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/LogindInhibitor.h"

#include "Platform/ApplicationIdentity.h"
#include "Platform/Bus/BusClient.h"
#include "Support/Log.h"

#include <utility>

namespace vantrell {

LogindInhibitor::LogindInhibitor(BusClient &logind, QString what, QString mode, QString why)
    : m_logind(logind), m_what(std::move(what)), m_mode(std::move(mode)), m_why(std::move(why)) {}

void LogindInhibitor::hold(bool held) {
    if (std::exchange(m_wanted, held) == held)
        return;
    if (held)
        return ask();
    ++m_question;
    m_lock = {};
}

void LogindInhibitor::holdAgain() {
    m_lock = {};
    if (m_wanted)
        ask();
}

void LogindInhibitor::ask() {
    const int question = ++m_question;
    m_logind.call({"/org/freedesktop/login1",
                   "org.freedesktop.login1.Manager",
                   "Inhibit",
                   {m_what, QString::fromUtf8(applicationName), m_why, m_mode}},
                  [this, question](const BusClient::Answer &answer) {
                      // What came too late is closed with the message.
                      if (question != m_question)
                          return;
                      if (answer)
                          m_lock = answer->arguments().value(0).value<QDBusUnixFileDescriptor>();
                      else
                          qCInfo(logApp, "no lock against %s: %s", qPrintable(m_what),
                                 answer.error().message.c_str());
                  });
}

} // namespace vantrell

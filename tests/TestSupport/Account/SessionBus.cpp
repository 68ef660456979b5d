// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/SessionBus.h"

#include "TestSupport/RunTask.h"
#include "TestSupport/UnixSocket.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QUuid>

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace vantrell::testing {

namespace {

/// No service directories.
constexpr char configurationHead[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <listen>)";

} // namespace

SessionBus::SessionBus() : m_connection(QString()) {
    const std::string socket = m_folder / "bus";
    const std::string configuration = m_folder / "bus.conf";
    m_address = "unix:path=" + socket;
    std::ofstream(configuration) << configurationHead << m_address << "</listen>\n</busconfig>\n";
    m_daemon = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + configuration});
    if (!eventually([&socket] { return connectTo(socket).isValid(); }))
        throw std::runtime_error("dbus-daemon does not listen");
    m_connection =
        QDBusConnection::connectToBus(QString::fromStdString(m_address), QUuid::createUuid().toString());
    if (!m_connection.isConnected())
        throw std::runtime_error("the session bus cannot be reached");
}

SessionBus::~SessionBus() {
    QDBusConnection::disconnectFromBus(m_connection.name());
}

SessionBus &SessionBus::ofThisProcess() {
    static SessionBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus.address()));
    qunsetenv("DISPLAY");
    qunsetenv("WAYLAND_DISPLAY");
    return bus;
}

bool SessionBus::isOwned(const std::string &name) const {
    return m_connection.interface()->isServiceRegistered(QString::fromStdString(name)).value();
}

QDBusMessage SessionBus::call(const QDBusMessage &message) const {
    using namespace std::chrono_literals;
    // QDBus::BlockWithGui waits for ever when the answer comes very soon.
    const QDBusPendingCall pending =
        m_connection.asyncCall(message, int(std::chrono::milliseconds(30s).count()));
    eventually([&pending] { return pending.isFinished(); }, 60s);
    return pending.reply();
}

void SessionBus::kill() {
    m_daemon->signal(SIGKILL);
    m_daemon.reset();
}

} // namespace vantrell::testing

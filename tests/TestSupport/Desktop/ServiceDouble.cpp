// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Desktop/ServiceDouble.h"

#include "TestSupport/RunTask.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <iostream>
#include <stdexcept>
#include <utility>

#include <unistd.h>

namespace vantrell::testing {

namespace {

constexpr const char *mockInterface = "org.freedesktop.DBus.Mock";
constexpr const char *logindPath = "/org/freedesktop/login1";
constexpr const char *notificationsName = "org.freedesktop.Notifications";
constexpr const char *notificationsPath = "/org/freedesktop/Notifications";

} // namespace

ServiceDouble::ServiceDouble(const SessionBus &bus, std::string name, std::string path, std::string interface,
                             const std::vector<std::string> &command)
    : m_bus(bus), m_name(std::move(name)), m_path(std::move(path)), m_interface(std::move(interface)) {
    // Another Python that comes first in PATH would not have the system's modules.
    std::vector<std::string> words{"/usr/bin/python3", "-m", "dbusmock", "--session"};
    words.insert(words.end(), command.begin(), command.end());
    m_process = std::make_unique<ChildProcess>(
        words, ChildProcess::Environment{{"DBUS_SESSION_BUS_ADDRESS", bus.address()}});
    if (!eventually([&] { return bus.isOwned(m_name); }))
        throw std::runtime_error(m_name + " does not come up");
}

ServiceDouble::ServiceDouble(const SessionBus &bus, const std::string &name, const std::string &path,
                             const std::string &interface)
    : ServiceDouble(bus, name, path, interface, {name, path, interface}) {}

std::unique_ptr<ServiceDouble> ServiceDouble::logind(const SessionBus &bus) {
    std::unique_ptr<ServiceDouble> made(new ServiceDouble(bus, "org.freedesktop.login1", logindPath,
                                                          "org.freedesktop.login1.Manager",
                                                          {"--template", "logind"}));
    made->call(logindPath, mockInterface, "AddSeat", {"seat0"});
    made->call(logindPath, mockInterface, "AddUser", {int(::getuid()), "user", true});
    const QString session =
        made->call(logindPath, mockInterface, "AddSession", {"c1", "seat0", int(::getuid()), "user", true})
            .value(0)
            .toString();
    made->addMethod("GetSessionByPID", "u", "o", "ret = '" + session.toStdString() + "'");
    return made;
}

std::unique_ptr<ServiceDouble> ServiceDouble::notifications(const SessionBus &bus,
                                                            const std::string &capabilities) {
    return std::unique_ptr<ServiceDouble>(
        new ServiceDouble(bus, notificationsName, notificationsPath, notificationsName,
                          {"--template", "notification_daemon", "--parameters",
                           "{\"capabilities\": \"" + capabilities + "\"}"}));
}

void ServiceDouble::addMethod(const std::string &member, const std::string &in, const std::string &out,
                              const std::string &code) {
    addMethod(m_interface, member, in, out, code);
}

void ServiceDouble::addMethod(const std::string &interface, const std::string &member, const std::string &in,
                              const std::string &out, const std::string &code) {
    call(m_path, mockInterface, "AddMethod",
         {QString::fromStdString(interface), QString::fromStdString(member), QString::fromStdString(in),
          QString::fromStdString(out), QString::fromStdString(code)});
}

void ServiceDouble::emitSignal(const std::string &path, const std::string &interface,
                               const std::string &member, const std::string &signature,
                               const QVariantList &arguments) {
    call(path, mockInterface, "EmitSignal",
         {QString::fromStdString(interface), QString::fromStdString(member),
          QString::fromStdString(signature), QVariant(arguments)});
}

void ServiceDouble::setProperties(const std::string &path, const std::string &interface,
                                  const QVariantMap &values) {
    call(path, mockInterface, "UpdateProperties", {QString::fromStdString(interface), values});
}

std::vector<QVariantList> ServiceDouble::calls(const std::string &member) {
    const QVariantList answer =
        call(m_path, mockInterface, "GetMethodCalls", {QString::fromStdString(member)});
    std::vector<QVariantList> calls;
    const auto list = answer.value(0).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        qulonglong time = 0;
        QVariantList arguments;
        list.beginStructure();
        list >> time >> arguments;
        list.endStructure();
        calls.push_back(arguments);
    }
    list.endArray();
    return calls;
}

QVariantList ServiceDouble::call(const std::string &path, const std::string &interface,
                                 const std::string &member, const QVariantList &arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(QString::fromStdString(m_name), QString::fromStdString(path),
                                       QString::fromStdString(interface), QString::fromStdString(member));
    message.setArguments(arguments);
    const QDBusMessage answer = m_bus.call(message);
    if (answer.type() == QDBusMessage::ErrorMessage) {
        std::cerr << m_name << ' ' << member << ": " << answer.errorMessage().toStdString() << std::endl;
        std::exit(1);
    }
    return answer.arguments();
}

} // namespace vantrell::testing

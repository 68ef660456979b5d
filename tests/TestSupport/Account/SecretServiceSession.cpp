// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/SecretServiceSession.h"

#include "TestSupport/RunTask.h"
#include "TestSupport/UnixSocket.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>

#include <arpa/inet.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace vantrell::testing {

/// A secret as it crosses the bus in a session without encryption.
struct PlainSecret {
    QDBusObjectPath session;
    QByteArray value;
};

static QDBusArgument &operator<<(QDBusArgument &argument, const PlainSecret &secret) {
    argument.beginStructure();
    argument << secret.session << QByteArray() << secret.value << QStringLiteral("text/plain");
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, PlainSecret &) {
    return argument;
}

namespace {

constexpr char keyringPassword[] = "test";
constexpr char loginCollection[] = "/org/freedesktop/secrets/collection/login";
constexpr char secretsName[] = "org.freedesktop.secrets";

void require(bool condition, const char *what) {
    if (!condition)
        throw std::runtime_error(what);
}

/// The exit code of a shell command and what it wrote to standard output.
std::pair<int, std::string> runCommand(const std::string &command) {
    std::FILE *pipe = ::popen(command.c_str(), "r");
    require(pipe != nullptr, "cannot run a command");
    std::string output;
    for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe))
        output.push_back(char(byte));
    return {::pclose(pipe), output};
}

std::string attributes(const std::string &service, const std::string &account) {
    return " service '" + service + "' account '" + account + "'";
}

} // namespace

SecretServiceSession::SecretServiceSession(SessionBus &bus) : m_bus(bus) {
    std::filesystem::permissions(m_home.path(), std::filesystem::perms::owner_all);
}

SecretServiceSession::~SecretServiceSession() {
    kill();
}

void SecretServiceSession::startUnlocked() {
    start(" --unlock");
}

void SecretServiceSession::startLocked() {
    start({});
}

void SecretServiceSession::start(const std::string &arguments) {
    // The password is read to the end of the input; a line break would be part of it.
    const std::string home = m_home.path();
    m_daemon = std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c",
                                 "printf %s " + std::string(keyringPassword) + " > \"$HOME/password\"; " +
                                     "exec gnome-keyring-daemon --foreground --components=secrets " +
                                     "--control-directory=\"$HOME/control\"" + arguments +
                                     " < \"$HOME/password\""},
        ChildProcess::Environment{{"DBUS_SESSION_BUS_ADDRESS", m_bus.address()},
                                  {"HOME", home},
                                  {"XDG_DATA_HOME", home},
                                  {"XDG_CONFIG_HOME", home},
                                  {"XDG_CACHE_HOME", home},
                                  {"XDG_RUNTIME_DIR", home}});
    require(eventually([this] { return m_bus.isOwned(secretsName); }),
            "gnome-keyring-daemon does not take its name");
}

void SecretServiceSession::lock() {
    const QList<QDBusObjectPath> collections{QDBusObjectPath(QLatin1String(loginCollection))};
    call("org.freedesktop.Secret.Service", "Lock", {QVariant::fromValue(collections)});
}

void SecretServiceSession::unlock() {
    const QDBusMessage opened = call("org.freedesktop.Secret.Service", "OpenSession",
                                     {QStringLiteral("plain"), QVariant::fromValue(QDBusVariant(QString()))});
    qDBusRegisterMetaType<PlainSecret>();
    const PlainSecret password{opened.arguments().at(1).value<QDBusObjectPath>(),
                               QByteArray(keyringPassword)};
    // What the daemon's own prompt does with the password.
    call("org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface", "UnlockWithMasterPassword",
         {QVariant::fromValue(QDBusObjectPath(QLatin1String(loginCollection))),
          QVariant::fromValue(password)});
}

void SecretServiceSession::unlockSilently() {
    const UniqueFd socket = connectTo(m_home / "control/control");
    require(socket.isValid(), "the keyring's control socket is not there");
    const auto number = [](std::size_t value) {
        const std::uint32_t bigEndian = htonl(std::uint32_t(value));
        return std::string(reinterpret_cast<const char *>(&bigEndian), sizeof bigEndian);
    };
    constexpr std::size_t unlockOperation = 1;
    const std::string password = keyringPassword;
    // One byte for the sender's credentials, then length, operation, password.
    const std::string request = std::string(1, 0) + number(3 * 4 + password.size()) +
                                number(unlockOperation) + number(password.size()) + password;
    std::array<char, 8> answer{};
    require(::send(socket.get(), request.data(), request.size(), 0) == ssize_t(request.size()) &&
                ::recv(socket.get(), answer.data(), answer.size(), MSG_WAITALL) == ssize_t(answer.size()) &&
                answer.back() == 0,
            "the keyring does not unlock");
}

void SecretServiceSession::kill() {
    if (!m_daemon)
        return;
    m_daemon->signal(SIGKILL);
    m_daemon.reset();
    require(eventually([this] { return !m_bus.isOwned(secretsName); }),
            "the name of the keyring does not go away");
}

void SecretServiceSession::suspend() {
    m_daemon->signal(SIGSTOP);
}

void SecretServiceSession::resume() {
    m_daemon->signal(SIGCONT);
}

QDBusMessage SecretServiceSession::call(const char *interface, const char *method,
                                        const QVariantList &arguments) const {
    QDBusMessage message =
        QDBusMessage::createMethodCall(QLatin1String(secretsName), QStringLiteral("/org/freedesktop/secrets"),
                                       QLatin1String(interface), QLatin1String(method));
    message.setArguments(arguments);
    const QDBusMessage answer = m_bus.connection().call(message);
    require(answer.type() == QDBusMessage::ReplyMessage, method);
    return answer;
}

std::string SecretServiceSession::onBus() const {
    return "DBUS_SESSION_BUS_ADDRESS='" + m_bus.address() + "' ";
}

std::optional<std::string> SecretServiceSession::lookup(const std::string &service,
                                                        const std::string &account) {
    const auto [code, output] = runCommand(onBus() + "secret-tool lookup" + attributes(service, account));
    return code == 0 ? std::optional(output) : std::nullopt;
}

void SecretServiceSession::store(const std::string &service, const std::string &account,
                                 const std::string &secret) {
    const auto [code, output] = runCommand("printf %s '" + secret + "' | " + onBus() +
                                           "secret-tool store --label=other" + attributes(service, account));
    require(code == 0, "secret-tool does not store");
}

} // namespace vantrell::testing

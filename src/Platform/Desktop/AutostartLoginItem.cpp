// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/AutostartLoginItem.h"

#include "Platform/ApplicationIdentity.h"
#include "Platform/DesktopEntryFile.h"
#include "Support/AtomicFile.h"
#include "Support/Log.h"
#include "Support/Sandbox.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QStandardPaths>

#include <system_error>
#include <utility>

namespace vantrell {

namespace {

bool startsSomething(const std::filesystem::path &file) {
    const auto keys = readDesktopEntryFile(file);
    if (!keys)
        return false;
    const auto says = [&](const char *key, const char *value) {
        const auto found = keys->find(key);
        return found != keys->end() && found->second == value;
    };
    // The second is what GNOME's tools write when the user takes an entry's tick away.
    return !says("Hidden", "true") && !says("X-GNOME-Autostart-enabled", "false");
}

std::filesystem::path entryIn(const std::filesystem::path &configuration) {
    return configuration / "autostart" / (std::string(applicationId) + ".desktop");
}

} // namespace

AutostartLoginItem::Options AutostartLoginItem::Options::fromEnvironment() {
    Options options;
    const QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (const QString &folder : folders.mid(1))
        options.systemConfigurations.emplace_back(folder.toStdString());
    options.configuration =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString();
    options.program = QCoreApplication::applicationFilePath().toStdString();
    if (isSandboxed())
        options.portal = QDBusConnection::sessionBus();
    return options;
}

AutostartLoginItem::AutostartLoginItem(Options options) : m_options(std::move(options)) {
    if (m_options.portal)
        m_portal =
            std::make_unique<BusClient>(*m_options.portal, QStringLiteral("org.freedesktop.portal.Desktop"));
}

std::filesystem::path AutostartLoginItem::entry() const {
    return entryIn(m_options.configuration);
}

bool AutostartLoginItem::isInSystem() const {
    for (const std::filesystem::path &folder : m_options.systemConfigurations) {
        if (startsSomething(entryIn(folder)))
            return true;
    }
    return false;
}

bool AutostartLoginItem::isEnabled() const {
    std::error_code error;
    // The user's entry hides the system's, whatever it says.
    return std::filesystem::exists(entry(), error) ? startsSomething(entry()) : isInSystem();
}

std::expected<void, PlatformError> AutostartLoginItem::setEnabled(bool enabled) {
    if (m_portal)
        askPortal(enabled);
    if (enabled)
        return write(ownDesktopEntry(m_options.program, {}, {{"X-GNOME-Autostart-enabled", "true"}}));
    if (isInSystem())
        return write(ownDesktopEntry(m_options.program, {}, {{"Hidden", "true"}}));
    return remove();
}

std::expected<void, PlatformError> AutostartLoginItem::write(const std::string &text) const {
    std::error_code failed;
    std::filesystem::create_directories(entry().parent_path(), failed);
    if (failed)
        return std::unexpected(PlatformError::fromErrno("make the folder autostart", failed.value()));
    return writeFileAtomically(entry(), text);
}

std::expected<void, PlatformError> AutostartLoginItem::remove() const {
    std::error_code failed;
    std::filesystem::remove(entry(), failed);
    if (failed)
        return std::unexpected(PlatformError::fromErrno("remove the entry in autostart", failed.value()));
    return {};
}

void AutostartLoginItem::askPortal(bool enabled) {
    // The answer comes as a signal from an object whose name follows from ours and the token.
    const QString token = QStringLiteral("autostart");
    if (!std::exchange(m_isListening, true)) {
        const QString sender = m_portal->bus().baseService().mid(1).replace('.', '_');
        m_portal->onSignal("/org/freedesktop/portal/desktop/request/" + sender + '/' + token,
                           "org.freedesktop.portal.Request", "Response", [this](const QDBusMessage &message) {
                               const auto results = qdbus_cast<QVariantMap>(message.arguments().value(1));
                               const bool isGranted = message.arguments().value(0).toUInt() == 0 &&
                                                      results.value("autostart").toBool();
                               if (isGranted || !isEnabled())
                                   return;
                               qCInfo(logApp, "the desktop does not start the application at login");
                               static_cast<void>(remove());
                           });
    }
    m_portal->call({"/org/freedesktop/portal/desktop",
                    "org.freedesktop.portal.Background",
                    "RequestBackground",
                    {QString(), QVariantMap{{"handle_token", token},
                                            {"reason", QStringLiteral("Start with your session")},
                                            {"autostart", enabled},
                                            {"commandline", QStringList{"vantrell-capture"}},
                                            {"dbus-activatable", false}}},
                    true},
                   [this](const BusClient::Answer &answer) {
                       if (answer)
                           return;
                       qCInfo(logApp, "launch at login: %s", answer.error().message.c_str());
                       static_cast<void>(remove());
                   });
}

} // namespace vantrell

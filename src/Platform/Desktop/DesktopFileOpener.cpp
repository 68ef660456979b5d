// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/DesktopFileOpener.h"

#include "Platform/DesktopOpener.h"
#include "Support/Log.h"
#include "Support/Sandbox.h"
#include "Support/UniqueFd.h"

#include <QDBusUnixFileDescriptor>
#include <QUrl>

#include <fcntl.h>
#include <system_error>
#include <utility>

namespace vantrell {

namespace {

const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString openInterface = QStringLiteral("org.freedesktop.portal.OpenURI");

void logFailure(const BusClient::Answer &answer) {
    // Addresses are nobody's business.
    if (!answer)
        qCInfo(logApp, "nothing opened: error %d", answer.error().code);
}

} // namespace

DesktopFileOpener::DesktopFileOpener(QDBusConnection session)
    : m_isSandboxed(isSandboxed()), m_fileManager(session, QStringLiteral("org.freedesktop.FileManager1")),
      m_portal(std::move(session), QStringLiteral("org.freedesktop.portal.Desktop")) {}

bool DesktopFileOpener::openPage(const std::string &url) {
    if (!m_isSandboxed && openWithDesktop(url))
        return true;
    if (!hasPortal())
        return false;
    m_portal.call(
        {portalPath, openInterface, "OpenURI", {QString(), QString::fromStdString(url), QVariantMap()}, true},
        logFailure);
    return true;
}

bool DesktopFileOpener::openFile(const std::filesystem::path &file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return false;
    return (!m_isSandboxed && openWithDesktop(file.string())) ||
           openFileByPortal(file, QStringLiteral("OpenFile"));
}

bool DesktopFileOpener::showInFileManager(const std::filesystem::path &file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return false;
    if (m_isSandboxed)
        return openFileByPortal(file, QStringLiteral("OpenDirectory"));
    if (!m_fileManager.bus().isConnected())
        return openWithDesktop(file.parent_path().string());
    const QByteArray address = "file://" + QByteArray::fromStdString(file.string()).toPercentEncoding("/");
    m_fileManager.call({"/org/freedesktop/FileManager1",
                        "org.freedesktop.FileManager1",
                        "ShowItems",
                        {QStringList{QString::fromLatin1(address)}, QString()},
                        true},
                       [folder = file.parent_path()](const BusClient::Answer &answer) {
                           // No file manager that knows how to: the folder at least.
                           if (!answer)
                               openWithDesktop(folder.string());
                       });
    return true;
}

bool DesktopFileOpener::openFileByPortal(const std::filesystem::path &file, const QString &member) {
    if (!hasPortal())
        return false;
    const UniqueFd descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor)
        return false;
    m_portal.call({portalPath,
                   openInterface,
                   member,
                   {QString(), QVariant::fromValue(QDBusUnixFileDescriptor(descriptor.get())), QVariantMap()},
                   true},
                  logFailure);
    return true;
}

} // namespace vantrell

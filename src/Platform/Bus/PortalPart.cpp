// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Bus/PortalPart.h"

#include "Platform/DesktopEntryFile.h"

#include <QStandardPaths>
#include <QStringList>

#include <filesystem>
#include <system_error>

namespace vantrell {

namespace {

/// Where the portals look for the descriptions.
QStringList descriptionFolders() {
    const QString only = qEnvironmentVariable("XDG_DESKTOP_PORTAL_DIR");
    if (!only.isEmpty())
        return {only};
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (QString &folder : folders)
        folder += QStringLiteral("/xdg-desktop-portal/portals");
    return folders;
}

} // namespace

bool servesPortal(const QString &part, const QString &portal) {
    const QString interface = QStringLiteral("org.freedesktop.impl.portal.") + portal;
    for (const QString &folder : descriptionFolders()) {
        std::error_code error;
        for (const auto &file : std::filesystem::directory_iterator(folder.toStdString(), error)) {
            const auto keys = readDesktopEntryFile(file.path(), "portal");
            if (!keys || !keys->contains("DBusName") || !keys->contains("Interfaces") ||
                keys->at("DBusName") != part.toStdString())
                continue;
            const QStringList served = QString::fromStdString(keys->at("Interfaces")).split(u';');
            if (served.contains(interface))
                return true;
        }
    }
    return false;
}

} // namespace vantrell

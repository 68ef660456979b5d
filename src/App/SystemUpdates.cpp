// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/SystemUpdates.h"

#include "Support/AtomicFile.h"

#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <map>
#include <utility>
#include <vector>

namespace vantrell {

namespace {

struct SoftwareCentre {
    QString program;
    QStringList arguments;
};

/// The page of updates in the software centres of GNOME, KDE, elementary, Mint and Ubuntu.
const std::vector<SoftwareCentre> &softwareCentres() {
    static const std::vector<SoftwareCentre> centres{{"gnome-software", {"--mode=updates"}},
                                                     {"plasma-discover", {"--mode", "update"}},
                                                     {"io.elementary.appcenter", {"--show-updates"}},
                                                     {"mintupdate", {}},
                                                     {"update-manager", {}}};
    return centres;
}

std::string valueIn(const std::string &osRelease, const std::string &key) {
    const std::string text = "\n" + osRelease;
    const std::size_t at = text.find("\n" + key + "=");
    if (at == std::string::npos)
        return {};
    const std::size_t start = at + key.size() + 2;
    return QString::fromStdString(text.substr(start, text.find('\n', start) - start))
        .remove('"')
        .remove('\'')
        .trimmed()
        .toStdString();
}

} // namespace

std::string systemUpdatesSentence(const std::string &osRelease) {
    std::error_code error;
    if (std::filesystem::exists("/.flatpak-info", error))
        return "Flatpak brings the updates of Vantrell Capture";
    if (!qEnvironmentVariableIsEmpty("SNAP"))
        return "Snap brings the updates of Vantrell Capture";
    static const std::map<std::string, std::string> managers{
        {"debian", "apt"},    {"ubuntu", "apt"},      {"fedora", "dnf"},  {"rhel", "dnf"},
        {"suse", "zypper"},   {"opensuse", "zypper"}, {"arch", "pacman"}, {"alpine", "apk"},
        {"gentoo", "emerge"}, {"nixos", "nix"},
    };
    const QString ids =
        QString::fromStdString(valueIn(osRelease, "ID") + " " + valueIn(osRelease, "ID_LIKE"));
    for (const QString &id : ids.split(' ', Qt::SkipEmptyParts)) {
        if (const auto manager = managers.find(id.toStdString()); manager != managers.end())
            return "Your system's package manager (" + manager->second +
                   ") brings the updates of Vantrell Capture";
    }
    return "Your system brings the updates of Vantrell Capture";
}

std::string showSystemUpdates() {
    for (const auto &[program, arguments] : softwareCentres()) {
        const QString found = QStandardPaths::findExecutable(program);
        if (!found.isEmpty() && QProcess::startDetached(found, arguments))
            return {};
    }
    return systemUpdatesSentence(readFile("/etc/os-release").value_or(""));
}

} // namespace vantrell

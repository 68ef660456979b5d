// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Platform/FileOpener.h"

#include <QDBusConnection>

namespace vantrell {

/// Pages and files by the desktop's own opener, by its portal where the program is in a sandbox or there is
/// no opener; folders by whoever is the desktop's file manager on the session bus. Main thread.
class DesktopFileOpener final : public FileOpener {
public:
    explicit DesktopFileOpener(QDBusConnection session);

    bool openPage(const std::string &url) override;
    bool openFile(const std::filesystem::path &file) override;
    bool showInFileManager(const std::filesystem::path &file) override;

private:
    bool hasPortal() const { return m_portal.bus().isConnected(); }
    bool openFileByPortal(const std::filesystem::path &file, const QString &member);

    const bool m_isSandboxed;
    BusClient m_fileManager;
    BusClient m_portal;
};

} // namespace vantrell

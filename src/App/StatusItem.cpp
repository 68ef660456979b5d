// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/StatusItem.h"

#include "App/MenuBuilder.h"
#include "App/StatusBarLogo.h"
#include "Panels/PanelShell.h"
#include "Panels/Sentence.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

#include <utility>

namespace vantrell {

namespace {

QIcon iconFor(UserInterface::StatusIcon icon) {
    switch (icon) {
    case UserInterface::StatusIcon::logo:
        break;
    case UserInterface::StatusIcon::recording:
        return recordingStatusIcon();
    case UserInterface::StatusIcon::uploading:
        return uploadingStatusIcon();
    }
    return logoStatusIcon();
}

} // namespace

StatusItem::StatusItem() : m_menu(std::make_unique<QMenu>()) {
    m_host.onChange = [this] { hostChanged(); };
}

StatusItem::~StatusItem() = default;

void StatusItem::set(UserInterface::Status status) {
    if (m_icon && status == m_status)
        return;
    m_status = std::move(status);
    show();
}

void StatusItem::hostChanged() {
    show();
    if (onHostChange)
        onHostChange();
}

void StatusItem::show() {
    const auto host = m_host.kind();
    // Made when there is somebody to show it: an icon decides for the process's life who that is.
    if (!host || m_status.description.empty())
        return;
    if (!m_icon || m_shownBy != host) {
        m_icon = std::make_unique<QSystemTrayIcon>();
        m_shownBy = host;
        QObject::connect(m_icon.get(), &QSystemTrayIcon::activated, m_icon.get(),
                         [this](QSystemTrayIcon::ActivationReason reason) { activated(reason); });
        m_icon->setContextMenu(m_menu.get());
    }
    refresh();
    m_icon->show();
}

void StatusItem::refresh() {
    m_icon->setIcon(iconFor(m_status.icon));
    m_icon->setToolTip(inUsersLanguage(QString::fromStdString(m_status.description)));
    fillMenu(*m_menu, m_status.menu, [this](const MenuEntry &entry) {
        if (onMenu)
            onMenu(entry);
    });
}

void StatusItem::activated(int reason) {
    if (reason != QSystemTrayIcon::Trigger)
        return;
    if (m_status.icon == UserInterface::StatusIcon::recording) {
        if (onClick)
            onClick();
        return;
    }
    // Where the pointer is known a menu comes up there; else the bar has it.
    if (PanelShell::instance().knowsPointer())
        m_menu->popup(QCursor::pos());
    else if (onOpen)
        onOpen();
}

} // namespace vantrell

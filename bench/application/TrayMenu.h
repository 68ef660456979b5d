// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QString>

#include <optional>

namespace vantrell::bench {

/// The menu of an icon in the tray, as the tray's host reads and works it. Main thread; every call blocks.
class TrayMenu {
public:
    /// `owner` is the bus name of the icon's process.
    TrayMenu(QDBusConnection bus, QString owner);

    struct Item {
        int id = 0;
        bool isChecked = false;
    };
    /// Reads the whole menu; absent when it has no item of that title.
    std::optional<Item> find(const QString &title);
    void click(const Item &item);

private:
    /// Reads one item with all below it.
    std::optional<Item> findBelow(const QDBusArgument &layout, const QString &title) const;

    QDBusConnection m_bus;
    const QString m_owner;
};

} // namespace vantrell::bench

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>

#include <optional>

namespace vantrell::bench {

/// The side of a tray that icons announce themselves to; it notes when one did. Main thread.
class TrayWatcher : public QDBusVirtualObject {
public:
    explicit TrayWatcher(QDBusConnection bus);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

    /// Host time of the newest icon since `forget`.
    std::optional<double> iconAt() const { return m_iconAt; }
    void forget() { m_iconAt.reset(); }
    /// The bus name of the process whose icon that is.
    const QString &owner() const { return m_owner; }

private:
    QDBusConnection m_bus;
    QString m_owner;
    std::optional<double> m_iconAt;
};

} // namespace vantrell::bench

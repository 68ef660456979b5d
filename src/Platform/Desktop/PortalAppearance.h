// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Appearance.h"
#include "Platform/Bus/BusClient.h"

#include <QDBusConnection>
#include <QString>

namespace vantrell {

/// As the desktop's portal for settings tells it. Main thread.
class PortalAppearance final : public Appearance {
public:
    /// `startsPortal`: it is worth it to have the bus start a portal that does not run yet.
    PortalAppearance(QDBusConnection session, bool startsPortal);

private:
    void askAll(bool startsPortal);
    void take(const QString &group, const QString &key, const QVariant &value);

    bool m_hasLessMotion = false;
    bool m_hasNoAnimations = false;
    BusClient m_portal;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Platform/ColourScheme.h"

#include <QDBusConnection>

namespace vantrell {

/// As the desktop's portal for settings tells it. Main thread.
class PortalColourScheme final : public ColourScheme {
public:
    explicit PortalColourScheme(QDBusConnection session);

private:
    void ask();
    void take(const QVariant &value);

    BusClient m_portal;
};

} // namespace vantrell

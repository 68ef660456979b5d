// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QString>

namespace vantrell {

/// The portals' own bus name.
inline const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");

/// Begins the bus names of what a desktop does for the portals.
inline const QString portalPartPrefix = QStringLiteral("org.freedesktop.impl.portal.desktop.");

/// The part of that bus name says in its description that it serves the portal ("ScreenCast"). False where no
/// description is found. Reads from disk.
bool servesPortal(const QString &part, const QString &portal);

} // namespace vantrell

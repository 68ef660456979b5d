// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Task.h"

#include <QDBusConnection>

#include <stop_token>

namespace vantrell {

/// Whether the user may have said no to stills by this application, which the desktop's portals keep. Their
/// refusal is the same where the desktop only fails to make one.
Task<bool> mayBeForbiddenStills(QDBusConnection bus, std::stop_token stop);

} // namespace vantrell

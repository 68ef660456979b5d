// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QCoreApplication>
#include <QString>

namespace vantrell {

/// A text of the selection overlay in the user's language.
inline QString overlayText(const char *english) {
    return QCoreApplication::translate("SelectionOverlay", english);
}

} // namespace vantrell

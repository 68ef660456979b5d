// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QCoreApplication>
#include <QString>

namespace vantrell {

/// One of the shelf's own texts, in the user's language.
inline QString shelfText(const char *english) {
    return QCoreApplication::translate("ShelfPanel", english);
}

} // namespace vantrell

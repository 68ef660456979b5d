// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingOptions.h"

#include <QUuid>

namespace vantrell {

std::string newRecordingId() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace vantrell

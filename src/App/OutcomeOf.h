// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/SelectionOutcome.h"
#include "Platform/CaptureBackend.h"

#include <QVariantMap>

#include <expected>
#include <string>

namespace vantrell {

/// What a caller wants recorded, as if it had been picked: "display" with an id (empty: the primary one),
/// "window" with a number, or "area" with x, y, width and height in the desktop's pixels. The error is a
/// sentence.
std::expected<SelectionOutcome, std::string> outcomeOf(CaptureBackend &capture, const QVariantMap &wanted);

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Sends what libav* says of errors to our log instead of standard error. Called once, early in main; the
/// messages come on any thread.
void installFFmpegLog();

} // namespace vantrell

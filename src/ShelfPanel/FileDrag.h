// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QImage>
#include <QSize>

#include <filesystem>

namespace vantrell {

/// Lets the user drag a file out into another application, with a picture of that size (points) under the
/// pointer when there is one. Runs an event loop until it is dropped; to be called while the button is down.
/// Main thread.
void dragFile(const std::filesystem::path &file, const QImage &picture, const QSize &size);

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Gallery.h"
#include "Platform/StillCapture.h"
#include "Support/Clock.h"
#include "Support/Settings.h"

namespace vantrell::gallery {

/// The services outlive the scenes.
std::vector<Scene> barScenes(StillCapture &stills, Settings &settings, Clock &clock);
std::vector<Scene> hudScenes(StillCapture &stills, Settings &settings, Clock &clock);
std::vector<Scene> shelfScenes(StillCapture &stills, Clock &clock);
std::vector<Scene> overlayScenes();
/// Countdown, bubble, alerts, and the symbols.
std::vector<Scene> otherScenes(Settings &settings, Clock &clock);

} // namespace vantrell::gallery

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureMetadata.h"
#include "Recording/RawEvent.h"
#include "Recording/RecordedSegment.h"
#include "Support/Geometry.h"

#include <vector>

namespace vantrell {

/// Maps observed events into the recording's time line and coordinates. `screenFrame` is the display's frame
/// on the desktop and `captureTopLeftRect` the capture area at the start, measured from the display's corner,
/// both in points with top-left origin. `segments` are the recording's own, in order.
///
/// Clicks and scrolls count up to 12 points outside the area; moves only inside, and leaving the area gives
/// one "exit" until the pointer is back.
std::vector<InputEvent> sidecarEvents(const std::vector<RawEvent> &raw, const Rect &screenFrame,
                                      const Rect &captureTopLeftRect,
                                      const std::vector<RecordedSegment> &segments);

} // namespace vantrell

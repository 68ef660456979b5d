// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/BlockConverter.h"
#include "Media/Picture/Nv12Frame.h"
#include "Platform/FrameSource.h"
#include "Support/BlockMap.h"

namespace vantrell {

/// Brings changed parts of the screen into an NV12 picture and finds out which macroblocks really differ:
/// toolkits and compositing managers report whole windows where a caret blinked. Reentrant.
class PatchConverter {
public:
    explicit PatchConverter(BlockConverter convert = fastestBlockConverter()) : m_convert(convert) {}

    /// Writes the patch's macroblocks into `out` and marks those in `changed` that differ from `previous`;
    /// both are of one size and may be the same frame.
    void convert(const FramePatch &patch, const Nv12Frame &previous, Nv12Frame &out, BlockMap &changed) const;

private:
    BlockConverter m_convert;
};

} // namespace vantrell

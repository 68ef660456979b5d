// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/H264Units.h"

#include <optional>

namespace vantrell {

/// What the parameter sets say about slices. Only of streams such as this program makes of screens:
/// progressive, CABAC, one reference, pictures in the order of their decoding, no weights, no slice groups.
struct StreamLayout {
    /// log2_max_frame_num
    int frameNumberBits = 0;
    /// 26 + pic_init_qp_minus26
    int initialQuantizer = 0;
    /// deblocking_filter_control_present_flag
    bool hasDeblockingControl = false;
    /// PicWidthInMbs and PicHeightInMapUnits
    int columns = 0;
    int rows = 0;

    friend bool operator==(const StreamLayout &, const StreamLayout &) = default;
};

/// Reads a sequence's and a picture's parameter set; nothing when the stream is of another kind.
std::optional<StreamLayout> layoutOf(H264Unit sequenceParameters, H264Unit pictureParameters);

} // namespace vantrell

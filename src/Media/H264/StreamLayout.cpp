// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/StreamLayout.h"

#include "Media/H264/BitReader.h"
#include "Media/H264/EmulationPrevention.h"

#include <cstdint>

namespace vantrell {

namespace {

constexpr std::size_t wholeUnit = SIZE_MAX;
constexpr std::uint32_t highProfile = 100;
constexpr std::uint32_t chroma420 = 1;
/// Pictures are shown in the order in which they are decoded.
constexpr std::uint32_t orderOfDecoding = 2;

/// seq_parameter_set_data, clause 7.3.2.1.1
bool readSequence(BitReader &in, StreamLayout &layout) {
    const std::uint32_t profile = in.bits(8);
    in.bits(8);          // constraint flags
    in.bits(8);          // level_idc
    in.unsignedNumber(); // seq_parameter_set_id
    if (profile >= highProfile) {
        if (in.unsignedNumber() != chroma420)
            return false;
        in.unsignedNumber(); // bit_depth_luma_minus8
        in.unsignedNumber(); // bit_depth_chroma_minus8
        in.bit();            // qpprime_y_zero_transform_bypass_flag
        if (in.bit())        // seq_scaling_matrix_present_flag
            return false;
    }
    layout.frameNumberBits = int(in.unsignedNumber()) + 4;
    if (in.unsignedNumber() != orderOfDecoding)
        return false;
    if (in.unsignedNumber() != 1) // max_num_ref_frames
        return false;
    if (in.bit()) // gaps_in_frame_num_value_allowed_flag
        return false;
    layout.columns = int(in.unsignedNumber()) + 1;
    layout.rows = int(in.unsignedNumber()) + 1;
    const bool isProgressive = in.bit(); // frame_mbs_only_flag
    return isProgressive && layout.frameNumberBits <= 16;
}

/// pic_parameter_set_rbsp, clause 7.3.2.2
bool readPicture(BitReader &in, StreamLayout &layout) {
    in.unsignedNumber(); // pic_parameter_set_id
    in.unsignedNumber(); // seq_parameter_set_id
    const bool hasCabac = in.bit();
    const bool hasOrder = in.bit(); // bottom_field_pic_order_in_frame_present_flag
    if (!hasCabac || hasOrder || in.unsignedNumber() != 0 /* num_slice_groups_minus1 */)
        return false;
    if (in.unsignedNumber() != 0) // num_ref_idx_l0_default_active_minus1
        return false;
    in.unsignedNumber(); // num_ref_idx_l1_default_active_minus1
    if (in.bit())        // weighted_pred_flag
        return false;
    in.bits(2); // weighted_bipred_idc
    layout.initialQuantizer = 26 + in.signedNumber();
    in.signedNumber(); // pic_init_qs_minus26
    in.signedNumber(); // chroma_qp_index_offset
    layout.hasDeblockingControl = in.bit();
    in.bit();         // constrained_intra_pred_flag
    return !in.bit(); // redundant_pic_cnt_present_flag
}

} // namespace

std::optional<StreamLayout> layoutOf(H264Unit sequenceParameters, H264Unit pictureParameters) {
    StreamLayout layout;
    const auto sequence = payloadOf(sequenceParameters, wholeUnit);
    const auto picture = payloadOf(pictureParameters, wholeUnit);
    BitReader inSequence(sequence);
    BitReader inPicture(picture);
    if (!readSequence(inSequence, layout) || !readPicture(inPicture, layout) || inSequence.hasFailed() ||
        inPicture.hasFailed())
        return std::nullopt;
    return layout;
}

} // namespace vantrell

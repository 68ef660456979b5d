// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/SliceHeader.h"

#include "Media/H264/BitReader.h"
#include "Media/H264/BitWriter.h"
#include "Media/H264/EmulationPrevention.h"

namespace vantrell {

namespace {

constexpr std::size_t longestHeader = 48;
/// slice_type, clause 7.4.3: from 5 on all slices of the picture are of this type.
constexpr std::uint32_t allPredicted = 5;
constexpr std::uint32_t allIntra = 7;
constexpr std::uint32_t keyIdBound = 65536;
/// disable_deblocking_filter_idc
constexpr std::uint32_t noDeblocking = 1;
/// First byte of a unit: nal_ref_idc and nal_unit_type.
constexpr std::uint8_t sliceByte = 0x60 | std::uint8_t(H264UnitType::slice);
constexpr std::uint8_t keySliceByte = 0x60 | std::uint8_t(H264UnitType::keySlice);

bool readMarking(BitReader &in, bool isKey) {
    // dec_ref_pic_marking, clause 7.3.3.3: plain sliding window.
    return isKey ? in.bits(2) == 0 : !in.bit();
}

bool readReferences(BitReader &in) {
    // num_ref_idx_active_override_flag with num_ref_idx_l0_active_minus1, ref_pic_list_modification_flag_l0
    if (in.bit() && in.unsignedNumber() != 0)
        return false;
    return !in.bit();
}

void writeHeader(BitWriter &out, const StreamLayout &layout, const SliceHeader &header) {
    out.unsignedNumber(std::uint32_t(header.firstBlock));
    out.unsignedNumber(header.isKey ? allIntra : allPredicted);
    out.unsignedNumber(0); // pic_parameter_set_id
    out.bits(header.frameNumber & ((1U << layout.frameNumberBits) - 1), layout.frameNumberBits);
    if (header.isKey) {
        out.unsignedNumber(header.keyId);
        out.bits(0, 2); // dec_ref_pic_marking
    } else {
        out.bits(0, 2); // num_ref_idx_active_override_flag, ref_pic_list_modification_flag_l0
        out.bit(false); // dec_ref_pic_marking
        out.unsignedNumber(header.cabacTable);
    }
    out.signedNumber(header.quantizer - layout.initialQuantizer);
    if (layout.hasDeblockingControl)
        out.unsignedNumber(noDeblocking);
    out.alignWith(true); // cabac_alignment_one_bit
}

/// Leaves room for the unit's length and returns where that is.
std::size_t beginUnit(std::vector<std::uint8_t> &stream, const SliceHeader &header) {
    const std::size_t begin = stream.size();
    stream.insert(stream.end(), {0, 0, 0, 0, header.isKey ? keySliceByte : sliceByte});
    return begin;
}

void endUnit(std::vector<std::uint8_t> &stream, std::size_t begin) {
    const std::size_t size = stream.size() - begin - 4;
    for (unsigned i = 0; i < 4; ++i)
        stream[begin + i] = std::uint8_t(size >> (24 - 8 * i));
}

} // namespace

std::optional<ParsedSlice> parseSlice(H264Unit unit, const StreamLayout &layout) {
    const auto payload = payloadOf(unit, longestHeader);
    BitReader in(payload);
    ParsedSlice slice;
    SliceHeader &header = slice.header;
    header.isKey = typeOf(unit) == H264UnitType::keySlice;
    const bool isReference = unit.front() >> 5 != 0;
    if (!isReference || (!header.isKey && typeOf(unit) != H264UnitType::slice))
        return std::nullopt;
    header.firstBlock = int(in.unsignedNumber());
    const std::uint32_t type = in.unsignedNumber();
    if (type % 5 != (header.isKey ? allIntra : allPredicted) % 5 || in.unsignedNumber() != 0)
        return std::nullopt;
    header.frameNumber = in.bits(layout.frameNumberBits);
    if (header.isKey)
        header.keyId = in.unsignedNumber();
    else if (!readReferences(in))
        return std::nullopt;
    if (!readMarking(in, header.isKey))
        return std::nullopt;
    if (!header.isKey)
        header.cabacTable = in.unsignedNumber();
    header.quantizer = layout.initialQuantizer + in.signedNumber();
    if (layout.hasDeblockingControl && in.unsignedNumber() != noDeblocking)
        return std::nullopt;
    while (!in.isByteAligned() && !in.hasFailed()) {
        if (!in.bit())
            return std::nullopt;
    }
    slice.dataStart = in.position() / 8;
    const bool isSane = !in.hasFailed() && slice.dataStart < payload.size() && header.firstBlock >= 0 &&
                        header.keyId < keyIdBound && header.cabacTable <= 2;
    return isSane ? std::optional(slice) : std::nullopt;
}

void appendSlice(std::vector<std::uint8_t> &stream, const StreamLayout &layout, const SliceHeader &header,
                 std::span<const std::uint8_t> data) {
    BitWriter bits;
    writeHeader(bits, layout, header);
    const std::size_t begin = beginUnit(stream, header);
    EmulationPrevention out(stream);
    out.append(bits.bytes());
    out.append(data);
    endUnit(stream, begin);
}

void appendSliceWithHeader(std::vector<std::uint8_t> &stream, const StreamLayout &layout,
                           const SliceHeader &header, H264Unit unit, const ParsedSlice &parsed) {
    BitWriter bits;
    writeHeader(bits, layout, header);
    const std::size_t begin = beginUnit(stream, header);
    EmulationPrevention out(stream);
    out.append(bits.bytes());
    // Which bytes have to be kept from looking like a start code depends on the zeros before them. From the
    // first byte on that is none, old and new unit agree, and the rest is taken over as it stands.
    std::size_t at = 1;
    std::size_t inPayload = 0;
    int zeros = 0;
    for (bool isSettled = false; at < unit.size() && !isSettled; ++at) {
        if (zeros >= 2 && unit[at] == 3) {
            zeros = 0;
            continue;
        }
        if (inPayload++ >= parsed.dataStart) {
            out.append(unit[at]);
            isSettled = unit[at] != 0;
        }
        zeros = unit[at] == 0 ? zeros + 1 : 0;
    }
    stream.insert(stream.end(), unit.begin() + std::ptrdiff_t(at), unit.end());
    endUnit(stream, begin);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/H264Units.h"
#include "Media/H264/StreamLayout.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vantrell {

/// What of a slice's header differs from slice to slice (H.264, clause 7.3.3). Every picture is a reference,
/// and all of a picture's slices are of one kind.
struct SliceHeader {
    /// All of it is intra coded and nothing before it is referred to (IDR).
    bool isKey = false;
    /// first_mb_in_slice
    int firstBlock = 0;
    /// frame_num: counts the pictures since the last key picture; only its lowest bits are written.
    std::uint32_t frameNumber = 0;
    /// idr_pic_id: two key pictures in a row have different ones.
    std::uint32_t keyId = 0;
    /// cabac_init_idc
    std::uint32_t cabacTable = 0;
    int quantizer = 0;

    friend bool operator==(const SliceHeader &, const SliceHeader &) = default;
};

/// A slice taken apart.
struct ParsedSlice {
    SliceHeader header;
    /// Where the macroblocks begin: bytes of the payload.
    std::size_t dataStart = 0;
};

/// Nothing when the header says something that `SliceHeader` does not tell.
std::optional<ParsedSlice> parseSlice(H264Unit unit, const StreamLayout &layout);

/// Appends a slice behind its length in four bytes: `data` are its macroblocks (clause 7.3.4).
void appendSlice(std::vector<std::uint8_t> &stream, const StreamLayout &layout, const SliceHeader &header,
                 std::span<const std::uint8_t> data);

/// Appends the slice `unit` with the header `header` in place of its own, where `parsed` is what it was
/// parsed to.
void appendSliceWithHeader(std::vector<std::uint8_t> &stream, const StreamLayout &layout,
                           const SliceHeader &header, H264Unit unit, const ParsedSlice &parsed);

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/H264/BitWriter.h"

#include <cstdint>

namespace vantrell {

/// How probable it is that a bin is set, which adapts to those that were encoded with it (H.264, clause
/// 9.3.1.1).
struct CabacContext {
    /// pStateIdx
    std::uint8_t state = 0;
    /// valMPS
    bool moreProbable = false;

    /// As it is at a slice's begin: `slope` and `offset` are m and n of its tables.
    static CabacContext initial(int slope, int offset, int quantizer);

    friend bool operator==(const CabacContext &, const CabacContext &) = default;
};

/// The arithmetic encoder of one slice's data (H.264, clause 9.3.4). A value type: it can be kept and gone on
/// with, where what was written is kept too.
class CabacEncoder {
public:
    /// EncodeDecision
    void encode(BitWriter &out, CabacContext &context, bool bin);
    /// EncodeBypass
    void bypass(BitWriter &out, bool bin);
    /// end_of_slice_flag; the slice's data are complete when it is set.
    void end(BitWriter &out, bool isLast);

private:
    void putBit(BitWriter &out, bool bit);
    void renormalise(BitWriter &out);

    std::uint32_t m_low = 0;
    std::uint32_t m_range = 510;
    int m_outstanding = 0;
    bool m_isFirstBit = true;
};

} // namespace vantrell

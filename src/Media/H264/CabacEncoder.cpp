// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/CabacEncoder.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

constexpr int states = 64;

/// rangeTabLPS, Table 9-44
constexpr std::array<std::array<std::uint8_t, 4>, states> lessProbableRanges{{
    {128, 176, 208, 240}, {128, 167, 197, 227}, {128, 158, 187, 216}, {123, 150, 178, 205},
    {116, 142, 169, 195}, {111, 135, 160, 185}, {105, 128, 152, 175}, {100, 122, 144, 166},
    {95, 116, 137, 158},  {90, 110, 130, 150},  {85, 104, 123, 142},  {81, 99, 117, 135},
    {77, 94, 111, 128},   {73, 89, 105, 122},   {69, 85, 100, 116},   {66, 80, 95, 110},
    {62, 76, 90, 104},    {59, 72, 86, 99},     {56, 69, 81, 94},     {53, 65, 77, 89},
    {51, 62, 73, 85},     {48, 59, 69, 80},     {46, 56, 66, 76},     {43, 53, 63, 72},
    {41, 50, 59, 69},     {39, 48, 56, 65},     {37, 45, 54, 62},     {35, 43, 51, 59},
    {33, 41, 48, 56},     {32, 39, 46, 53},     {30, 37, 43, 50},     {29, 35, 41, 48},
    {27, 33, 39, 45},     {26, 31, 37, 43},     {24, 30, 35, 41},     {23, 28, 33, 39},
    {22, 27, 32, 37},     {21, 26, 30, 35},     {20, 24, 29, 33},     {19, 23, 27, 31},
    {18, 22, 26, 30},     {17, 21, 25, 28},     {16, 20, 23, 27},     {15, 19, 22, 25},
    {14, 18, 21, 24},     {14, 17, 20, 23},     {13, 16, 19, 22},     {12, 15, 18, 21},
    {12, 14, 17, 20},     {11, 14, 16, 19},     {11, 13, 15, 18},     {10, 12, 15, 17},
    {10, 12, 14, 16},     {9, 11, 13, 15},      {9, 11, 12, 14},      {8, 10, 12, 14},
    {8, 9, 11, 13},       {7, 9, 11, 12},       {7, 9, 10, 12},       {7, 8, 10, 11},
    {6, 8, 9, 11},        {6, 7, 9, 10},        {6, 7, 8, 9},         {2, 2, 2, 2},
}};

/// transIdxLPS, Table 9-45
constexpr std::array<std::uint8_t, states> afterLessProbable{
    0,  0,  1,  2,  2,  4,  4,  5,  6,  7,  8,  9,  9,  11, 11, 12, 13, 13, 15, 15, 16, 16,
    18, 18, 19, 19, 21, 21, 22, 22, 23, 24, 24, 25, 26, 26, 27, 27, 28, 29, 29, 30, 30, 30,
    31, 32, 32, 33, 33, 33, 34, 34, 35, 35, 35, 36, 36, 36, 37, 37, 37, 38, 38, 63};

/// transIdxMPS goes on to it; the last one is of what never changes.
constexpr std::uint8_t mostProbable = 62;

} // namespace

CabacContext CabacContext::initial(int slope, int offset, int quantizer) {
    const int state = std::clamp((slope * quantizer >> 4) + offset, 1, 126);
    return {std::uint8_t(state <= 63 ? 63 - state : state - 64), state > 63};
}

void CabacEncoder::putBit(BitWriter &out, bool bit) {
    if (m_isFirstBit)
        m_isFirstBit = false;
    else
        out.bit(bit);
    for (; m_outstanding > 0; --m_outstanding)
        out.bit(!bit);
}

// RenormE
void CabacEncoder::renormalise(BitWriter &out) {
    for (; m_range < 256; m_range <<= 1, m_low <<= 1) {
        if (m_low < 256) {
            putBit(out, false);
        } else if (m_low >= 512) {
            m_low -= 512;
            putBit(out, true);
        } else {
            m_low -= 256;
            ++m_outstanding;
        }
    }
}

void CabacEncoder::encode(BitWriter &out, CabacContext &context, bool bin) {
    const std::uint32_t less = lessProbableRanges[context.state][m_range >> 6 & 3];
    m_range -= less;
    if (bin == context.moreProbable) {
        context.state = std::min<std::uint8_t>(context.state + 1, mostProbable);
    } else {
        m_low += m_range;
        m_range = less;
        if (context.state == 0)
            context.moreProbable = !context.moreProbable;
        context.state = afterLessProbable[context.state];
    }
    renormalise(out);
}

void CabacEncoder::bypass(BitWriter &out, bool bin) {
    m_low <<= 1;
    if (bin)
        m_low += m_range;
    if (m_low >= 1024) {
        m_low -= 1024;
        putBit(out, true);
    } else if (m_low < 512) {
        putBit(out, false);
    } else {
        m_low -= 512;
        ++m_outstanding;
    }
}

// EncodeTerminate and EncodeFlush, whose last bit is the rbsp_stop_one_bit
void CabacEncoder::end(BitWriter &out, bool isLast) {
    m_range -= 2;
    if (!isLast)
        return renormalise(out);
    m_low += m_range;
    m_range = 2;
    renormalise(out);
    putBit(out, m_low >> 9 & 1);
    out.bits((m_low >> 7 & 3) | 1, 2);
    out.alignWith(false);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/Crc32c.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <nmmintrin.h>
#endif

namespace vantrell {

namespace {

constexpr std::array<std::uint32_t, 256> crcTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = value & 1 ? value >> 1 ^ 0x82f63b78U : value >> 1;
        table[i] = value;
    }
    return table;
}();

std::uint32_t crcByTable(std::span<const std::uint8_t> bytes, std::uint32_t state) {
    for (const std::uint8_t byte : bytes)
        state = crcTable[(state ^ byte) & 0xff] ^ state >> 8;
    return state;
}

#if defined(__x86_64__)
__attribute__((target("sse4.2"))) std::uint32_t crcByInstruction(std::span<const std::uint8_t> bytes,
                                                                 std::uint32_t start) {
    std::uint64_t state = start;
    for (; bytes.size() >= 8; bytes = bytes.subspan(8)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), 8);
        state = _mm_crc32_u64(state, word);
    }
    return crcByTable(bytes, std::uint32_t(state));
}
#endif

} // namespace

std::uint32_t crc32c(std::span<const std::uint8_t> bytes, std::uint32_t previous) {
    const std::uint32_t state = ~previous;
#if defined(__x86_64__)
    static const bool hasInstruction = __builtin_cpu_supports("sse4.2");
    if (hasInstruction)
        return ~crcByInstruction(bytes, state);
#endif
    return ~crcByTable(bytes, state);
}

} // namespace vantrell

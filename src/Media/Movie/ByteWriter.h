// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace vantrell {

/// Builds big-endian structures and QuickTime's nested boxes in memory. Reentrant.
class ByteWriter {
public:
    void u8(std::uint8_t value) { m_bytes.push_back(value); }
    void u16(std::uint16_t value) { number<2>(value); }
    void u32(std::uint32_t value) { number<4>(value); }
    void u64(std::uint64_t value) { number<8>(value); }
    void i32(std::int32_t value) { u32(std::bit_cast<std::uint32_t>(value)); }
    void i64(std::int64_t value) { u64(std::bit_cast<std::uint64_t>(value)); }
    void f64(double value) { u64(std::bit_cast<std::uint64_t>(value)); }
    void zeros(std::size_t count) { m_bytes.insert(m_bytes.end(), count, 0); }
    void bytes(std::span<const std::uint8_t> value) {
        m_bytes.insert(m_bytes.end(), value.begin(), value.end());
    }
    void text(std::string_view value) { m_bytes.insert(m_bytes.end(), value.begin(), value.end()); }

    /// Writes a box around what `contents` writes. `type` has four characters.
    template <typename Contents>
    void box(std::string_view type, Contents contents) {
        const std::size_t start = m_bytes.size();
        u32(0);
        text(type);
        contents();
        setU32(start, std::uint32_t(m_bytes.size() - start));
    }

    /// A box that begins with a version and flags.
    template <typename Contents>
    void fullBox(std::string_view type, std::uint8_t version, std::uint32_t flags, Contents contents) {
        box(type, [&] {
            u32(std::uint32_t(version) << 24 | flags);
            contents();
        });
    }

    void setU32(std::size_t position, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            m_bytes[position + std::size_t(i)] = std::uint8_t(value >> (24 - 8 * i));
    }

    void reserve(std::size_t size) { m_bytes.reserve(size); }
    std::size_t size() const { return m_bytes.size(); }
    const std::vector<std::uint8_t> &view() const { return m_bytes; }
    std::vector<std::uint8_t> take() { return std::exchange(m_bytes, {}); }

private:
    template <int Size>
    void number(std::uint64_t value) {
        std::uint8_t encoded[Size];
        for (int i = 0; i < Size; ++i)
            encoded[i] = std::uint8_t(value >> (8 * (Size - 1 - i)));
        m_bytes.insert(m_bytes.end(), encoded, encoded + Size);
    }

    std::vector<std::uint8_t> m_bytes;
};

} // namespace vantrell

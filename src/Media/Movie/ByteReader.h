// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string>

namespace vantrell {

/// Reads big-endian values from bytes that nobody vouches for. A read past the end yields zero and makes the
/// reader failed for good, so that a parser may check once at the end. Reentrant; borrows the bytes.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    std::uint8_t u8() { return std::uint8_t(number<1>()); }
    std::uint16_t u16() { return std::uint16_t(number<2>()); }
    std::uint32_t u32() { return std::uint32_t(number<4>()); }
    std::uint64_t u64() { return number<8>(); }
    std::int32_t i32() { return std::bit_cast<std::int32_t>(u32()); }
    std::int64_t i64() { return std::bit_cast<std::int64_t>(u64()); }
    double f64() { return std::bit_cast<double>(u64()); }

    /// The next `count` bytes; none of them when there are fewer.
    std::span<const std::uint8_t> bytes(std::uint64_t count) {
        if (count > m_rest.size()) {
            fail();
            return {};
        }
        const auto taken = m_rest.first(std::size_t(count));
        m_rest = m_rest.subspan(std::size_t(count));
        return taken;
    }
    std::string text(std::uint64_t count) {
        const auto taken = bytes(count);
        return {taken.begin(), taken.end()};
    }
    void skip(std::uint64_t count) { bytes(count); }

    std::size_t remaining() const { return m_rest.size(); }
    std::span<const std::uint8_t> rest() const { return m_rest; }
    bool failed() const { return m_failed; }
    void fail() {
        m_failed = true;
        m_rest = {};
    }

private:
    template <int Size>
    std::uint64_t number() {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : bytes(Size))
            value = value << 8 | byte;
        return value;
    }

    std::span<const std::uint8_t> m_rest;
    bool m_failed = false;
};

} // namespace vantrell

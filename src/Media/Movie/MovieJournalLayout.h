// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <string_view>

/// Numbers that the journal's writer and reader share.
namespace vantrell::journalLayout {

inline constexpr std::string_view magic = "VCMJ0001";
/// A page of notes, each copy in a disk sector of its own.
inline constexpr std::uint64_t noteSpacing = 512;
inline constexpr std::uint64_t elapsedNote = 512;
inline constexpr std::uint64_t syncedNote = 1536;
inline constexpr std::uint64_t recordsBegin = 4096;

inline constexpr std::uint8_t trackRecord = 1;
inline constexpr std::uint8_t chunkRecord = 2;
inline constexpr std::uint8_t endsRecord = 3;
inline constexpr std::uint64_t sampleBytes = 17;

} // namespace vantrell::journalLayout

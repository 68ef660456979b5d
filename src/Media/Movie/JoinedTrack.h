// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieAssembler.h"
#include "Media/Movie/MovieIndex.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace vantrell {

/// One track of a joined movie while its pieces are laid behind one another. Thread-bound.
class JoinedTrack {
public:
    /// Silent packets behind one another.
    struct Silence {
        std::uint64_t offset = 0;
        std::uint32_t packetBytes = 0;
    };
    /// Writes that many silent packets; none when it cannot.
    using WriteSilence = std::function<std::optional<Silence>(std::size_t packets)>;

    /// Takes kind, time scale, size and name from the first source that has the track.
    explicit JoinedTrack(const TrackDescription &first);

    TrackKind kind() const { return m_description.kind; }
    const TrackDescription &description() const { return m_description; }

    /// Makes the track end where `source` will begin, shown from `cursor` (movie ticks): superfluous packets
    /// go, missing ones become silence.
    void prepare(const MovieIndex::Track &source, std::uint32_t sourceTimeScale, std::int64_t cursor,
                 const WriteSilence &writeSilence);

    /// Adds the source's samples, which the joined file holds `shift` bytes further on (modulo 2^64).
    void append(const MovieIndex::Track &source, std::uint32_t sourceTimeScale, std::int64_t cursor,
                std::uint64_t shift);

    /// Hands the track to the movie and returns its edits.
    std::vector<Edit> finish(MovieAssembler &movie) const;

private:
    struct Sample {
        std::uint64_t offset;
        std::int64_t dts;
        std::uint32_t size;
        std::int32_t compositionOffset;
        std::uint16_t description;
        bool isKey;
    };

    // Samples of a source that are shown as one stretch.
    struct Piece {
        std::size_t begin;
        std::size_t end;
        // Own time scale: time of the media time zero, and where the stretch is shown.
        std::int64_t zero;
        std::int64_t shownFrom;
        std::int64_t shownUntil;
    };

    std::vector<Piece> pieces(const MovieIndex::Track &source, std::uint32_t sourceTimeScale,
                              std::int64_t cursor) const;
    std::int64_t timeOf(const MovieIndex::Track &source, const Piece &piece, std::size_t sample) const;
    void dropBefore(std::int64_t start);
    std::int64_t countedEnd() const;
    std::uint16_t descriptionIndex(const std::vector<std::uint8_t> &entry);

    TrackDescription m_description;
    std::vector<Sample> m_samples;
    // Ticks of one packet of sound.
    std::int64_t m_packet = 0;
    std::int64_t m_end = 0;
};

} // namespace vantrell

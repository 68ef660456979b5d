// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/PlainColour.h"
#include "Media/Encoding/ReconstructedPicture.h"
#include "Media/Picture/Nv12Frame.h"
#include "Support/BlockMap.h"

#include <optional>
#include <vector>

namespace vantrell {

/// Finds out whether much of what changed on the screen is what lay above or below before: a page that is
/// scrolled, lines of a terminal. Not thread-safe.
class ScrollFinder {
public:
    /// A block of one colour.
    struct Paper {
        int column;
        int row;
        /// So many pixels of luma further down lay nothing but this colour.
        int distance;
        PlainColour colour;
    };

    /// Where fewer blocks changed there is little to save.
    static constexpr int fewestChanged = 128;

    /// `most`: pixels of luma that a motion vector may span.
    explicit ScrollFinder(PixelSize picture, int most);

    /// Looks for where the changed blocks of `frame` come from in `before`, which is what a decoder shows.
    /// True when there are copies enough.
    bool find(const Nv12Frame &frame, const ReconstructedPicture &before, const BlockMap &changed);

    /// The next picture is none that `find` has seen.
    void forget();

    /// So many pixels of luma further down (up, if negative) lay in the picture before what is now in
    /// `copies()`.
    int distance() const { return m_distance; }
    /// Most of what changed lay there, whether or not it is a copy good enough.
    bool isMostScrolled() const { return m_isMostScrolled; }
    /// The changed blocks that are copies, but for differences that are not worth their bits.
    const BlockMap &copies() const { return m_copies; }
    /// Unchanged blocks beside them that are the same at `distance()`, to the last bit.
    const BlockMap &same() const { return m_same; }
    /// Of the copies, those of one colour that at `distance()` show traces of the letters that were encoded
    /// beside it, and elsewhere none.
    const std::vector<Paper> &papers() const { return m_papers; }

private:
    /// A block whose origin can be told: there is something in it.
    struct Probe {
        int column;
        int row;
    };

    void chooseProbes(const Nv12Frame &frame, const BlockMap &changed);
    bool isWithin(const ReconstructedPicture &before, int row, int distance) const;
    int probesThatAgree(const Nv12Frame &frame, const ReconstructedPicture &before, int distance) const;
    /// Zero when there is none.
    int searched(const Nv12Frame &frame, const ReconstructedPicture &before) const;
    void findCopies(const Nv12Frame &frame, const ReconstructedPicture &before, const BlockMap &changed);
    /// How unlike the block is to its copy, in squares; nothing when it is worth the bits.
    std::optional<int> errorOfCopy(const Nv12Frame &frame, const ReconstructedPicture &before, int column,
                                   int row) const;
    void findPaper(const Nv12Frame &frame, const ReconstructedPicture &before, int column, int row);
    void findSame(const ReconstructedPicture &before, const BlockMap &changed);
    bool isSame(const ReconstructedPicture &before, int column, int row) const;

    const int m_most;
    int m_distance = 0;
    bool m_isMostScrolled = false;
    BlockMap m_copies;
    BlockMap m_same;
    std::vector<Paper> m_papers;
    int m_papersMissed = 0;
    std::vector<Probe> m_probes;
    /// Searches in a row that found nothing, and pictures until the next one.
    int m_misses = 0;
    int m_pause = 0;
};

} // namespace vantrell

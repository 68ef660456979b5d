// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/ScrollFinder.h"

#include "Media/Encoding/BlockError.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

namespace vantrell {

namespace {

constexpr int fewestCopies = 64;
constexpr int mostProbes = 12;
constexpr int fewestProbes = 3;
/// What the rows of a block differ by in all, so that it is unlike what lies around it.
constexpr int leastTexture = 2048;
/// A block that was encoded before is like its original but for this.
constexpr int mostUnlike = 1024;
/// The error that remains in a copy, as of what was encoded at the coarsest quantizer: of each pixel. Colours
/// lie between two rows at every other distance and blur a little each time.
constexpr int mostSquaredError = 8;
constexpr int mostSquaredColourError = 14;
constexpr int mostPause = 4;
/// Pixels around where a copy lies, and in a picture the blocks that may be looked for in vain.
constexpr int farthestPaper = 120;
constexpr int mostPapersMissed = 40;

BlockPixels blockOf(const std::uint8_t *plane, std::ptrdiff_t stride, int column, int top) {
    return {plane + top * stride + std::ptrdiff_t(column) * blockEdge, stride};
}

int texture(BlockPixels block) {
    int sum = 0;
    for (int y = 0; y + 1 < blockEdge; ++y, block.data += block.stride) {
        for (int x = 0; x < blockEdge; ++x)
            sum += std::abs(block.data[x] - block.data[block.stride + x]);
    }
    return sum;
}

} // namespace

ScrollFinder::ScrollFinder(PixelSize picture, int most) : m_most(most), m_copies(picture), m_same(picture) {}

bool ScrollFinder::find(const Nv12Frame &frame, const ReconstructedPicture &before, const BlockMap &changed) {
    m_copies.clear();
    m_same.clear();
    m_papers.clear();
    m_papersMissed = 0;
    m_isMostScrolled = false;
    if (before.isNull() || changed.count() < fewestChanged)
        return false;
    if (m_pause > 0) {
        --m_pause;
        return false;
    }
    chooseProbes(frame, changed);
    if (std::ssize(m_probes) < fewestProbes)
        return false;
    const int enough = int(m_probes.size()) / 3;
    if (m_distance == 0 || probesThatAgree(frame, before, m_distance) <= enough) {
        m_distance = searched(frame, before);
        if (m_distance == 0) {
            m_pause = std::min(++m_misses, mostPause);
            return false;
        }
    }
    m_misses = 0;
    m_isMostScrolled = 3 * probesThatAgree(frame, before, m_distance) >= 2 * int(m_probes.size());
    findCopies(frame, before, changed);
    if (m_copies.count() < fewestCopies)
        return false;
    findSame(before, changed);
    return true;
}

void ScrollFinder::forget() {
    m_isMostScrolled = false;
    m_distance = 0;
}

void ScrollFinder::chooseProbes(const Nv12Frame &frame, const BlockMap &changed) {
    m_probes.clear();
    // Spread over all that changed; more than are wanted, since many show nothing.
    constexpr int candidates = 6 * mostProbes;
    const int step = std::max(1, changed.count() / candidates);
    int seen = 0;
    for (int row = 0; row < changed.rows(); ++row) {
        for (int column = 0; column < changed.columns(); ++column) {
            if (!changed.isMarked(column, row) || seen++ % step != 0)
                continue;
            if (texture(blockOf(frame.luma(), frame.stride(), column, row * blockEdge)) >= leastTexture)
                m_probes.push_back({column, row});
        }
    }
    const std::size_t all = m_probes.size();
    if (all <= mostProbes)
        return;
    for (std::size_t i = 0; i < mostProbes; ++i)
        m_probes[i] = m_probes[i * all / mostProbes];
    m_probes.resize(mostProbes);
}

bool ScrollFinder::isWithin(const ReconstructedPicture &before, int row, int distance) const {
    const int top = row * blockEdge + distance;
    return top >= 0 && top + blockEdge <= before.rows * blockEdge;
}

int ScrollFinder::probesThatAgree(const Nv12Frame &frame, const ReconstructedPicture &before,
                                  int distance) const {
    return int(std::ranges::count_if(m_probes, [&](const Probe &probe) {
        return isWithin(before, probe.row, distance) &&
               absoluteDifference(blockOf(frame.luma(), frame.stride(), probe.column, probe.row * blockEdge),
                                  blockOf(before.luma, before.lumaStride, probe.column,
                                          probe.row * blockEdge + distance)) <= mostUnlike;
    }));
}

int ScrollFinder::searched(const Nv12Frame &frame, const ReconstructedPicture &before) const {
    std::map<int, int> votes;
    for (const Probe &probe : m_probes) {
        const BlockPixels block = blockOf(frame.luma(), frame.stride(), probe.column, probe.row * blockEdge);
        int best = mostUnlike + 1;
        int found = 0;
        for (int distance = -m_most; distance <= m_most; ++distance) {
            if (!isWithin(before, probe.row, distance))
                continue;
            const int difference =
                absoluteDifference(block, blockOf(before.luma, before.lumaStride, probe.column,
                                                  probe.row * blockEdge + distance));
            if (difference < best) {
                best = difference;
                found = distance;
            }
        }
        if (best <= mostUnlike)
            ++votes[found];
    }
    votes.erase(0);
    const auto most = std::ranges::max_element(votes, {}, [](const auto &vote) { return vote.second; });
    const int enough = std::max(2, int(m_probes.size()) / 3);
    return most != votes.end() && most->second >= enough ? most->first : 0;
}

void ScrollFinder::findCopies(const Nv12Frame &frame, const ReconstructedPicture &before,
                              const BlockMap &changed) {
    for (int row = 0; row < changed.rows(); ++row) {
        if (!changed.anyInRow(row) || !isWithin(before, row, m_distance))
            continue;
        for (int column = 0; column < changed.columns(); ++column) {
            if (!changed.isMarked(column, row))
                continue;
            const auto error = errorOfCopy(frame, before, column, row);
            if (!error)
                continue;
            m_copies.markBlock(column, row);
            if (*error > 0 && m_papersMissed < mostPapersMissed)
                findPaper(frame, before, column, row);
        }
    }
}

std::optional<int> ScrollFinder::errorOfCopy(const Nv12Frame &frame, const ReconstructedPicture &before,
                                             int column, int row) const {
    constexpr int lumaPixels = blockEdge * blockEdge;
    const int top = row * blockEdge;
    const int luma = squaredDifference(blockOf(frame.luma(), frame.stride(), column, top),
                                       blockOf(before.luma, before.lumaStride, column, top + m_distance));
    if (luma > lumaPixels * mostSquaredError)
        return std::nullopt;
    // Half as many rows: of an odd distance they lie between two.
    const int colourTop = (top + m_distance) >> 1;
    const int chroma = squaredChromaDifference(blockOf(frame.chroma(), frame.stride(), column, top / 2),
                                               blockOf(before.chroma, before.chromaStride, column, colourTop),
                                               m_distance % 2 != 0);
    if (chroma > lumaPixels / 2 * mostSquaredColourError)
        return std::nullopt;
    return luma + chroma;
}

/// Traces of one level are invisible, but copied along they would remain for as long as the page moves.
void ScrollFinder::findPaper(const Nv12Frame &frame, const ReconstructedPicture &before, int column,
                             int row) {
    const int top = row * blockEdge;
    const auto colour = PlainColour::of(blockOf(frame.luma(), frame.stride(), column, top),
                                        blockOf(frame.chroma(), frame.stride(), column, top / 2));
    if (!colour)
        return;
    const auto isCleanAt = [&](int distance) {
        return std::abs(distance) <= m_most && isWithin(before, row, distance) &&
               colour->fills(blockOf(before.luma, before.lumaStride, column, top + distance),
                             blockOf(before.chroma, before.chromaStride, column, (top + distance) >> 1),
                             blockEdge / 2 + std::abs(distance % 2));
    };
    const auto found = [&](int distance) { m_papers.push_back({column, row, distance, *colour}); };
    // What is where its neighbour is costs no bits.
    const bool hasNeighbour = !m_papers.empty() && m_papers.back().row == row;
    if (hasNeighbour && isCleanAt(m_papers.back().distance))
        return found(m_papers.back().distance);
    for (int away = 1; away <= farthestPaper; ++away) {
        for (const int distance : {m_distance + away, m_distance - away})
            if (isCleanAt(distance))
                return found(distance);
    }
    ++m_papersMissed;
}

/// Paper between letters, mostly. Where it may come from here or from there it costs nothing to say.
void ScrollFinder::findSame(const ReconstructedPicture &before, const BlockMap &changed) {
    int top = 0;
    while (!m_copies.anyInRow(top))
        ++top;
    int bottom = m_copies.rows() - 1;
    while (!m_copies.anyInRow(bottom))
        --bottom;
    for (int row = top; row <= bottom; ++row) {
        if (!isWithin(before, row, m_distance))
            continue;
        for (int column = 0; column < changed.columns(); ++column) {
            if (!changed.isMarked(column, row) && isSame(before, column, row))
                m_same.markBlock(column, row);
        }
    }
}

bool ScrollFinder::isSame(const ReconstructedPicture &before, int column, int row) const {
    const auto areEqual = [](BlockPixels a, BlockPixels b, int rows) {
        for (; rows > 0; --rows, a.data += a.stride, b.data += b.stride) {
            if (std::memcmp(a.data, b.data, blockEdge) != 0)
                return false;
        }
        return true;
    };
    const auto luma = [&](int top) { return blockOf(before.luma, before.lumaStride, column, top); };
    const auto chroma = [&](int top) { return blockOf(before.chroma, before.chromaStride, column, top); };
    const int top = row * blockEdge;
    const int colourTop = (top + m_distance) >> 1;
    return areEqual(luma(top), luma(top + m_distance), blockEdge) &&
           areEqual(chroma(top / 2), chroma(colourTop), blockEdge / 2) &&
           (m_distance % 2 == 0 || areEqual(chroma(top / 2), chroma(colourTop + 1), blockEdge / 2));
}

} // namespace vantrell

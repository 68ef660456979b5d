// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/Nv12Frame.h"
#include "Support/BlockMap.h"

#include <cstdint>
#include <random>

namespace vantrell {

/// A picture on which things happen as on a screen, in an order that only the seed decides: letters, carets
/// at the edges, windows that move and scroll by a few pixels, films, nothing at all.
class TrialScreen {
public:
    TrialScreen(PixelSize picture, std::uint32_t seed);

    /// What happens next; `changed` has it.
    void step();

    /// Instead: a page fills most of the picture, and then that is scrolled.
    void openPage();
    void scrollPage(int down);

    /// Instead: what is seen through this part of the picture moves, and what was beside it comes in. That is
    /// where a band or a strip refers to what is not its own.
    void moveUnder(const PixelRect &part, int right, int down);

    const Nv12Frame &frame() const { return m_frame; }
    const BlockMap &changed() const { return m_changed; }

private:
    int random(int below);
    PixelRect place(int mostWidth, int mostHeight);
    void touch(const PixelRect &rect);
    void write(const PixelRect &rect);
    /// Words on paper.
    void print(const PixelRect &rect);
    /// Fills the rectangle with what lay in `source` so far from there.
    void shift(const PixelRect &rect, int right, int down, const PixelRect &source);
    void film(const PixelRect &rect);
    /// What lies beside the picture in the last macroblocks repeats its edge.
    void repeatEdges();

    std::minstd_rand m_random;
    Nv12Frame m_frame;
    Nv12Frame m_before;
    BlockMap m_changed;
    int m_steps = 0;
    PixelRect m_page;
};

} // namespace vantrell

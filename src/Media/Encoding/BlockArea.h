// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/BlockMap.h"

namespace vantrell {

/// Pixels of a macroblock's side.
inline constexpr int blockEdge = BlockMap::blockSize;

/// A rectangle of macroblocks.
struct BlockArea {
    int column = 0;
    int row = 0;
    int columns = 0;
    int rows = 0;

    int count() const { return columns * rows; }
    int bottom() const { return row + rows; }
    int right() const { return column + columns; }
    bool contains(int atRow, int atColumn) const {
        return atRow >= row && atRow < bottom() && atColumn >= column && atColumn < right();
    }

    friend bool operator==(const BlockArea &, const BlockArea &) = default;
};

} // namespace vantrell

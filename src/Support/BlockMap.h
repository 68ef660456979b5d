// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantrell {

/// Which macroblocks (16 by 16 pixels) of a picture are marked. A value type.
class BlockMap {
public:
    static constexpr int blockSize = 16;

    BlockMap() = default;
    explicit BlockMap(PixelSize picture);

    int columns() const { return m_columns; }
    int rows() const { return m_rows; }

    /// Marks every block that the rectangle touches; what lies outside of the picture is ignored.
    void mark(const PixelRect &rect);
    void markBlock(int column, int row) { m_marks[index(column, row)] = 1; }
    void unmarkBlock(int column, int row) { m_marks[index(column, row)] = 0; }
    void markAll();
    void clear();
    /// Adds the other's marks; both are of one picture size.
    void add(const BlockMap &other);

    /// Takes the other's marks away.
    void remove(const BlockMap &other);

    bool isMarked(int column, int row) const { return m_marks[index(column, row)] != 0; }
    int count() const;
    bool any() const;
    bool anyInRow(int row) const;
    /// One byte for each block, row by row: 1 marked, 0 not.
    const std::vector<std::uint8_t> &marks() const { return m_marks; }

    /// Disjoint rectangles that cover the marked blocks, in pixels and cut to the picture. When they would be
    /// more than `most`, they cover more than what is marked.
    std::vector<PixelRect> rectangles(int most) const;

private:
    std::size_t index(int column, int row) const {
        return std::size_t(row) * std::size_t(m_columns) + std::size_t(column);
    }
    PixelRect pixels(int column, int row, int columns, int rows) const;

    PixelSize m_picture;
    int m_columns = 0;
    int m_rows = 0;
    std::vector<std::uint8_t> m_marks;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/BlockMap.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vantrell {

namespace {

/// A run of marked blocks, some rows high.
struct BlockRun {
    int column;
    int columns;
    int row;
    int rows;
};

} // namespace

BlockMap::BlockMap(PixelSize picture)
    : m_picture(picture), m_columns((picture.width + blockSize - 1) / blockSize),
      m_rows((picture.height + blockSize - 1) / blockSize),
      m_marks(std::size_t(m_columns) * std::size_t(m_rows), 0) {}

void BlockMap::mark(const PixelRect &rect) {
    const PixelRect part = intersection(rect, PixelRect{0, 0, m_picture.width, m_picture.height});
    if (part.isEmpty())
        return;
    const int first = part.x / blockSize;
    const int last = (part.right() - 1) / blockSize;
    for (int row = part.y / blockSize; row <= (part.bottom() - 1) / blockSize; ++row)
        std::fill_n(m_marks.begin() + std::ptrdiff_t(index(first, row)), last - first + 1, std::uint8_t(1));
}

void BlockMap::markAll() {
    std::ranges::fill(m_marks, std::uint8_t(1));
}

void BlockMap::clear() {
    std::ranges::fill(m_marks, std::uint8_t(0));
}

void BlockMap::add(const BlockMap &other) {
    std::ranges::transform(m_marks, other.m_marks, m_marks.begin(),
                           [](std::uint8_t a, std::uint8_t b) { return std::uint8_t(a | b); });
}

void BlockMap::remove(const BlockMap &other) {
    std::ranges::transform(m_marks, other.m_marks, m_marks.begin(),
                           [](std::uint8_t a, std::uint8_t b) { return std::uint8_t(a & ~b); });
}

int BlockMap::count() const {
    return std::accumulate(m_marks.begin(), m_marks.end(), 0);
}

bool BlockMap::any() const {
    return !m_marks.empty() && std::memchr(m_marks.data(), 1, m_marks.size());
}

bool BlockMap::anyInRow(int row) const {
    return std::memchr(&m_marks[index(0, row)], 1, std::size_t(m_columns));
}

PixelRect BlockMap::pixels(int column, int row, int columns, int rows) const {
    return intersection({column * blockSize, row * blockSize, columns * blockSize, rows * blockSize},
                        {0, 0, m_picture.width, m_picture.height});
}

std::vector<PixelRect> BlockMap::rectangles(int most) const {
    std::vector<BlockRun> closed;
    std::vector<BlockRun> open;
    std::vector<BlockRun> next;
    PixelRect box;
    for (int row = 0; row <= m_rows; ++row) {
        next.clear();
        for (int column = 0; row < m_rows && column < m_columns;) {
            if (!isMarked(column, row)) {
                ++column;
                continue;
            }
            const int start = column;
            while (column < m_columns && isMarked(column, row))
                ++column;
            box = united(box, pixels(start, row, column - start, 1));
            // A run right below an equal one makes that one higher.
            const auto above = std::ranges::find_if(open, [&](const BlockRun &run) {
                return run.column == start && run.columns == column - start;
            });
            if (above != open.end()) {
                next.push_back({start, column - start, above->row, above->rows + 1});
                open.erase(above);
            } else {
                next.push_back({start, column - start, row, 1});
            }
        }
        closed.insert(closed.end(), open.begin(), open.end());
        open.swap(next);
    }
    if (std::ssize(closed) > most)
        return {box};
    std::vector<PixelRect> rects;
    rects.reserve(closed.size());
    for (const BlockRun &run : closed)
        rects.push_back(pixels(run.column, run.row, run.columns, run.rows));
    return rects;
}

} // namespace vantrell

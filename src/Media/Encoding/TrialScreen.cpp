// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/TrialScreen.h"

#include "Media/Encoding/BlockArea.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vantrell {

namespace {

int wholeBlocksOf(int pixels) {
    return (pixels + blockEdge - 1) / blockEdge * blockEdge;
}

} // namespace

TrialScreen::TrialScreen(PixelSize picture, std::uint32_t seed)
    : m_random(seed), m_frame(picture), m_before(picture), m_changed(picture) {
    film({0, 0, picture.width, picture.height});
    for (int i = 0; i < 40; ++i)
        write(place(400, 60));
    repeatEdges();
    m_changed.markAll();
}

int TrialScreen::random(int below) {
    return int(m_random() % std::uint32_t(std::max(below, 1)));
}

/// Even numbers, since a pixel of colour belongs to two by two of brightness; often at an edge.
PixelRect TrialScreen::place(int mostWidth, int mostHeight) {
    const auto [width, height] = m_frame.picture();
    PixelRect rect{0, 0, std::min(2 + random(mostWidth) / 2 * 2, width),
                   std::min(2 + random(mostHeight) / 2 * 2, height)};
    const auto start = [this](int room) {
        const int where = random(4);
        return where == 0 ? 0 : where == 1 ? room / 2 * 2 : random(room + 1) / 2 * 2;
    };
    rect.x = start(width - rect.width);
    rect.y = start(height - rect.height);
    return rect;
}

void TrialScreen::touch(const PixelRect &rect) {
    m_changed.mark(rect);
}

void TrialScreen::write(const PixelRect &rect) {
    const int paper = 60 + random(180);
    const int ink = random(2) == 0 ? 20 : 235;
    for (int y = rect.y; y < rect.bottom(); ++y) {
        std::uint8_t *row = m_frame.luma() + y * m_frame.stride();
        for (int x = rect.x; x < rect.right(); ++x)
            row[x] = std::uint8_t((x * 7 + y / 3 * 13) % 11 < 3 ? ink : paper);
    }
    const int colour = 90 + random(80);
    for (int y = rect.y / 2; y < (rect.bottom() + 1) / 2; ++y)
        std::memset(m_frame.chroma() + y * m_frame.stride() + rect.x, colour, std::size_t(rect.width));
    touch(rect);
}

void TrialScreen::shift(const PixelRect &rect, int right, int down, const PixelRect &source) {
    const int rows = wholeBlocksOf(m_frame.picture().height);
    std::memcpy(m_before.luma(), m_frame.luma(), std::size_t(m_frame.stride()) * std::size_t(rows));
    std::memcpy(m_before.chroma(), m_frame.chroma(), std::size_t(m_frame.stride()) * std::size_t(rows / 2));
    const int first = std::max(rect.x, source.x + right);
    const int last = std::min(rect.right(), source.right() + right);
    if (first >= last)
        return;
    for (int y = rect.y; y < rect.bottom(); ++y) {
        const int from = std::clamp(y - down, source.y, source.bottom() - 1);
        std::memcpy(m_frame.luma() + y * m_frame.stride() + first,
                    m_before.luma() + from * m_frame.stride() + first - right, std::size_t(last - first));
        if (y % 2 == 0)
            std::memcpy(m_frame.chroma() + y / 2 * m_frame.stride() + first,
                        m_before.chroma() + from / 2 * m_frame.stride() + first - right,
                        std::size_t(last - first));
    }
    touch(rect);
}

void TrialScreen::film(const PixelRect &rect) {
    const int seed = random(1000);
    for (int y = rect.y; y < rect.bottom(); ++y) {
        std::uint8_t *row = m_frame.luma() + y * m_frame.stride();
        for (int x = rect.x; x < rect.right(); ++x)
            row[x] = std::uint8_t(60 + (x + 2 * y + seed) / 4 % 120 + int(m_random() >> 4 & 3));
    }
    for (int y = rect.y / 2; y < (rect.bottom() + 1) / 2; ++y) {
        std::uint8_t *row = m_frame.chroma() + y * m_frame.stride();
        for (int x = rect.x; x < rect.right(); ++x)
            row[x] = std::uint8_t(100 + (x / 2 + y + seed) / 8 % 50);
    }
    touch(rect);
}

void TrialScreen::repeatEdges() {
    const auto [width, height] = m_frame.picture();
    const int fullWidth = wholeBlocksOf(width);
    const int fullHeight = wholeBlocksOf(height);
    const std::ptrdiff_t stride = m_frame.stride();
    for (int y = 0; y < fullHeight; ++y) {
        std::uint8_t *row = m_frame.luma() + y * stride;
        if (y >= height)
            std::memcpy(row, row - stride, std::size_t(fullWidth));
        std::memset(row + width, row[width - 1], std::size_t(fullWidth - width));
    }
    const int colourWidth = (width + 1) / 2 * 2;
    for (int y = 0; y < fullHeight / 2; ++y) {
        std::uint8_t *row = m_frame.chroma() + y * stride;
        if (y >= (height + 1) / 2)
            std::memcpy(row, row - stride, std::size_t(fullWidth));
        for (int x = colourWidth; x < fullWidth; ++x)
            row[x] = row[x - 2];
    }
}

void TrialScreen::print(const PixelRect &rect) {
    constexpr int line = 24;
    constexpr int paper = 230;
    constexpr int grey = 128;
    for (int y = rect.y; y < rect.bottom(); ++y)
        std::memset(m_frame.luma() + y * m_frame.stride() + rect.x, paper, std::size_t(rect.width));
    for (int y = rect.y; y < rect.bottom(); y += line) {
        const int height = std::min(line / 2, rect.bottom() - y);
        for (int x = rect.x + random(20) * 2; x + 40 <= rect.right(); x += 50 + random(20) * 2)
            write({x, y, 10 + random(15) * 2, height});
    }
    for (int y = rect.y / 2; y < rect.bottom() / 2; ++y)
        std::memset(m_frame.chroma() + y * m_frame.stride() + rect.x, grey, std::size_t(rect.width));
    touch(rect);
}

void TrialScreen::openPage() {
    m_changed.clear();
    const auto [width, height] = m_frame.picture();
    m_page = {random(2) * random(width / 3) / 2 * 2, random(2) * random(height / 3) / 2 * 2, 0, 0};
    m_page.width = width - m_page.x - random(2) * random(width / 4) / 2 * 2;
    m_page.height = height - m_page.y - random(2) * random(height / 4) / 2 * 2;
    print(m_page);
    repeatEdges();
}

void TrialScreen::scrollPage(int down) {
    m_changed.clear();
    shift(m_page, 0, down, m_page);
    // What comes into sight is new.
    const int seen = std::min(std::abs(down), m_page.height) / 2 * 2;
    print({m_page.x, down > 0 ? m_page.y : m_page.bottom() - seen, m_page.width, seen});
    repeatEdges();
}

void TrialScreen::moveUnder(const PixelRect &part, int right, int down) {
    m_changed.clear();
    const auto [width, height] = m_frame.picture();
    const PixelRect everything{0, 0, width, height};
    shift(intersection(part, everything), right, down, everything);
    repeatEdges();
}

void TrialScreen::step() {
    m_changed.clear();
    const auto [width, height] = m_frame.picture();
    const PixelRect everything{0, 0, width, height};
    const int distance = (random(2) == 0 ? random(12) : random(25)) / 2 * 2;
    const int signedDistance = random(2) == 0 ? distance : -distance;
    PixelRect rect;
    switch (random(12)) {
    case 0: // nothing
        break;
    case 1: // a caret
        write(place(2, 18));
        break;
    case 2: // letters
    case 3:
        for (int i = random(4); i >= 0; --i)
            write(place(24, 20));
        break;
    case 4: // a line and a clock
        write(place(width, 24));
        write(place(60, 18));
        break;
    case 5: // scrolled
        rect = place(width, height);
        shift(rect, 0, 2 * signedDistance, rect);
        break;
    case 6: // as in moveUnder
        shift(place(width, 100), signedDistance, distance, everything);
        break;
    case 7:
        shift(place(width, 30), random(3) * 2, signedDistance, everything);
        break;
    case 8:
        shift(place(100, 40), signedDistance, -distance, everything);
        break;
    case 9:
        film(place(width / 2, height / 2));
        break;
    case 10: // two bands that touch
        film(place(width, 70));
        shift(place(width, 50), distance, -distance, everything);
        break;
    default: // everything
        if (++m_steps % 3 == 0)
            film(everything);
        else
            shift(everything, distance, random(2) == 0 ? 2 : -2, everything);
    }
    repeatEdges();
}

} // namespace vantrell

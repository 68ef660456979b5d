// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Scene.h"

#include "TestSupport/FrameCode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vantrell::bench {

namespace {

namespace framecode = testing::framecode;

std::uint32_t hash(std::uint32_t a, std::uint32_t b) {
    std::uint32_t h = a * 0x9e3779b1u ^ (b + 0x7f4a7c15u) * 0x85ebca6bu;
    h ^= h >> 15;
    h *= 0xc2b2ae35u;
    return h ^ h >> 13;
}

std::uint32_t grey(int value) {
    const auto v = std::uint32_t(std::clamp(value, 0, 255));
    return v | v << 8 | v << 16;
}

constexpr int glyphWidth = 9;
constexpr int glyphHeight = 18;

/// Letter-like marks: strokes with soft edges, different for each code.
void drawGlyph(Picture &picture, int x, int y, std::uint32_t code, std::uint32_t ink, std::uint32_t paper) {
    const auto mix = [&](int cover) {
        std::uint32_t result = 0;
        for (unsigned shift = 0; shift < 24; shift += 8) {
            const int a = int(ink >> shift & 0xff);
            const int b = int(paper >> shift & 0xff);
            result |= std::uint32_t(b + (a - b) * cover / 255) << shift;
        }
        return result;
    };
    picture.fill({x, y, glyphWidth, glyphHeight}, paper);
    const std::uint32_t shape = hash(code, 77);
    for (int stroke = 0; stroke < 3; ++stroke) {
        const std::uint32_t bits = shape >> (stroke * 9);
        const bool upright = bits & 1;
        const int at = 1 + int(bits >> 1 & 7) % (upright ? 6 : 10);
        for (int i = 3; i < (upright ? 15 : 8); ++i) {
            const int px = upright ? at : i - 2;
            const int py = upright ? i : at + 3;
            picture.row(y + py)[x + px] = mix(255);
            if (upright)
                picture.row(y + py)[x + px + 1] = mix(110);
            else
                picture.row(y + py + 1)[x + px] = mix(140);
        }
    }
}

void drawText(Picture &picture, const PixelRect &area, std::uint32_t seed, std::uint32_t ink,
              std::uint32_t paper) {
    int line = 0;
    for (int y = area.y; y + glyphHeight <= area.bottom(); y += glyphHeight, ++line) {
        const int columns = area.width / glyphWidth;
        const int length = int(hash(seed, std::uint32_t(line)) % std::uint32_t(columns));
        for (int i = 0; i < length; ++i) {
            const std::uint32_t code = hash(seed + std::uint32_t(line), std::uint32_t(i)) % 60;
            if (code > 8)
                drawGlyph(picture, area.x + i * glyphWidth, y, code, ink, paper);
        }
    }
}

/// Soft clouds of colour with a little grain, like a photograph.
void drawPhoto(Picture &picture, const PixelRect &area, std::uint32_t seed) {
    for (int y = 0; y < area.height; ++y) {
        std::uint32_t *to = picture.row(area.y + y) + area.x;
        for (int x = 0; x < area.width; ++x) {
            const double u = x * 0.013 + seed;
            const double v = y * 0.017 - seed;
            const double a = std::sin(u + 1.7 * std::sin(v)) + std::sin(v * 1.3 + std::cos(u * 0.7));
            const double b = std::sin(u * 2.1 - v) + std::cos(v * 0.6 + u);
            const int grain = int(hash(std::uint32_t(x) + seed, std::uint32_t(y)) % 5) - 2;
            const auto channel = [&](double value) {
                return std::uint32_t(std::clamp(int(128 + 55 * value) + grain, 0, 255));
            };
            to[x] = channel(a * 0.8) | channel(b * 0.7) << 8 | channel((a + b) * 0.5) << 16;
        }
    }
}

void drawDesktop(Picture &picture) {
    for (int y = 0; y < picture.size.height; ++y)
        std::fill_n(picture.row(y), picture.size.width,
                    grey(40 + y * 30 / picture.size.height) | std::uint32_t(30 * y / picture.size.height));
    const PixelRect editor{100, 80, std::min(1000, picture.size.width - 200),
                           std::min(800, picture.size.height - 160)};
    picture.fill(editor, 0xf7f7f4);
    picture.fill({editor.x, editor.y, editor.width, 28}, 0x3a4a5c);
    drawText(picture, {editor.x + 12, editor.y + 40, editor.width - 24, editor.height - 60}, 5, 0x202428,
             0xf7f7f4);
    if (picture.size.width > 1500)
        drawPhoto(picture, {1180, 140, 600, 420}, 3);
}

class StillScene final : public Scene {
public:
    double rate() const override { return 2; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int n, Picture &picture) override {
        const PixelRect caret{300, 604, 2, 18};
        picture.fill(caret, n % 2 ? 0x101010 : 0xf7f7f4);
        return {drawNumber(n, picture), caret};
    }
};

class TypingScene final : public Scene {
public:
    double rate() const override { return 12; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int n, Picture &picture) override {
        constexpr int columns = 90;
        constexpr int top = 500;
        const int line = (n / columns) % 18;
        const int y = top + line * glyphHeight;
        const int x = 120 + (n % columns) * glyphWidth;
        std::vector<PixelRect> changed{drawNumber(n, picture)};
        if (n % columns == 0) {
            picture.fill({112, y, 980, glyphHeight}, 0xf7f7f4);
            changed.push_back({112, y, 980, glyphHeight});
        }
        drawGlyph(picture, x, y, hash(std::uint32_t(n), 3) % 60, 0x202428, 0xf7f7f4);
        picture.fill({x + glyphWidth, y, 2, glyphHeight}, 0x101010);
        changed.push_back({x, y, glyphWidth + 2, glyphHeight});
        return changed;
    }
};

class VideoScene final : public Scene {
public:
    explicit VideoScene(PixelSize screen)
        : m_area{(screen.width - 1280) / 2, (screen.height - 720) / 2, 1280, 720} {
        Picture film({1280 + 400, 720 + 200});
        drawPhoto(film, {0, 0, film.size.width, film.size.height}, 11);
        for (int i = 0; i < frames; ++i) {
            Picture frame({1280, 720});
            const double dx = 150 + 140 * std::sin(i * 0.045);
            const double dy = 90 + 80 * std::cos(i * 0.031);
            const int fx = int((dx - std::floor(dx)) * 256);
            for (int y = 0; y < 720; ++y) {
                const std::uint32_t *from = film.row(y + int(dy)) + int(dx);
                std::uint32_t *to = frame.row(y);
                for (int x = 0; x < 1280; ++x) {
                    std::uint32_t pixel = 0;
                    const int grain = int(hash(std::uint32_t(x * 7 + i * 131), std::uint32_t(y)) % 3) - 1;
                    for (unsigned shift = 0; shift < 24; shift += 8) {
                        const int a = int(from[x] >> shift & 0xff);
                        const int b = int(from[x + 1] >> shift & 0xff);
                        pixel |= std::uint32_t(std::clamp(a + (b - a) * fx / 256 + grain, 0, 255)) << shift;
                    }
                    to[x] = pixel;
                }
            }
            const int ball = 100 + i * 9;
            frame.fill({ball, 300 + int(80 * std::sin(i * 0.2)), 90, 90}, 0xe8c020);
            m_frames.push_back(std::move(frame));
        }
    }
    double rate() const override { return 30; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int n, Picture &picture) override {
        // Forth and back, so that it never jumps.
        const int step = n % (2 * frames - 2);
        const Picture &frame = m_frames[std::size_t(step < frames ? step : 2 * frames - 2 - step)];
        for (int y = 0; y < m_area.height; ++y)
            std::memcpy(picture.row(m_area.y + y) + m_area.x, frame.row(y), std::size_t(m_area.width) * 4);
        return {drawNumber(n, picture), m_area};
    }

private:
    static constexpr int frames = 60;
    PixelRect m_area;
    std::vector<Picture> m_frames;
};

class ScrollScene final : public Scene {
public:
    explicit ScrollScene(PixelSize screen)
        : m_area{(screen.width - 1200) / 2, std::max(60, (screen.height - 900) / 2), 1200, 900},
          m_page({1200, pageHeight}) {
        m_page.fill({0, 0, 1200, pageHeight}, 0xffffff);
        for (int y = 0; y + 700 < pageHeight; y += 700) {
            drawText(m_page, {60, y + 10, 1080, 400}, std::uint32_t(y), 0x222222, 0xffffff);
            drawPhoto(m_page, {200, y + 430, 500, 240}, std::uint32_t(y));
        }
        for (int y = 0; y < 900; ++y)
            std::memcpy(m_page.row(pageHeight - 900 + y), m_page.row(y), 1200 * 4);
    }
    double rate() const override { return 60; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int n, Picture &picture) override {
        constexpr int pixelsPerFrame = 7;
        const int top = n * pixelsPerFrame % (pageHeight - 900);
        for (int y = 0; y < m_area.height; ++y)
            std::memcpy(picture.row(m_area.y + y) + m_area.x, m_page.row(top + y),
                        std::size_t(m_area.width) * 4);
        return {drawNumber(n, picture), m_area};
    }

private:
    static constexpr int pageHeight = 7900;
    PixelRect m_area;
    Picture m_page;
};

class MotionScene final : public Scene {
public:
    explicit MotionScene(PixelSize screen)
        : m_screen(screen), m_wall({screen.width * 2, screen.height + 400}) {
        drawPhoto(m_wall, {0, 0, m_wall.size.width, m_wall.size.height}, 23);
        for (int i = 0; i < 12; ++i)
            drawText(m_wall, {i * m_wall.size.width / 12, 100 + (i * 331) % 700, 400, 200}, std::uint32_t(i),
                     0xffffff, 0x303050);
    }
    double rate() const override { return 60; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int n, Picture &picture) override {
        const PixelRect part = wallPart(n);
        for (int y = 0; y < part.height; ++y)
            std::memcpy(picture.row(y), m_wall.row(y + part.y) + part.x, std::size_t(part.width) * 4);
        drawNumber(n, picture);
        return {{0, 0, picture.size.width, picture.size.height}};
    }

    const Picture *wall() const override { return &m_wall; }
    PixelRect wallPart(int n) const override {
        const int range = m_wall.size.width - m_screen.width - 1;
        const int step = n * 9 % (2 * range);
        const int x = step < range ? step : 2 * range - step;
        return {x, int(190 + 180 * std::sin(n * 0.02)), m_screen.width, m_screen.height};
    }

private:
    PixelSize m_screen;
    Picture m_wall;
};

class PointerScene final : public Scene {
public:
    double rate() const override { return 60; }
    void background(Picture &picture) override { drawDesktop(picture); }
    std::vector<PixelRect> draw(int, Picture &) override { return {}; }
    bool movesPointer() const override { return true; }
};

} // namespace

void Picture::fill(const PixelRect &rect, std::uint32_t colour) {
    const PixelRect part = intersection(rect, {0, 0, size.width, size.height});
    for (int y = part.y; y < part.bottom(); ++y)
        std::fill_n(row(y) + part.x, part.width, colour);
}

PixelRect Scene::drawNumber(int n, Picture &picture) {
    framecode::draw(std::uint32_t(n), reinterpret_cast<std::uint8_t *>(picture.row(codeY) + codeX),
                    std::ptrdiff_t(picture.size.width) * 4);
    return {codeX, codeY, framecode::width, framecode::height};
}

Point pointerAt(int n, PixelSize screen) {
    // Ellipses of changing size: it never stands still and is nowhere twice within a second.
    const double t = n * 0.05;
    const double radius = 0.35 + 0.1 * std::cos(n * 0.013);
    return {std::floor(screen.width * (0.5 + radius * std::cos(t))),
            std::floor(screen.height * (0.5 + radius * std::sin(t)))};
}

std::vector<std::string> Scene::names() {
    return {"still", "typing", "video", "scroll", "motion", "pointer"};
}

std::unique_ptr<Scene> Scene::make(const std::string &name, PixelSize screen) {
    if (name == "still")
        return std::make_unique<StillScene>();
    if (name == "typing")
        return std::make_unique<TypingScene>();
    if (name == "video")
        return std::make_unique<VideoScene>(screen);
    if (name == "scroll")
        return std::make_unique<ScrollScene>(screen);
    if (name == "motion")
        return std::make_unique<MotionScene>(screen);
    if (name == "pointer")
        return std::make_unique<PointerScene>();
    return nullptr;
}

} // namespace vantrell::bench

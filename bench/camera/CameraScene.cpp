// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace vantrell::bench {

namespace {

constexpr int noiseSide = 4096;
constexpr double framesPerSecond = 30;

std::uint8_t clamped(double value) {
    return std::uint8_t(std::clamp(value, 16.0, 235.0));
}

/// 0 outside, 1 inside, soft over some pixels.
double soft(double distance, double softness) {
    return std::clamp(0.5 - distance / softness, 0.0, 1.0);
}

/// Smooth waves of several sizes: wallpaper, curtains, the folds of cloth.
double waves(double x, double y, double scale) {
    return std::sin(x / scale) * std::cos(y / scale * 0.8) +
           0.5 * std::sin(x / scale * 2.3 + y / scale * 1.7) +
           0.25 * std::sin(x / scale * 5.1 - y / scale * 4.3);
}

} // namespace

CameraScene::CameraScene(PixelSize size) : m_size(size), m_noise(std::size_t(noiseSide) * 1024) {
    std::mt19937 random(7);
    std::normal_distribution<float> sensor(0, 4.2F);
    std::vector<float> raw(m_noise.size());
    for (float &value : raw)
        value = sensor(random);
    // What is left of it after the sensor's colours were put together: half as strong, and smeared.
    for (std::size_t i = noiseSide + 1; i + noiseSide + 1 < raw.size(); ++i)
        m_noise[i] = std::int8_t(std::lround(
            (raw[i] * 2 + raw[i - 1] + raw[i + 1] + raw[i - noiseSide] + raw[i + noiseSide]) / 6 * 1.1F));
    const std::size_t pixels = std::size_t(size.width) * std::size_t(size.height);
    m_room = {std::vector<std::uint8_t>(pixels), std::vector<std::uint8_t>(pixels / 4),
              std::vector<std::uint8_t>(pixels / 4)};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            double light = 110 + 50.0 * x / size.width - 30.0 * y / size.height;
            light += 4 * waves(x, y, 37);
            // A shelf with books.
            const bool isShelf = x > size.width * 6 / 10 && y < size.height * 6 / 10;
            if (isShelf) {
                const int book = x / 23 * 7 + y / 150 * 13;
                light = 60 + book * 37 % 110 + 12 * std::cos(x % 23 / 23.0 * 6.28) - (y % 150 < 8 ? 40 : 0);
            }
            m_room.y[std::size_t(y * size.width + x)] = clamped(light);
            if (x % 2 == 0 && y % 2 == 0) {
                const std::size_t at = std::size_t(y / 2 * (size.width / 2) + x / 2);
                m_room.cb[at] = clamped(122 + (isShelf ? (x / 23 * 31) % 30 - 15 : 3 * waves(x, y, 90)));
                m_room.cr[at] = clamped(131 + (isShelf ? (x / 23 * 17) % 26 - 13 : 2 * waves(y, x, 110)));
            }
        }
}

CameraScene::Picture CameraScene::paint(int number) const {
    const double t = number / framesPerSecond;
    const auto [width, height] = m_size;
    const double scale = height / 720.0;
    const double headX = width * 0.42 + scale * (22 * std::sin(t * 1.3) + 9 * std::sin(t * 3.1));
    const double headY = height * 0.44 + scale * (10 * std::sin(t * 2.1) + 3 * std::sin(t * 5.7));
    const double mouth = scale * (7 + 7 * std::abs(std::sin(t * 8.3) * std::sin(t * 2.9)));
    const double flicker = 0.8 * std::sin(t * 9.1);
    std::mt19937 random{unsigned(number)};
    const std::size_t noiseStart = random() % (m_noise.size() - std::size_t(noiseSide) * 1000);
    Picture picture = m_room;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double dx = (x - headX) / scale;
            const double dy = (y - headY) / scale;
            const std::size_t at = std::size_t(y * width + x);
            double light = m_room.y[at];
            // Shoulders, then the head over them.
            const double body = soft(std::hypot(dx / 1.9, (dy - 330) / 1.1) - 190, 10) * (dy > 60 ? 1 : 0);
            light += body * (70 + 9 * waves(dx, dy, 26) - light);
            const double head = soft(std::hypot(dx, dy / 1.3) - 125, 7);
            const double face = 168 - 0.16 * dx - 0.05 * dy + 3 * waves(dx, dy, 9) -
                                60 * soft(dy + 95 + 8 * std::sin(dx / 9), 16) -
                                70 * soft(std::hypot((std::abs(dx) - 45), (dy + 25) * 1.7) - 17, 6) -
                                55 * soft(std::hypot(dx / 3.2, (dy - 68)) - mouth / scale, 5) -
                                18 * soft(std::hypot(dx * 1.6, (dy - 20) / 2.2) - 14, 9);
            light += head * (face - light);
            // Dark parts are noisier, as they are with small sensors.
            const double strength = 1.25 - light / 400;
            const std::size_t noiseAt =
                (noiseStart + std::size_t(y % 1000) * noiseSide + std::size_t(x)) % m_noise.size();
            picture.y[at] = clamped(light + flicker + m_noise[noiseAt] * strength);
            if (x % 2 == 0 && y % 2 == 0) {
                const std::size_t half = std::size_t(y / 2 * (width / 2) + x / 2);
                const double noise = m_noise[(noiseAt + 77777) % m_noise.size()] * 0.4;
                const double other = m_noise[(noiseAt + 155555) % m_noise.size()] * 0.4;
                picture.cb[half] = clamped(m_room.cb[half] + body * (138 - m_room.cb[half]) +
                                           head * (108 - 138 * body - m_room.cb[half] * (1 - body)) + noise);
                picture.cr[half] = clamped(m_room.cr[half] + body * (118 - m_room.cr[half]) +
                                           head * (152 - 118 * body - m_room.cr[half] * (1 - body)) + other);
            }
        }
    return picture;
}

std::vector<std::uint8_t> CameraScene::packed(const Picture &picture) const {
    std::vector<std::uint8_t> pixels(picture.y.size() * 2);
    for (int y = 0; y < m_size.height; ++y)
        for (int x = 0; x < m_size.width; x += 2) {
            const std::size_t at = std::size_t(y * m_size.width + x);
            const std::size_t half = std::size_t(y / 2 * (m_size.width / 2) + x / 2);
            pixels[at * 2] = picture.y[at];
            pixels[at * 2 + 1] = picture.cb[half];
            pixels[at * 2 + 2] = picture.y[at + 1];
            pixels[at * 2 + 3] = picture.cr[half];
        }
    return pixels;
}

} // namespace vantrell::bench

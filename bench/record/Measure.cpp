// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Measure.h"

#include "Ssim.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

namespace vantrell::bench {

namespace {

using testing::MoviePicture;

/// What a recorder with that matrix makes of the drawn picture.
std::vector<std::uint8_t> lumaOf(const Picture &picture, double red, double green, double blue) {
    std::vector<std::uint8_t> luma(picture.data.size());
    std::ranges::transform(picture.data, luma.begin(), [&](std::uint32_t pixel) {
        const double value = red * (pixel >> 16 & 0xff) + green * (pixel >> 8 & 0xff) + blue * (pixel & 0xff);
        return std::uint8_t(std::lround(16 + value * 219 / 255));
    });
    return luma;
}

/// Recorders differ in the matrix; each is judged by the one that it evidently used.
double bestSsim(const Picture &drawn, const MoviePicture &seen) {
    const auto score = [&](const std::vector<std::uint8_t> &luma) {
        return ssim(luma.data(), drawn.size.width, seen.luma, seen.lumaStride, drawn.size.width,
                    drawn.size.height);
    };
    return std::max(score(lumaOf(drawn, 0.2126, 0.7152, 0.0722)), score(lumaOf(drawn, 0.299, 0.587, 0.114)));
}

/// The frame at whose place the desktop looks most as if the pointer were there.
std::optional<int> pointerFrame(const MoviePicture &picture, const std::vector<std::uint8_t> &background,
                                PixelSize screen, int last) {
    // The pointer's hot spot is its middle. It is black with a white border.
    constexpr int reach = 6;
    constexpr int leastDifference = 1500;
    constexpr int mostLostAtOnce = 12;
    int best = -1;
    int bestDifference = leastDifference;
    for (int n = last + 1; n <= last + mostLostAtOnce; ++n) {
        const Point place = pointerAt(n, screen);
        int difference = 0;
        for (int y = int(place.y) - reach; y <= int(place.y) + reach; ++y) {
            for (int x = int(place.x) - reach; x <= int(place.x) + reach; ++x)
                difference += std::abs(int(picture.luma[y * picture.lumaStride + x]) -
                                       int(background[std::size_t(y * screen.width + x)]));
        }
        if (difference > bestDifference) {
            bestDifference = difference;
            best = n;
        }
    }
    return best < 0 ? std::nullopt : std::optional(best);
}

struct Sighting {
    double shown;
    double seen;
};

void judgeTimes(const std::vector<Sighting> &sightings, MovieFigures &figures) {
    if (sightings.size() < 3)
        return;
    std::vector<double> offsets;
    for (const Sighting &sighting : sightings)
        offsets.push_back(sighting.seen - sighting.shown);
    auto sorted = offsets;
    std::ranges::sort(sorted);
    const double median = sorted[sorted.size() / 2];
    std::vector<double> errors;
    for (const double offset : offsets)
        errors.push_back(std::abs(offset - median));
    std::ranges::sort(errors);
    figures.timeError95 = errors[errors.size() * 95 / 100] * 1000;

    double meanTime = 0;
    double meanOffset = 0;
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        meanTime += sightings[i].shown / double(offsets.size());
        meanOffset += offsets[i] / double(offsets.size());
    }
    double product = 0;
    double square = 0;
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        product += (sightings[i].shown - meanTime) * (offsets[i] - meanOffset);
        square += (sightings[i].shown - meanTime) * (sightings[i].shown - meanTime);
    }
    figures.driftPpm = square > 0 ? product / square * 1e6 : 0;
    for (std::size_t i = 1; i < sightings.size(); ++i)
        figures.longestGap = std::max(figures.longestGap, sightings[i].seen - sightings[i - 1].seen);
}

} // namespace

MovieFigures measureMovie(const std::filesystem::path &movie, const std::string &sceneName, PixelSize screen,
                          const std::map<int, double> &shown) {
    MovieFigures figures;
    std::error_code error;
    figures.megabytes = double(std::filesystem::file_size(movie, error)) / 1e6;
    const auto scene = Scene::make(sceneName, screen);
    Picture drawn(screen);
    scene->background(drawn);
    const std::vector<std::uint8_t> background = lumaOf(drawn, 0.2126, 0.7152, 0.0722);
    int drawnNumber = 0;
    int lastNumber = 0;
    int sampled = 0;
    double sum = 0;
    const int sampleEvery = std::max(1, int(shown.size()) / 24);
    std::vector<Sighting> sightings;

    figures.duration = testing::forEachPicture(movie, [&](const MoviePicture &picture) {
        std::optional<int> number;
        if (scene->movesPointer()) {
            number = pointerFrame(picture, background, screen, lastNumber);
        } else {
            const auto code = testing::framecode::read(
                picture.luma + Scene::codeY * picture.lumaStride + Scene::codeX, picture.lumaStride);
            number = code ? std::optional(int(*code)) : std::nullopt;
        }
        if (!number || *number <= lastNumber || !shown.contains(*number))
            return;
        lastNumber = *number;
        sightings.push_back({shown.at(*number), picture.seconds});
        if (lastNumber / sampleEvery == sampled)
            return;
        sampled = lastNumber / sampleEvery;
        while (drawnNumber < lastNumber)
            scene->draw(++drawnNumber, drawn);
        sum += bestSsim(drawn, picture);
        figures.ssim += 1;
    });
    figures.ssim = figures.ssim > 0 ? sum / figures.ssim : 0;
    figures.capturedShare = shown.empty() ? 0 : double(sightings.size()) / double(shown.size());
    judgeTimes(sightings, figures);
    return figures;
}

} // namespace vantrell::bench

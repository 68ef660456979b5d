// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Measure.h"

#include "Ssim.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <optional>
#include <ranges>
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

double ssimOf(const std::vector<std::uint8_t> &drawn, PixelSize screen, const MoviePicture &seen,
              const PixelRect &place) {
    return ssim(drawn.data() + std::ptrdiff_t(place.y) * screen.width + place.x, screen.width,
                seen.luma + place.y * seen.lumaStride + place.x, seen.lumaStride, place.width, place.height);
}

struct Likeness {
    double whole = 0;
    /// Of what is new.
    double fresh = 1;
};

/// Recorders differ in the matrix; each is judged by the one that it evidently used.
Likeness likeness(const Picture &drawn, const MoviePicture &seen, const std::vector<PixelRect> &fresh) {
    Likeness best;
    const PixelRect screen{0, 0, drawn.size.width, drawn.size.height};
    for (const auto &luma : {lumaOf(drawn, 0.2126, 0.7152, 0.0722), lumaOf(drawn, 0.299, 0.587, 0.114)}) {
        const double whole = ssimOf(luma, drawn.size, seen, screen);
        if (whole <= best.whole)
            continue;
        best.whole = whole;
        double sum = 0;
        double weights = 0;
        for (const PixelRect &place : fresh) {
            // With what stands around it, and at least one block.
            const PixelRect wide =
                intersection({place.x - 8, place.y - 8, place.width + 16, place.height + 16}, screen);
            const double weight = double(wide.width) * wide.height;
            sum += weight * ssimOf(luma, drawn.size, seen, wide);
            weights += weight;
        }
        best.fresh = weights > 0 ? sum / weights : 1;
    }
    return best;
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
    // What the frames of the last second have changed.
    const auto isNew = std::size_t(std::max(1.0, scene->rate()));
    std::deque<std::vector<PixelRect>> changes;

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
        while (drawnNumber < lastNumber) {
            changes.push_back(scene->draw(++drawnNumber, drawn));
            if (changes.size() > isNew)
                changes.pop_front();
        }
        std::vector<PixelRect> fresh;
        for (const PixelRect &place : changes | std::views::join) {
            if (std::ranges::find(fresh, place) == fresh.end())
                fresh.push_back(place);
        }
        const Likeness alike = likeness(drawn, picture, fresh);
        sum += alike.whole;
        figures.ssim += 1;
        figures.lowestFreshSsim = std::min(figures.lowestFreshSsim, alike.fresh);
    });
    figures.ssim = figures.ssim > 0 ? sum / figures.ssim : 0;
    figures.capturedShare = shown.empty() ? 0 : double(sightings.size()) / double(shown.size());
    judgeTimes(sightings, figures);
    return figures;
}

} // namespace vantrell::bench

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Offsets.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace vantrell::bench {

namespace {

/// Two beeps are never this near to each other.
constexpr double reach = 0.4;
constexpr double promised = 0.020;
constexpr double minute = 60;
constexpr std::size_t listed = 12;

struct Offset {
    std::uint32_t number;
    double movieTime;
    double seconds;
};

double median(std::vector<double> values) {
    if (values.empty())
        return std::nan("");
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double largest(const std::vector<double> &values) {
    double result = 0;
    for (const double value : values)
        result = std::max(result, std::abs(value));
    return result;
}

std::vector<double> between(const std::vector<Offset> &offsets, double from, double to) {
    std::vector<double> seconds;
    for (const Offset &offset : offsets)
        if (offset.movieTime >= from && offset.movieTime < to)
            seconds.push_back(offset.seconds);
    return seconds;
}

/// How far the onset next to a moment is from it.
std::optional<double> distance(const std::vector<double> &onsets, double moment) {
    const auto after = std::ranges::lower_bound(onsets, moment);
    std::optional<double> nearest;
    for (auto onset = after == onsets.begin() ? after : after - 1; onset != onsets.end(); ++onset) {
        if (!nearest || std::abs(*onset - moment) < std::abs(*nearest))
            nearest = *onset - moment;
        if (*onset > moment)
            break;
    }
    return nearest && std::abs(*nearest) <= reach ? nearest : std::nullopt;
}

} // namespace

void printOffsets(const MovieSigns &signs, const MovieSigns::Track &track, std::span<const Flash> flashes,
                  std::size_t output) {
    int unknown = 0;
    std::vector<std::uint32_t> missing;
    std::vector<double> made;
    std::vector<Offset> offsets;
    for (const Flash &flash : flashes) {
        const auto seen = signs.flashes.find(flash.number);
        if (seen == signs.flashes.end())
            continue;
        if (!flash.heardAt[output]) {
            ++unknown;
            continue;
        }
        const double apart = *flash.heardAt[output] - flash.shownAt;
        if (const auto found = distance(track.onsets, seen->second + apart)) {
            made.push_back(apart);
            offsets.push_back({flash.number, seen->second, *found});
        } else {
            missing.push_back(flash.number);
        }
    }
    const auto all = between(offsets, 0, signs.durationSeconds);
    std::printf("%s: %zu flashes, %zu beeps found, %zu not, %d of which nobody knows when they were made\n",
                track.name.c_str(), signs.flashes.size(), offsets.size(), missing.size(), unknown);
    std::printf("  beep after flash, in the movie: median %+.1f ms, largest %.1f ms, first minute %+.1f ms, "
                "last minute %+.1f ms\n",
                median(all) * 1000, largest(all) * 1000, median(between(offsets, 0, minute)) * 1000,
                median(between(offsets, signs.durationSeconds - minute, signs.durationSeconds)) * 1000);
    std::printf("  taken off, as they were made: median %+.1f ms, largest %.1f ms\n", median(made) * 1000,
                largest(made) * 1000);
    std::ranges::sort(
        offsets, [](const Offset &a, const Offset &b) { return std::abs(a.seconds) > std::abs(b.seconds); });
    for (std::size_t i = 0; i < std::min(listed, offsets.size()) && std::abs(offsets[i].seconds) > promised;
         ++i)
        std::printf("  flash %u at %.2f s: %+.1f ms\n", offsets[i].number, offsets[i].movieTime,
                    offsets[i].seconds * 1000);
    for (const std::uint32_t number : missing)
        std::printf("  flash %u at %.2f s: no beep\n", number, signs.flashes.at(number));
}

} // namespace vantrell::bench

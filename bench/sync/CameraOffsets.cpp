// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraOffsets.h"

#include "TestSupport/ClockFace.h"
#include "TestSupport/Movie/NumberedPictures.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <vector>

namespace vantrell::bench {

namespace {

constexpr double mostMilliseconds = 20;
/// Of its own: nearer to a flash the camera has no picture.
constexpr double nearMilliseconds = 60;

struct Apart {
    double seconds;
    double milliseconds;
};

double anchorOf(const nlohmann::json &capture) {
    std::ifstream sidecar(capture["sidecar"].get<std::string>());
    return nlohmann::json::parse(sidecar)["recording"]["anchorHostTime"].get<double>();
}

double median(std::vector<Apart> all, double from, double until) {
    std::erase_if(all, [&](const Apart &one) { return one.seconds < from || one.seconds > until; });
    if (all.empty())
        return std::nan("");
    const auto middle = all.begin() + std::ptrdiff_t(all.size() / 2);
    std::ranges::nth_element(all, middle, {}, &Apart::milliseconds);
    return middle->milliseconds;
}

/// For how long the camera's movie shows one picture, and how the two movies are in step after it.
void printLongestStill(const std::vector<testing::NumberedPicture> &pictures, double offset,
                       const std::vector<Apart> &all) {
    const auto stillFor = [&](std::size_t i) { return pictures[i + 1].seconds - pictures[i].seconds; };
    std::size_t longest = 0;
    for (std::size_t i = 0; i + 1 < pictures.size(); ++i)
        if (stillFor(i) > stillFor(longest))
            longest = i;
    if (pictures.size() < 2)
        return;
    const double goesOn = pictures[longest + 1].seconds + offset;
    double most = 0;
    for (const Apart &one : all)
        if (one.seconds > goesOn)
            most = std::max(most, std::abs(one.milliseconds));
    std::printf(
        "camera: one picture is shown for %.2f s, while its clock went on by %.2f s; afterwards at most "
        "%.1f ms apart\n",
        stillFor(longest),
        testing::clockface::between(pictures[longest].number, pictures[longest + 1].number) / 1000, most);
}

} // namespace

void printCameraOffsets(const nlohmann::json &recording, const MovieSigns &signs,
                        std::span<const Flash> flashes) {
    using testing::clockface::between;
    const double offset = anchorOf(recording["camera"]) - anchorOf(recording);
    const auto pictures = testing::numberedPicturesIn(recording["camera"]["file"].get<std::string>());
    std::vector<Apart> all;
    for (const Flash &flash : flashes) {
        const auto shown = signs.flashes.find(flash.number);
        if (shown == signs.flashes.end())
            continue;
        const std::uint32_t moment = testing::clockface::numberAt(flash.shownAt);
        const auto nearest = std::ranges::min_element(pictures, {}, [&](const auto &picture) {
            // The numbers begin again: a picture far off in the movie is none.
            return std::abs(between(picture.number, moment)) +
                   (std::abs(picture.seconds + offset - shown->second) > 60 ? 1e9 : 0);
        });
        if (nearest == pictures.end() || std::abs(between(nearest->number, moment)) > nearMilliseconds)
            continue;
        all.push_back({shown->second, (nearest->seconds + offset - shown->second) * 1000 +
                                          between(nearest->number, moment)});
    }
    if (all.empty()) {
        std::printf("camera: none of its pictures lies at a flash\n");
        return;
    }
    const auto [least, most] = std::ranges::minmax(all, {}, &Apart::milliseconds);
    const double end = signs.durationSeconds;
    std::printf("camera: %zu of %zu flashes compared; later than the screen by %+.1f ms (median), %+.1f to "
                "%+.1f; first minute %+.1f, last minute %+.1f; %td beyond %.0f ms\n",
                all.size(), signs.flashes.size(), median(all, 0, end), least.milliseconds, most.milliseconds,
                median(all, 0, 60), median(all, end - 60, end),
                std::ranges::count_if(
                    all, [](const Apart &one) { return std::abs(one.milliseconds) > mostMilliseconds; }),
                mostMilliseconds);
    printLongestStill(pictures, offset, all);
}

} // namespace vantrell::bench

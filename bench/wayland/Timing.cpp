// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Timing.h"

#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::bench {

namespace {

constexpr double picturesASecond = 60;
/// Seconds. What is farther from every picture of the movie is not in it: half of what is between two.
constexpr double samePicture = 0.008;
/// The first and the last picture are cut by the recording's ends.
constexpr double edge = 0.2;

/// The movie's pictures in host seconds.
std::vector<double> picturesOf(const nlohmann::json &told) {
    std::ifstream sidecar(told.at("sidecar").get<std::string>());
    const double begin = nlohmann::json::parse(sidecar).at("recording").at("anchorHostTime").get<double>();
    std::vector<double> times;
    testing::forEachPicture(told.at("file").get<std::string>(), [&](const testing::MoviePicture &picture) {
        times.push_back(begin + picture.seconds);
    });
    return times;
}

double nearest(const std::vector<double> &times, double time) {
    const auto after = std::ranges::lower_bound(times, time);
    double distance = after == times.end() ? 1e9 : *after - time;
    if (after != times.begin())
        distance = std::min(distance, time - *std::prev(after));
    return distance;
}

} // namespace

int measureTiming(double seconds) {
    testing::SwaySession session({.notesPictures = true});
    session.showNumbers(picturesASecond);
    testing::CaptureProgram program;
    for (const auto &[name, value] : session.environment())
        if (name != "HOME")
            program.set(name, value);
    program.set("VANTRELL_BACKEND", "wayland");
    program.start({"record", "--cursor", "drawn", "--json"});
    program.waitForLog("recording started");
    testing::eventually([] { return false; }, std::chrono::milliseconds(int(seconds * 1000)));
    program.signal(SIGINT);
    const auto ended = program.finish();
    if (ended.exitCode != 0) {
        std::fprintf(stderr, "the recording failed: %s\n", ended.errors.c_str());
        return 1;
    }
    const std::vector<double> movie = picturesOf(ended.json());
    std::size_t sent = 0;
    std::vector<double> errors;
    for (const double stamp : session.sentPictures()) {
        if (movie.empty() || stamp < movie.front() + edge || stamp > movie.back() - edge)
            continue;
        ++sent;
        if (const double error = nearest(movie, stamp); error < samePicture)
            errors.push_back(error * 1000);
    }
    if (errors.empty()) {
        std::fprintf(stderr, "none of the pictures that were sent is in the movie\n");
        return 1;
    }
    std::ranges::sort(errors);
    const auto at = [&](double part) { return errors[std::size_t(part * double(errors.size() - 1))]; };
    std::printf("timing  %zu pictures sent, %.2f %% of them in the movie; from the compositor's time stamps: "
                "median %.3f ms, 95 %% within %.3f ms, all within %.3f ms\n",
                sent, 100 * double(errors.size()) / double(sent), at(0.5), at(0.95), errors.back());
    return 0;
}

} // namespace vantrell::bench

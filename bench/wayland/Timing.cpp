// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Timing.h"

#include "CastListener.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <vector>

namespace vantrell::bench {

namespace {

using namespace std::chrono_literals;

// Where the scene's number stands on the screen.
constexpr int codeX = 32;
constexpr int codeY = 48;
constexpr double picturesASecond = 60;

struct Recorded {
    /// When the movie shows each number first, in host seconds.
    std::map<std::uint32_t, double> shown;
    double begin = 0;
    double end = 0;
};

Recorded readMovie(const nlohmann::json &told) {
    Recorded recorded;
    std::ifstream sidecar(told.at("sidecar").get<std::string>());
    recorded.begin = nlohmann::json::parse(sidecar).at("recording").at("anchorHostTime").get<double>();
    const double duration = testing::forEachPicture(
        told.at("file").get<std::string>(), [&](const testing::MoviePicture &picture) {
            const auto number = testing::framecode::read(picture.luma + codeY * picture.lumaStride + codeX,
                                                         picture.lumaStride);
            if (number)
                recorded.shown.emplace(*number, recorded.begin + picture.seconds);
        });
    recorded.end = recorded.begin + duration;
    return recorded;
}

} // namespace

int measureTiming(double seconds) {
    testing::SwaySession session;
    session.showNumbers(picturesASecond);
    const CastListener listener(session.bus().connection(), codeX, codeY);
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
    const Recorded movie = readMovie(ended.json());
    std::vector<double> errors;
    std::size_t sent = 0;
    // The first and the last picture are cut by the recording's ends.
    constexpr double edge = 0.2;
    for (const auto &[number, stamp] : listener.heard()) {
        if (stamp < movie.begin + edge || stamp > movie.end - edge)
            continue;
        ++sent;
        if (const auto found = movie.shown.find(number); found != movie.shown.end())
            errors.push_back(std::abs(found->second - stamp) * 1000);
    }
    if (errors.empty()) {
        std::fprintf(stderr, "of %zu pictures sent and %zu in the movie none is the same\n",
                     listener.heard().size(), movie.shown.size());
        return 1;
    }
    std::ranges::sort(errors);
    const auto at = [&](double part) { return errors[std::size_t(part * double(errors.size() - 1))]; };
    std::printf("timing  %zu pictures sent, %.2f %% of them in the movie; from the compositor's time stamps: "
                "median %.2f ms, 95 %% within %.2f ms, all within %.2f ms\n",
                sent, 100 * double(errors.size()) / double(sent), at(0.5), at(0.95), errors.back());
    return 0;
}

} // namespace vantrell::bench

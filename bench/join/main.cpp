// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Joins ten minutes of segments with our joiner and with the ffmpeg command, in turn, and prints time, CPU,
// memory and how sound and picture fit at the last joint.
//
//     bench_join [ROUNDS]          default 5; TMPDIR says where the files go (about 800 MB)

#include "Media/Movie/MovieJoin.h"
#include "Segments.h"
#include "Witness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vantrell;
using namespace vantrell::bench;

namespace {

constexpr int segmentCount = 10;

struct Usage {
    double wallMs = 0;
    double cpuMs = 0;
    double peakMiB = 0;
};

double milliseconds(const timeval &time) {
    return double(time.tv_sec) * 1000 + double(time.tv_usec) / 1000;
}

Usage run(const std::vector<std::string> &command) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (status != 0) {
        std::fprintf(stderr, "%s failed\n", command[0].c_str());
        std::exit(1);
    }
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime),
            double(usage.ru_maxrss) / 1024};
}

Usage median(std::vector<Usage> runs) {
    const auto middle = [&runs](double Usage::*member) {
        std::ranges::sort(runs, {}, member);
        return runs[runs.size() / 2].*member;
    };
    return {middle(&Usage::wallMs), middle(&Usage::cpuMs), middle(&Usage::peakMiB)};
}

int joinAsChild(char **paths) {
    const std::filesystem::path output = *paths++;
    std::vector<std::filesystem::path> sources;
    for (; *paths; ++paths)
        sources.emplace_back(*paths);
    return joinMovies(sources, output) ? 0 : 1;
}

void report(const char *name, const Usage &usage, const Joints &joints) {
    std::printf(
        "%-8s %8.0f ms wall %8.0f ms CPU %7.1f MiB   starts at %.4f s, lasts %.3f s, last joint: sound "
        "%+.1f ms, counted %+.1f ms\n",
        name, usage.wallMs, usage.cpuMs, usage.peakMiB, joints.startSeconds, joints.durationSeconds,
        joints.lastOffset * 1000, joints.lastCountedOffset * 1000);
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 3 && std::strcmp(argv[1], "--join") == 0)
        return joinAsChild(argv + 2);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const char *temporary = std::getenv("TMPDIR");
    std::string folderName = std::string(temporary ? temporary : "/tmp") + "/bench_join.XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(folderName.data());
    const auto segments = makeSegments(folder, segmentCount);
    {
        std::ofstream list(folder / "list.txt");
        for (const auto &segment : segments)
            list << "file '" << segment.string() << "'\n";
    }
    const std::filesystem::path ours = folder / "ours.mov";
    const std::filesystem::path theirs = folder / "theirs.mov";
    std::vector<std::string> ourCommand{"/proc/self/exe", "--join", ours.string()};
    for (const auto &segment : segments)
        ourCommand.push_back(segment.string());
    const std::vector<std::string> theirCommand{
        "ffmpeg", "-nostdin", "-v", "error", "-f",
        "concat", "-safe",    "0",  "-i",    (folder / "list.txt").string(),
        "-map",   "0",        "-c", "copy",  theirs.string()};
    std::vector<Usage> ourRuns;
    std::vector<Usage> theirRuns;
    for (int i = 0; i < rounds; ++i) {
        std::filesystem::remove(ours);
        ourRuns.push_back(run(ourCommand));
        std::filesystem::remove(theirs);
        theirRuns.push_back(run(theirCommand));
    }
    std::printf("%d segments of %d s, %.0f MB, %d rounds, medians\n", segmentCount, segmentSeconds,
                double(std::filesystem::file_size(segments[0])) * segmentCount / 1e6, rounds);
    const Usage our = median(ourRuns);
    const Usage their = median(theirRuns);
    report("ours", our, examine(ours, segmentCount));
    report("ffmpeg", their, examine(theirs, segmentCount));
    std::printf("ratio    %8.2f         %8.2f        %7.2f\n", our.wallMs / their.wallMs,
                our.cpuMs / their.cpuMs, our.peakMiB / their.peakMiB);
    std::filesystem::remove_all(folder);
    return 0;
}

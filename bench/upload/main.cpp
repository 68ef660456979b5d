// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Contest.h"
#include "Endurance.h"

#include "TestSupport/TemporaryFolder.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>

namespace vantrell::bench {

namespace {

struct Arguments {
    std::int64_t bytes = std::int64_t(1) << 30;
    int rounds = 5;
    std::string what = "all";
};

using Contender = std::pair<const char *, std::function<RunCost()>>;

/// Runs the contenders in turns, so that a busy moment of the machine hits all of them, and prints the first
/// one's ratios to each of the others.
void compare(const char *title, int rounds, const std::vector<Contender> &contenders) {
    std::vector<std::vector<RunCost>> runs(contenders.size());
    for (int round = -1; round < rounds; ++round)
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const RunCost cost = contenders[i].second();
            // The first round warms the caches.
            if (round >= 0)
                runs[i].push_back(cost);
        }
    std::printf("\n%s\n", title);
    const RunCost ours = medianOf(runs[0]);
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        const RunCost cost = medianOf(runs[i]);
        std::printf("  %-14s wall %6.3f s  CPU %6.3f s  peak %6.1f MiB", contenders[i].first,
                    cost.wallSeconds, cost.cpuSeconds, cost.peakMiB);
        if (i > 0)
            std::printf("   ours is %.2f of its wall, %.2f of its CPU", ours.wallSeconds / cost.wallSeconds,
                        ours.cpuSeconds / cost.cpuSeconds);
        std::printf("\n");
    }
    std::fflush(stdout);
}

void compareThroughput(bool tls, const Arguments &arguments, const std::filesystem::path &folder) {
    Contest contest({.tls = tls}, folder);
    contest.setFile(arguments.bytes);
    compare(tls ? "tus, 6 MiB chunks, TLS" : "tus, 6 MiB chunks, plain", arguments.rounds,
            {{"ours", [&] { return contest.oursTus(); }},
             {"curl", [&] { return contest.curlTus(); }},
             {"tus-js-client", [&] { return contest.tusJs(); }}});
    compare(tls ? "one-shot PUT, TLS" : "one-shot PUT, plain", arguments.rounds,
            {{"ours", [&] { return contest.oursPut(); }}, {"curl -T", [&] { return contest.curlPut(); }}});
}

void compareDistant(const Arguments &arguments, const std::filesystem::path &folder) {
    Contest contest({.delay = std::chrono::milliseconds(25)}, folder);
    contest.setFile(arguments.bytes / 2);
    int most = 0;
    compare("tus, 6 MiB chunks, 50 ms round trips", arguments.rounds,
            {{"ours",
              [&] {
                  contest.takeConnectionCount();
                  const RunCost cost = contest.oursTus();
                  most = std::max(most, contest.takeConnectionCount());
                  return cost;
              }},
             {"curl", [&] { return contest.curlTus(); }}});
    std::printf("  connections of one upload: %d\n", most);
}

void compareMemory(const std::filesystem::path &folder) {
    Contest contest({}, folder);
    contest.setFile(64LL << 20);
    const RunCost small = contest.oursTus();
    const RunCost smallPut = contest.oursPut();
    contest.setFile(4LL << 30);
    const RunCost large = contest.oursTus();
    const RunCost largePut = contest.oursPut();
    std::printf("\nPeak memory, 64 MiB and 4 GiB\n  tus %.1f and %.1f MiB, PUT %.1f and %.1f MiB\n",
                small.peakMiB, large.peakMiB, smallPut.peakMiB, largePut.peakMiB);
}

int runAll(const Arguments &arguments) {
    const testing::TemporaryFolder folder;
    const auto wants = [&arguments](const char *what) {
        return arguments.what == "all" || arguments.what == what;
    };
    if (wants("plain"))
        compareThroughput(false, arguments, folder.path());
    if (wants("tls"))
        compareThroughput(true, arguments, folder.path());
    if (wants("distant"))
        compareDistant(arguments, folder.path());
    if (wants("memory"))
        compareMemory(folder.path());
    if (wants("endurance"))
        return runEndurance(arguments.bytes, 10, folder.path());
    return 0;
}

} // namespace
} // namespace vantrell::bench

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    vantrell::bench::Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--mib" && i + 1 < argc)
            arguments.bytes = std::stoll(argv[++i]) << 20;
        else if (argument == "--rounds" && i + 1 < argc)
            arguments.rounds = std::stoi(argv[++i]);
        else if (!argument.starts_with('-'))
            arguments.what = argument;
        else {
            std::cerr << "upload-bench [plain|tls|distant|memory|endurance] [--mib N] [--rounds N]"
                      << std::endl;
            return 2;
        }
    }
    return vantrell::bench::runAll(arguments);
}

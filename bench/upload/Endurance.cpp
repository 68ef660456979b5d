// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Endurance.h"

#include "ChildRun.h"
#include "Contest.h"

#include "TestSupport/Network/LocalService.h"
#include "TestSupport/TestFile.h"

#include <QUuid>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <random>
#include <thread>

#include <sys/wait.h>

namespace vantrell::bench {

using nlohmann::json;

namespace {

struct Registered {
    std::string assetId;
    std::filesystem::path descriptor;
};

Registered registerFile(testing::LocalService &service, const std::string &key, const std::string &project,
                        std::int64_t bytes, const std::filesystem::path &folder) {
    const json answer =
        service.call("POST", "/v1/capture/sign",
                     {{"projectId", project},
                      {"kind", "video"},
                      {"mime", "video/quicktime"},
                      {"bytes", bytes},
                      {"meta", false},
                      {"captureId", QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()}},
                     key);
    const std::filesystem::path path = folder / "descriptor.json";
    std::ofstream(path) << answer.at("main").at("upload").dump();
    return {answer.at("assetId"), path};
}

bool arrivedWhole(testing::LocalService &service, const std::string &key, const Registered &capture,
                  const std::filesystem::path &file) {
    service.configure({{"checksumWaitMs", 120'000}});
    service.call("POST", "/v1/capture/" + capture.assetId + "/confirm", nullptr, key);
    const std::string expected = testing::sha256Of(file);
    for (const json &each : service.captures(key))
        if (each.at("id") == capture.assetId)
            return each.value("sha256", "") == expected;
    return false;
}

/// Starts the sender and kills it after a while; true when it had ended by itself before.
bool sendAndKill(const Command &command, std::chrono::milliseconds after) {
    const pid_t pid = startChild(command, {});
    const auto deadline = std::chrono::steady_clock::now() + after;
    int status = 0;
    while (std::chrono::steady_clock::now() < deadline) {
        if (::waitpid(pid, &status, WNOHANG) == pid)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ::kill(pid, SIGKILL);
    ::waitpid(pid, &status, 0);
    return false;
}

} // namespace

int runEndurance(std::int64_t bytes, int cuts, const std::filesystem::path &folder) {
    testing::LocalService service(
        {.arguments = {"--quiet", "--transfer", "tus", "--chunk-size", std::to_string(Contest::chunkBytes)}});
    const std::string key = service.createKey();
    const std::string project = service.createProject("Bench");
    const std::filesystem::path file = folder / "film.mov";

    testing::writeTestFile(file, 1);
    const Registered tiny = registerFile(service, key, project, 1, folder);
    const RunCost idle = runChild({senderProgram(), tiny.descriptor, file}, {});

    testing::writeTestFile(file, bytes);
    const Registered whole = registerFile(service, key, project, bytes, folder);
    const RunCost straight = runChild({senderProgram(), whole.descriptor, file}, {});
    const bool straightIsWhole = arrivedWhole(service, key, whole, file);

    const Registered capture = registerFile(service, key, project, bytes, folder);
    service.clearLog();
    const std::filesystem::path location = folder / "location";
    const Command command{senderProgram(), capture.descriptor, file, location};
    std::mt19937 random(std::random_device{}());
    std::uniform_real_distribution<double> share(0.2, 1.8);
    int cutsDone = 0;
    for (; cutsDone < cuts; ++cutsDone)
        if (sendAndKill(command, std::chrono::milliseconds(
                                     std::int64_t(share(random) * straight.wallSeconds * 1000 / (cuts + 1)))))
            break;
    runChild(command, {});
    const bool isWhole = arrivedWhole(service, key, capture, file);
    std::int64_t received = 0;
    for (const auto &entry : service.requests("/storage/tus"))
        received += entry.bodyBytes;
    const std::int64_t allowed = bytes + std::int64_t(cutsDone) * Contest::chunkBytes;

    std::printf(
        "%lld MiB to the reference tus server: %.2f s, peak memory %.1f MiB, %.1f MiB over idle, bytes %s\n",
        static_cast<long long>(bytes >> 20), straight.wallSeconds, straight.peakMiB,
        straight.peakMiB - idle.peakMiB, straightIsWhole ? "identical" : "DIFFERENT");
    std::printf("killed %d times on the way: bytes %s, %.1f MiB sent twice (at most one chunk a cut: %s)\n",
                cutsDone, isWhole ? "identical" : "DIFFERENT", double(received - bytes) / (1 << 20),
                received <= allowed ? "yes" : "NO");
    return straightIsWhole && isWhole && received <= allowed ? 0 : 1;
}

} // namespace vantrell::bench

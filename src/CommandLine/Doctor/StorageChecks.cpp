// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureStorage.h"
#include "CommandLine/Doctor/Checks.h"
#include "CommandLine/Doctor/Probe.h"
#include "Recording/DiskSpace.h"
#include "Session/ServiceSession.h"
#include "Support/AtomicFile.h"

#include <filesystem>

#include <sys/statvfs.h>
#include <unistd.h>

namespace vantrell {

namespace {

struct DiskState {
    /// Empty: files can be written.
    std::string failure;
    std::uint64_t freeBytes = 0;
};

DiskState lookAtDisk() {
    const std::filesystem::path folder = CaptureStorage::directory();
    DiskState state;
    const std::filesystem::path file = folder / (".doctor." + std::to_string(::getpid()));
    if (const auto written = writeFileAtomically(file, std::string(4096, 'x')); !written)
        state.failure = written.error().description();
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    struct statvfs volume{};
    if (::statvfs(folder.c_str(), &volume) == 0)
        state.freeBytes = std::uint64_t(volume.f_bavail) * volume.f_frsize;
    return state;
}

} // namespace

Task<Findings> checkDisk(const Surroundings &, std::stop_token stop) {
    const auto state = co_await Probe::run(lookAtDisk, stop);
    if (!state)
        co_return Findings{problemFinding("Disk", "the folder of the captures does not answer",
                                          "A network disk may be away: set XDG_DATA_HOME to another one")};
    // In whole gigabytes, as the rule below counts them.
    const std::string room = std::to_string(state->freeBytes / 1'000'000'000) + " GB free";
    if (!state->failure.empty())
        co_return Findings{
            problemFinding("Disk", "nothing can be written to the folder of the captures: " + state->failure,
                           "Make room, or make ~/.local/share/VantrellCapture yours to write")};
    if (!isEnoughToRecord(state->freeBytes))
        co_return Findings{problemFinding("Disk", room,
                                          "Recording needs 2 GB: make room, or set XDG_DATA_HOME to "
                                          "another disk")};
    co_return Findings{okFinding("Disk", room)};
}

Task<Findings> checkService(const Surroundings &around, std::stop_token stop) {
    auto session = ServiceSession::create(around.environmentKey);
    if (!session)
        co_return Findings{problemFinding("Service", session.error(), "Correct VANTRELL_API_URL")};
    const std::string &address = (*session)->url().text();
    // Any answer will do: who asks is not told anything without a key.
    const HttpResult answer =
        co_await (*session)->http().send({.url = address + '/', .silence = std::chrono::seconds(4)}, stop);
    if (!answer)
        co_return Findings{problemFinding(
            "Service", address + " cannot be reached: " + answer.error().platform.description(),
            "Check the network, the proxy and VANTRELL_API_URL. Recordings wait on "
            "this computer until it is back")};
    Findings findings{okFinding("Service", address + " answers")};
    if (!co_await (*session)->connect(stop, Keychain::Asking::never)) {
        findings.push_back(adviceFinding("Account", "not connected",
                                         "Connect in the menu, or with "
                                         "vantrell-capture pair"));
        co_return findings;
    }
    const auto limits = co_await (*session)->limits(stop);
    if (limits)
        findings.push_back(okFinding("Account", "connected"));
    else
        findings.push_back(problemFinding("Account", limits.error().description(),
                                          "Disconnect and connect again when it stays like this"));
    co_return findings;
}

} // namespace vantrell

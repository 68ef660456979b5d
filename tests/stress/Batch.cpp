// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Batch.h"

#include "BatchFolder.h"
#include "Support/AtomicFile.h"
#include "TestSupport/TestFile.h"

#include <poll.h>
#include <sys/syscall.h>

#include <csignal>
#include <iostream>
#include <map>

namespace vantrell::testing {

namespace {

constexpr std::int64_t chunkSize = 100'000;

struct RandomFault {
    const char *method;
    const char *path;
    nlohmann::json action;
};

/// Every call that has a second try, with everything that can happen to it.
const std::vector<RandomFault> &faultList() {
    static const std::vector<RandomFault> list = [] {
        std::vector<RandomFault> made;
        const std::vector<nlohmann::json> onAll = {{{"status", 429}},
                                                   {{"status", 500}},
                                                   {{"status", 503}},
                                                   "reset",
                                                   "close",
                                                   "swallowAnswer",
                                                   {{"cutAnswerAfterBytes", 7}},
                                                   {{"stallMs", 150}}};
        for (const nlohmann::json &action : onAll) {
            made.push_back({"POST", "/v1/capture/", action});
            made.push_back({"POST", "/storage/tus", action});
            made.push_back({"PATCH", "/storage/tus", action});
            made.push_back({"PATCH", "/storage/tus", action});
        }
        const std::vector<nlohmann::json> onChunks = {{{"status", 409}},
                                                      {{"status", 423}},
                                                      {{"resetAfterBytes", 30'000}},
                                                      {{"closeAfterBytes", 70'000}},
                                                      {{"stallAfterBytes", 20'000}, {"stallMs", 200}},
                                                      {{"wrongOffset", -30'000}},
                                                      {{"wrongOffset", 1}},
                                                      "missingOffset",
                                                      {{"throttleBytesPerSecond", 300'000}}};
        for (const nlohmann::json &action : onChunks) {
            made.push_back({"PATCH", "/storage/tus", action});
            made.push_back({"PATCH", "/storage/tus", action});
        }
        return made;
    }();
    return list;
}

} // namespace

Batch::Batch(LocalService &service, int captureCount, unsigned seed) : m_service(service), m_random(seed) {
    const std::string account = "batch " + std::to_string(seed);
    m_key = service.createKey(account);
    m_project = service.call("POST", "/test/projects", {{"name", "Stress"}, {"account", account}}).at("id");
    service.clearLog();
    BatchFolder(m_folder / "captures").fill(captureCount, seed);
}

void Batch::setRandomFaults() {
    for (int n = std::uniform_int_distribution(0, 4)(m_random); n > 0; --n) {
        const RandomFault &fault = faultList()[m_random() % faultList().size()];
        m_service.fault(fault.method, fault.path, fault.action, 1, int(m_random() % 5));
        ++m_faults;
    }
}

bool Batch::runFor(int milliseconds) {
    ChildProcess uploader({"/proc/self/exe", "--uploader", (m_folder / "captures").string()},
                          {{"STRESS_URL", m_service.url()},
                           {"STRESS_KEY", m_key},
                           {"STRESS_PROJECT", m_project},
                           {"XDG_DATA_HOME", (m_folder / "data").string()}});
    const UniqueFd ended(int(::syscall(SYS_pidfd_open, uploader.pid(), 0)));
    pollfd waiting{ended.get(), POLLIN, 0};
    const bool endedByItself = ::poll(&waiting, 1, milliseconds) == 1;
    if (!endedByItself) {
        uploader.signal(SIGKILL);
        ++m_kills;
    }
    const int code = uploader.waitForExit().value_or(-1);
    if (code != 0 && code != -SIGKILL)
        complain("the uploader ended with " + std::to_string(code));
    return endedByItself;
}

void Batch::upload() {
    // Most lives are short, some get far; the last ones may take what they need.
    std::exponential_distribution<double> lifetime(1.0 / 250);
    for (int lives = 0; m_isFine; ++lives) {
        if (lives > 400) {
            complain("does not come to an end");
            return;
        }
        setRandomFaults();
        if (runFor(20 + int(lifetime(m_random))))
            return;
    }
}

bool Batch::verify() {
    m_service.clearFaults();
    verifyLibrary();
    verifyTraffic();
    const std::string journal =
        readFile(m_folder / "data/VantrellCapture/upload-journal.json").value_or("none");
    if (journal != "[]")
        complain("the journal holds " + journal);
    return m_isFine;
}

bool Batch::verifyLibrary() {
    std::map<std::string, nlohmann::json> byName;
    for (const nlohmann::json &capture : m_service.captures(m_key)) {
        if (!byName.emplace(capture.at("name"), capture).second)
            complain("twice in the library: " + capture.dump());
    }
    const BatchFolder batch(m_folder / "captures");
    const std::vector<std::filesystem::path> files = batch.files();
    for (const std::filesystem::path &file : files) {
        const nlohmann::json &capture = byName[file.stem().string()];
        if (!capture.is_object())
            complain("not in the library: " + file.string());
        else if (capture.at("status") != "confirmed" || capture.at("sha256") != sha256Of(file) ||
                 (batch.mustHaveSideFiles(file) && (!capture.at("hasThumb") || !capture.at("hasMeta"))))
            complain("not as it was: " + capture.dump());
    }
    return byName.size() == files.size() || complain("more captures than files");
}

bool Batch::verifyTraffic() {
    std::map<std::string, bool> isUncertain;
    std::map<std::string, std::int64_t> sent;
    for (const LocalService::LogEntry &entry : m_service.requests("/storage/tus/")) {
        bool &uncertain = isUncertain[entry.path];
        if (entry.method == "HEAD")
            uncertain = false;
        if (entry.method != "PATCH")
            continue;
        if (uncertain)
            complain("a PATCH without asking after one of uncertain end: " + entry.path);
        uncertain = entry.outcome != "sent" || entry.status != 204;
        sent[entry.path] += entry.bodyBytes;
    }
    // Uploads of one capture: the part before the dot is its asset. Only one may ever have got bytes.
    std::map<std::string, int> uploadsOfAsset;
    std::int64_t total = 0;
    for (const auto &[path, bytes] : sent) {
        total += bytes;
        if (bytes > 0 && ++uploadsOfAsset[path.substr(0, path.find('.'))] > 1)
            complain("sent to two uploads: " + path);
    }
    for (const std::filesystem::path &file : BatchFolder(m_folder / "captures").files())
        total -= std::int64_t(std::filesystem::file_size(file));
    m_bytesSentAgain = total;
    return total <= chunkSize * (m_faults + 2 * m_kills) ||
           complain(std::to_string(total) + " bytes were sent more than once");
}

bool Batch::complain(const std::string &what) {
    std::cerr << "stress: " << what << std::endl;
    m_isFine = false;
    return false;
}

} // namespace vantrell::testing

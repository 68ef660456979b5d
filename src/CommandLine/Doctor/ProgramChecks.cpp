// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/BusQuestion.h"
#include "CommandLine/Doctor/Checks.h"
#include "Session/ApplicationBus.h"

#include <QDBusArgument>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace vantrell {

namespace {

/// As the kernel cuts its name, and as people know it.
struct OtherProgram {
    std::string_view process;
    const char *name;
};

constexpr std::array otherRecorders{
    OtherProgram{"obs", "OBS Studio"},
    OtherProgram{"simplescreenrec", "SimpleScreenRecorder"},
    OtherProgram{"kazam", "Kazam"},
    OtherProgram{"peek", "Peek"},
    OtherProgram{"vokoscreenNG", "vokoscreenNG"},
    OtherProgram{"gpu-screen-reco", "GPU Screen Recorder"},
    OtherProgram{"kooha", "Kooha"},
    OtherProgram{"wf-recorder", "wf-recorder"},
    OtherProgram{"recordmydesktop", "recordMyDesktop"},
};

/// The user's own processes that are one of those.
std::vector<const char *> runningRecorders() {
    std::vector<const char *> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat owner{};
        if (::stat(entry->path().c_str(), &owner) != 0 || owner.st_uid != ::getuid())
            continue;
        std::string name;
        std::ifstream comm(entry->path() / "comm");
        if (!std::getline(comm, name))
            continue;
        const auto other = std::ranges::find(otherRecorders, std::string_view(name), &OtherProgram::process);
        if (other != otherRecorders.end() && std::ranges::find(found, other->name) == found.end())
            found.push_back(other->name);
    }
    return found;
}

Finding hotKeyFinding(const QVariantMap &status) {
    if (const QString hint = status.value(QStringLiteral("hotKeysHint")).toString(); !hint.isEmpty())
        return adviceFinding("Hot keys", "the desktop gives none", hint.toStdString());
    std::string taken;
    for (const QString &key : status.value(QStringLiteral("failedHotKeys")).toStringList())
        taken += (taken.empty() ? "" : ", ") + key.toStdString();
    if (taken.empty())
        return okFinding("Hot keys", "in force");
    return adviceFinding(
        "Hot keys", "held by another program: " + taken,
        "Free them in the desktop's keyboard settings, or bind keys there to vantrell-capture "
        "area and vantrell-capture toggle");
}

} // namespace

Task<Findings> checkApplication(const Surroundings &around, std::stop_token stop) {
    const QString name = QString::fromLatin1(applicationBus::name);
    if (!around.hasBus || !co_await isOnBus(name, stop))
        co_return Findings{adviceFinding("Hot keys", "not in force: the application does not run",
                                         "Start Vantrell Capture, and in its menu Launch at Login")};
    const BusQuestion question{name,
                               QString::fromLatin1(applicationBus::path),
                               QString::fromLatin1(applicationBus::interface),
                               QStringLiteral("Status"),
                               {}};
    const BusAnswer answer = co_await askBus(question, stop);
    if (!answer)
        co_return Findings{problemFinding("Application",
                                          "runs, but does not answer: " + answer.error().message,
                                          "End it and start it again; what was recorded is kept")};
    const auto status = qdbus_cast<QVariantMap>(answer->value(0).value<QDBusArgument>());
    Findings findings{
        okFinding("Application", "runs: " + status.value(QStringLiteral("state")).toString().toStdString())};
    if (around.isWayland && status.value(QStringLiteral("failedHotKeys")).toStringList().isEmpty())
        co_return findings;
    findings.push_back(hotKeyFinding(status));
    co_return findings;
}

Task<Findings> checkOthers(const Surroundings &around, std::stop_token stop) {
    Findings findings;
    for (const char *const recorder : runningRecorders())
        findings.push_back(
            adviceFinding("Others", std::string(recorder) + " runs",
                          "Two recorders share the processor and may hold each other's keys: end it "
                          "when a recording stutters"));
    const auto executable = around.hasBus
                                ? co_await askProperty(QString::fromLatin1(applicationBus::name),
                                                       QString::fromLatin1(applicationBus::path),
                                                       QString::fromLatin1(applicationBus::interface),
                                                       QStringLiteral("Executable"), false, stop)
                                : std::expected<QVariant, PlatformError>(std::unexpect);
    std::error_code unknown;
    const std::string own = std::filesystem::read_symlink("/proc/self/exe", unknown).string();
    if (executable && executable->toString().toStdString() != own)
        findings.push_back(adviceFinding("Others", "another copy of Vantrell Capture runs",
                                         "End it, or remove the copy that you do not want"));
    if (findings.empty())
        findings.push_back(okFinding("Others", "no other recorder runs"));
    co_return findings;
}

} // namespace vantrell

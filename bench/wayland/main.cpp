// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ProcessTree.h"
#include "SceneWindow.h"
#include "Support/HostTime.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Wayland/SwaySession.h"
#include "Timing.h"

#include <QGuiApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

// Records a headless sway at 1080p, scene by scene, with this recorder and with wf-recorder (libx264
// superfast) in turn, and compares the processor's time of the two process trees. What the portal's part for
// sway, which fetches the pictures for us, and sway itself use beside is told too.

namespace vantrell::bench {

namespace {

using namespace std::chrono_literals;
using testing::ChildProcess;

struct Options {
    double seconds = 20;
    int repeat = 3;
    std::vector<std::string> scenes{"still", "typing", "video"};
    PixelSize screen{1920, 1080};
};

struct Use {
    double recorder = 0;
    /// The portal's part and the compositor.
    double desktop = 0;
    double pss = 0;
    double megabytes = 0;
};

double sizeIn(const std::filesystem::path &folder) {
    double bytes = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".mov" || entry.path().extension() == ".mp4")
            bytes += double(entry.file_size());
    return bytes / 1e6;
}

Use measure(const Options &options, testing::SwaySession &session, const std::string &recorder) {
    const testing::TemporaryFolder folder;
    auto environment = session.environment();
    environment.emplace_back("VANTRELL_BACKEND", "wayland");
    const std::vector<std::string> command =
        recorder == "ours"
            ? std::vector<std::string>{VANTRELL_CAPTURE, "record",   "--cursor",
                                       "drawn",          "--output", folder.path()}
            : std::vector<std::string>{"wf-recorder", "-c", "libx264",        "-p", "preset=superfast", "-p",
                                       "crf=23",      "-f", folder / "wf.mp4"};
    ChildProcess process(command, environment);
    // What it takes to start is not what is compared.
    std::this_thread::sleep_for(3s);
    const ProcessTreeUse before = useOf(process.pid());
    const double desktopBefore = session.desktopCpuSeconds();
    const double start = hostNow();
    std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
    const ProcessTreeUse after = useOf(process.pid());
    const double took = hostNow() - start;
    Use use;
    use.recorder = (after.cpuSeconds - before.cpuSeconds) / took;
    use.desktop = (session.desktopCpuSeconds() - desktopBefore) / took;
    use.pss = after.pssMiB;
    process.signal(SIGINT);
    process.waitForExit();
    use.megabytes = sizeIn(folder.path());
    return use;
}

double median(std::vector<Use> uses, double Use::*value) {
    std::ranges::sort(uses, {}, value);
    return uses[uses.size() / 2].*value;
}

int compare(const Options &options) {
    testing::SwaySession session({.width = options.screen.width, .height = options.screen.height});
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const std::string size =
        std::to_string(options.screen.width) + "x" + std::to_string(options.screen.height);
    for (const std::string &scene : options.scenes) {
        ChildProcess window({self, "--show", scene, size}, session.environment());
        std::this_thread::sleep_for(2s);
        std::map<std::string, std::vector<Use>> uses;
        for (int i = 0; i < options.repeat; ++i)
            for (const std::string recorder : {"ours", "wf-recorder"})
                uses[recorder].push_back(measure(options, session, recorder));
        for (const auto &[recorder, all] : uses) {
            std::printf("%-7s %-12s cpu %6.2f %%  desktop %6.2f %%  pss %4.0f MiB  %6.2f MB", scene.c_str(),
                        recorder.c_str(), median(all, &Use::recorder) * 100, median(all, &Use::desktop) * 100,
                        median(all, &Use::pss), median(all, &Use::megabytes));
            if (recorder == "ours")
                std::printf("  | of wf-recorder: cpu %.3f",
                            median(all, &Use::recorder) / median(uses["wf-recorder"], &Use::recorder));
            std::printf("\n");
        }
        std::fflush(stdout);
    }
    return 0;
}

std::vector<std::string> listed(const std::string &text) {
    std::vector<std::string> items;
    std::stringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');)
        items.push_back(item);
    return items;
}

} // namespace

} // namespace vantrell::bench

int main(int argc, char **argv) {
    using namespace vantrell::bench;
    if (argc == 4 && std::string(argv[1]) == "--show") {
        QGuiApplication application(argc, argv);
        vantrell::PixelSize size;
        std::sscanf(argv[3], "%dx%d", &size.width, &size.height);
        SceneWindow window(argv[2], size);
        window.show();
        return QGuiApplication::exec();
    }
    QCoreApplication application(argc, argv);
    Options options;
    bool isTiming = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i];
        if (key == "--seconds")
            options.seconds = std::atof(argv[i + 1]);
        else if (key == "--repeat")
            options.repeat = std::max(1, std::atoi(argv[i + 1]));
        else if (key == "--scenes")
            options.scenes = listed(argv[i + 1]);
        else if (key == "--timing")
            isTiming = std::string(argv[i + 1]) != "0";
    }
    return isTiming ? measureTiming(options.seconds) : compare(options);
}

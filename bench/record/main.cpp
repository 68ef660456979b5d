// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Measure.h"
#include "OwnRecorder.h"
#include "PanelWindow.h"
#include "ProcessTree.h"
#include "Recorder.h"
#include "Scene.h"
#include "ScenePainter.h"
#include "Support/HostTime.h"
#include "Support/SmallHeap.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/TemporaryFolder.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
namespace vantrell::bench {

namespace {

/// Our recorder with a panel in its picture.
constexpr const char *underPanel = "panel";

struct Options {
    double seconds = 10;
    int repeat = 3;
    PixelSize screen{1920, 1080};
    std::vector<std::string> scenes = Scene::names();
    std::vector<std::string> recorders{"ours", "ffmpeg", "ssr"};
    /// A compositing manager runs as well.
    bool compositor = false;
    /// Our recorder once more with a panel of the application in the picture.
    bool panel = false;
    std::string keep;
};

/// One recorder on one scene.
struct Run {
    double cpu = 0;
    double pss = 0;
    double switches = 0;
    double stop = 0;
    MovieFigures movie;
};

/// This program in another role, told what to do through a pipe.
class Helper {
public:
    Helper(const std::vector<std::string> &arguments, const std::filesystem::path &log) : m_log(log) {
        for (const char *end : {"", ".ready", ".done"})
            std::filesystem::remove(log.string() + end);
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        const std::string self = std::filesystem::read_symlink("/proc/self/exe");
        std::vector<char *> command{const_cast<char *>(self.c_str())};
        for (const std::string &argument : arguments)
            command.push_back(const_cast<char *>(argument.c_str()));
        command.push_back(nullptr);
        m_pid = ::fork();
        if (m_pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::dup2(ends[0], STDIN_FILENO);
            ::execv(self.c_str(), command.data());
            ::_exit(127);
        }
        ::close(ends[0]);
        m_input = ends[1];
        waitFor(".ready");
    }
    ~Helper() {
        ::close(m_input);
        ::waitpid(m_pid, nullptr, 0);
    }
    void play() {
        [[maybe_unused]] const auto written = ::write(m_input, "g", 1);
        waitFor(".done");
    }
    std::map<int, double> shown() const {
        std::map<int, double> times;
        std::ifstream in(m_log);
        int number = 0;
        double time = 0;
        while (in >> number >> time)
            times[number] = time;
        return times;
    }

private:
    void waitFor(const char *end) const {
        while (!std::filesystem::exists(m_log.string() + end))
            std::this_thread::sleep_for(5ms);
    }

    std::filesystem::path m_log;
    pid_t m_pid = -1;
    int m_input = -1;
};

Run runOnce(const Options &options, const std::string &recorderName, const std::string &scene,
            const std::filesystem::path &folder) {
    const std::filesystem::path log = folder / "shown.txt";
    Helper painter({"--paint", scene, std::to_string(options.seconds), log}, log);
    std::optional<Helper> panel;
    const bool hasPanel = recorderName == underPanel;
    if (hasPanel)
        panel.emplace(std::vector<std::string>{"--panel-window", folder / "panel"}, folder / "panel");
    const auto recorder =
        Recorder::start(hasPanel ? "ours" : recorderName, folder, options.screen, scene == "pointer");
    std::this_thread::sleep_for(recorderName == "ssr" ? 3s : 1500ms);

    Run run;
    const double begin = hostNow();
    const ProcessTreeUse before = useOf(recorder->pid());
    painter.play();
    const ProcessTreeUse after = useOf(recorder->pid());
    const double elapsed = hostNow() - begin;
    run.cpu = (after.cpuSeconds - before.cpuSeconds) / elapsed;
    run.switches = double(after.voluntarySwitches - before.voluntarySwitches) / elapsed;
    run.pss = after.pssMiB;
    run.stop = recorder->stop();
    run.movie = measureMovie(recorder->movie(), scene, options.screen, painter.shown());
    if (!options.keep.empty())
        std::filesystem::copy_file(recorder->movie(),
                                   std::filesystem::path(options.keep) /
                                       (scene + "-" + recorder->movie().filename().string()),
                                   std::filesystem::copy_options::overwrite_existing);
    return run;
}

template <typename Value>
double median(std::vector<Run> runs, Value value) {
    std::vector<double> values;
    for (const Run &run : runs)
        values.push_back(value(run));
    std::ranges::sort(values);
    return values[values.size() / 2];
}

Run medians(const std::vector<Run> &runs) {
    Run result;
    result.cpu = median(runs, [](const Run &run) { return run.cpu; });
    result.pss = median(runs, [](const Run &run) { return run.pss; });
    result.switches = median(runs, [](const Run &run) { return run.switches; });
    result.stop = median(runs, [](const Run &run) { return run.stop; });
    result.movie.capturedShare = median(runs, [](const Run &run) { return run.movie.capturedShare; });
    result.movie.ssim = median(runs, [](const Run &run) { return run.movie.ssim; });
    result.movie.lowestFreshSsim = median(runs, [](const Run &run) { return run.movie.lowestFreshSsim; });
    result.movie.timeError95 = median(runs, [](const Run &run) { return run.movie.timeError95; });
    result.movie.driftPpm = median(runs, [](const Run &run) { return run.movie.driftPpm; });
    result.movie.longestGap = median(runs, [](const Run &run) { return run.movie.longestGap; });
    result.movie.megabytes = median(runs, [](const Run &run) { return run.movie.megabytes; });
    return result;
}

void print(const std::string &scene, const std::map<std::string, Run> &results) {
    const auto ssr = results.find("ssr");
    const auto ffmpeg = results.find("ffmpeg");
    for (const auto &[name, run] : results) {
        std::printf(
            "%-8s %-7s cpu %6.2f %%  captured %6.2f %%  ssim %.4f new %.4f  %7.2f MB  time error %5.2f ms  "
            "drift %5.0f ppm  "
            "gap %5.1f ms  stop %4.0f ms  switches %5.0f/s  pss %3.0f MiB",
            scene.c_str(), name.c_str(), run.cpu * 100, run.movie.capturedShare * 100, run.movie.ssim,
            run.movie.lowestFreshSsim, run.movie.megabytes, run.movie.timeError95, run.movie.driftPpm,
            run.movie.longestGap * 1000, run.stop * 1000, run.switches, run.pss);
        if (name == underPanel)
            std::printf("  | of ours without: cpu %.3f", run.cpu / results.at("ours").cpu);
        if (name == "ours" && ffmpeg != results.end())
            std::printf("  | of ffmpeg: cpu %.3f size %.2f ssim %+.4f", run.cpu / ffmpeg->second.cpu,
                        run.movie.megabytes / ffmpeg->second.movie.megabytes,
                        run.movie.ssim - ffmpeg->second.movie.ssim);
        if (name == "ours" && ssr != results.end())
            std::printf("  | of ssr: cpu %.3f size %.2f ssim %+.4f", run.cpu / ssr->second.cpu,
                        run.movie.megabytes / ssr->second.movie.megabytes,
                        run.movie.ssim - ssr->second.movie.ssim);
        std::printf("\n");
    }
    std::fflush(stdout);
}

std::vector<std::string> listOf(const std::string &text) {
    std::vector<std::string> items;
    std::stringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');)
        items.push_back(item);
    return items;
}

PixelSize sizeOf(const std::string &text) {
    PixelSize size;
    std::sscanf(text.c_str(), "%dx%d", &size.width, &size.height);
    return size;
}

int compare(const Options &options) {
    const testing::X11Session session({.width = options.screen.width,
                                       .height = options.screen.height,
                                       .windowManager = false,
                                       .serverArguments = {}});
    std::unique_ptr<testing::ChildProcess> compositor;
    if (options.compositor) {
        compositor = std::make_unique<testing::ChildProcess>(std::vector<std::string>{
            "picom", "--backend", "xrender", "--config", "/dev/null", "--no-use-damage"});
        std::this_thread::sleep_for(1s);
    }
    const testing::TemporaryFolder folder;
    for (const std::string &scene : options.scenes) {
        std::map<std::string, std::vector<Run>> runs;
        for (int i = 0; i < options.repeat; ++i) {
            for (const std::string &recorder : options.recorders) {
                runs[recorder].push_back(runOnce(options, recorder, scene, folder.path()));
                if (options.panel && recorder == "ours")
                    runs[underPanel].push_back(runOnce(options, underPanel, scene, folder.path()));
            }
        }
        std::map<std::string, Run> results;
        for (const auto &[recorder, all] : runs)
            results[recorder] = medians(all);
        print(scene, results);
    }
    return 0;
}

} // namespace
} // namespace vantrell::bench

int main(int argc, char **argv) {
    using namespace vantrell::bench;
    vantrell::keepHeapSmall();
    QCoreApplication application(argc, argv);
    const std::string first = argc > 1 ? argv[1] : "";
    if (first == "--paint" && argc == 5)
        return paintScene(argv[2], std::atof(argv[3]), argv[4]);
    if (first == "--panel-window" && argc == 3)
        return showPanel(argv[2]);
    if (first == "--record" && argc == 5)
        return recordOwn(argv[2], sizeOf(argv[3]), std::strcmp(argv[4], "1") == 0);
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i];
        const std::string value = argv[i + 1];
        if (key == "--seconds")
            options.seconds = std::atof(value.c_str());
        else if (key == "--repeat")
            options.repeat = std::max(1, std::atoi(value.c_str()));
        else if (key == "--size")
            options.screen = sizeOf(value);
        else if (key == "--scenes")
            options.scenes = listOf(value);
        else if (key == "--recorders")
            options.recorders = listOf(value);
        else if (key == "--compositor")
            options.compositor = value == "on";
        else if (key == "--panel")
            options.panel = value == "on";
        else if (key == "--keep")
            options.keep = value;
    }
    return compare(options);
}

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recorder.h"

#include "Support/HostTime.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrell::bench {

namespace {

using namespace std::chrono_literals;

void writeSsrSettings(const std::filesystem::path &folder, PixelSize screen, bool showsCursor) {
    std::ofstream out(folder / "ssr.conf");
    out << "[global]\nnvidia_disable_flipping=never\n"
        << "[input]\naudio_enabled=false\nvideo_area=screen\nvideo_area_screen=0\nvideo_frame_rate=60\nvideo_"
           "x=0\n"
        << "video_y=0\nvideo_w=" << screen.width << "\nvideo_h=" << screen.height
        << "\nvideo_scale=false\nvideo_record_cursor=" << (showsCursor ? "true" : "false") << "\n"
        << "[output]\ncontainer=mkv\nvideo_codec=h264\nvideo_h264_crf=23\nvideo_h264_preset=1\n"
        << "video_allow_frame_skipping=true\nadd_timestamp=false\nfile=" << (folder / "ssr.mkv").string()
        << "\n"
        << "[welcome]\nskip_page=true\n";
}

} // namespace

std::unique_ptr<Recorder> Recorder::start(const std::string &name, const std::filesystem::path &folder,
                                          PixelSize screen, bool showsCursor) {
    std::unique_ptr<Recorder> recorder(new Recorder);
    recorder->m_name = name;
    recorder->m_folder = folder;
    std::filesystem::remove(recorder->movie());
    const std::string size = std::to_string(screen.width) + "x" + std::to_string(screen.height);
    if (name == "ours") {
        recorder->launch({std::filesystem::read_symlink("/proc/self/exe"), "--record", recorder->movie(),
                          size, showsCursor ? "1" : "0"});
    } else if (name == "ffmpeg") {
        recorder->launch({"ffmpeg",
                          "-loglevel",
                          "quiet",
                          "-y",
                          "-f",
                          "x11grab",
                          "-framerate",
                          "60",
                          "-video_size",
                          size,
                          "-draw_mouse",
                          showsCursor ? "1" : "0",
                          "-i",
                          std::getenv("DISPLAY"),
                          "-c:v",
                          "libx264",
                          "-preset",
                          "superfast",
                          "-crf",
                          "23",
                          "-pix_fmt",
                          "yuv420p",
                          recorder->movie()});
    } else if (name == "ssr") {
        writeSsrSettings(folder, screen, showsCursor);
        recorder->launch({"simplescreenrecorder", "--settingsfile=" + (folder / "ssr.conf").string(),
                          "--no-systray", "--start-hidden", "--start-recording"});
    } else {
        return nullptr;
    }
    return recorder;
}

Recorder::~Recorder() {
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    if (m_input >= 0)
        ::close(m_input);
}

void Recorder::launch(const std::vector<std::string> &command) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        std::abort();
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    m_pid = ::fork();
    if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(ends[0], STDIN_FILENO);
        if (!std::getenv("BENCH_VERBOSE")) {
            const int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, STDOUT_FILENO);
            ::dup2(null, STDERR_FILENO);
        }
        ::setenv("HOME", m_folder.c_str(), 1);
        // A shell set up for tests would keep a Qt program off the display.
        ::unsetenv("QT_QPA_PLATFORM");
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(ends[0]);
    m_input = ends[1];
}

std::filesystem::path Recorder::movie() const {
    return m_folder / (m_name + (m_name == "ours" ? ".mov" : m_name == "ffmpeg" ? ".mp4" : ".mkv"));
}

double Recorder::stop() {
    const double asked = hostNow();
    double done = asked;
    if (m_name == "ssr") {
        // It takes commands on standard input and keeps running after the file is whole.
        [[maybe_unused]] auto written = ::write(m_input, "record-save\n", 12);
        std::uintmax_t before = 0;
        double quietSince = hostNow();
        while (hostNow() - quietSince < 1) {
            std::this_thread::sleep_for(5ms);
            std::error_code error;
            const std::uintmax_t size = std::filesystem::file_size(movie(), error);
            if (size != before) {
                before = size;
                done = quietSince = hostNow();
            }
        }
        written = ::write(m_input, "quit\n", 5);
    } else {
        ::kill(m_pid, SIGINT);
    }
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
    return (m_name == "ssr" ? done : hostNow()) - asked;
}

} // namespace vantrell::bench

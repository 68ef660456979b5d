// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What recording a camera of 1280x720 at 30 pictures a second costs: this recorder, from a virtual camera of
// PipeWire's, against ffmpeg with libx264 superfast, CRF 23, which gets the same pictures through a pipe.
//
//     bench_camera [--seconds 10] [--rounds 3] [--formats yuyv,mjpeg] [--keep DIR]

#include "CameraReel.h"
#include "OwnCameraRecorder.h"
#include "PipedCamera.h"
#include "ProcessTree.h"
#include "Ssim.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <thread>

using namespace vantrell;
using namespace vantrell::bench;
using testing::ChildProcess;

namespace {

constexpr PixelSize cameraSize{1280, 720};
constexpr int reelLength = 90;

struct Figures {
    /// Milliseconds of the processor for each picture that the camera sent.
    double cpuPerPicture = 0;
    double pssMiB = 0;
    double ssim = 0;
    double kilobytesPerSecond = 0;
    double picturesPerSecond = 0;
};

struct Run {
    double seconds;
    std::filesystem::path movie;
    const CameraReel &reel;
    bool isMjpeg;
};

/// The processor's time between two moments of a running recorder. By the picture, since a busy machine's
/// pipe falls behind.
Figures measure(const ChildProcess &recorder, double seconds, const std::function<int()> &sent) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    const auto before = useOf(recorder.pid());
    const int first = sent();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    const auto after = useOf(recorder.pid());
    return {.cpuPerPicture = (after.cpuSeconds - before.cpuSeconds) * 1000 / std::max(sent() - first, 1),
            .pssMiB = after.pssMiB};
}

void readMovie(const Run &run, Figures &figures) {
    double sum = 0;
    int compared = 0;
    int pictures = 0;
    const double duration = testing::forEachPicture(run.movie, [&](const testing::MoviePicture &picture) {
        if (pictures++ % 7 != 3)
            return;
        const auto place = testing::framecode::read(picture.luma, picture.lumaStride);
        if (!place || *place >= run.reel.length())
            return;
        sum += ssim(picture.luma, picture.lumaStride, run.reel.painted(*place).y.data(), cameraSize.width,
                    cameraSize.width, cameraSize.height);
        ++compared;
    });
    figures.ssim = compared ? sum / compared : 0;
    figures.kilobytesPerSecond = double(std::filesystem::file_size(run.movie)) / 1000 / duration;
    figures.picturesPerSecond = pictures / duration;
}

Figures runOurs(const Run &run, bool isRecorded, int previewPixels) {
    const testing::VirtualCamera camera(
        {.modes = {{run.isMjpeg ? CameraFormat::mjpeg : CameraFormat::yuyv, cameraSize, 30}},
         .paint = [&](const testing::VirtualCamera::Mode &, std::uint32_t number) {
             return run.reel.at(number);
         }});
    std::filesystem::remove(run.movie);
    ChildProcess recorder({QCoreApplication::applicationFilePath().toStdString(), "--record-own",
                           isRecorded ? run.movie.string() : "", std::to_string(previewPixels)});
    if (!testing::eventually([&] { return camera.sent() > 5; }))
        throw std::runtime_error("nobody takes the camera's pictures");
    Figures figures = measure(recorder, run.seconds, [&] { return camera.sent(); });
    recorder.signal(SIGINT);
    recorder.waitForExit();
    if (isRecorded)
        readMovie(run, figures);
    return figures;
}

Figures runFfmpeg(const Run &run, bool isEncoded) {
    PipedCamera camera(run.reel);
    std::vector<std::string> command{"ffmpeg", "-v", "error", "-nostdin", "-y"};
    if (run.isMjpeg)
        command.insert(command.end(), {"-f", "mjpeg"});
    else
        command.insert(command.end(), {"-f", "rawvideo", "-pix_fmt", "yuyv422", "-video_size", "1280x720"});
    command.insert(command.end(), {"-framerate", "30", "-i", "pipe:" + std::to_string(camera.descriptor())});
    if (isEncoded)
        command.insert(command.end(), {"-c:v", "libx264", "-preset", "superfast", "-crf", "23", "-pix_fmt",
                                       "yuv420p", run.movie});
    else
        command.insert(command.end(), {"-c", "copy", "-f", "null", "-"});
    ChildProcess recorder(command, {}, camera.descriptor());
    camera.closeReader();
    Figures figures = measure(recorder, run.seconds, [&] { return camera.sent(); });
    recorder.signal(SIGINT);
    recorder.waitForExit();
    if (isEncoded)
        readMovie(run, figures);
    return figures;
}

Figures medianOf(const std::vector<Figures> &rounds) {
    const auto median = [&](double Figures::*member) {
        std::vector<double> values;
        for (const Figures &each : rounds)
            values.push_back(each.*member);
        std::ranges::sort(values);
        return values[values.size() / 2];
    };
    return {median(&Figures::cpuPerPicture), median(&Figures::pssMiB), median(&Figures::ssim),
            median(&Figures::kilobytesPerSecond), median(&Figures::picturesPerSecond)};
}

void print(const char *name, const Figures &figures) {
    std::printf("  %-26s %6.2f ms CPU a picture  %6.1f MiB", name, figures.cpuPerPicture, figures.pssMiB);
    if (figures.ssim > 0)
        std::printf("  SSIM %.4f  %7.1f kB/s  %5.2f pictures/s", figures.ssim, figures.kilobytesPerSecond,
                    figures.picturesPerSecond);
    std::printf("\n");
    std::fflush(stdout);
}

void compare(const QString &format, double seconds, int rounds, const std::filesystem::path &folder) {
    const bool isMjpeg = format == "mjpeg";
    const CameraReel reel(cameraSize, isMjpeg ? CameraFormat::mjpeg : CameraFormat::yuyv, reelLength);
    const auto run = [&](const char *name) {
        return Run{seconds, folder / (format.toStdString() + "-" + name + ".mov"), reel, isMjpeg};
    };
    std::vector<Figures> ours, other, piped, shown, preview;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(runOurs(run("ours"), true, 0));
        other.push_back(runFfmpeg(run("ffmpeg"), true));
        shown.push_back(runOurs(run("shown"), true, 240));
        piped.push_back(runFfmpeg(run("piped"), false));
        preview.push_back(runOurs(run("preview"), false, 240));
    }
    std::printf("%s, 1280x720, 30 pictures a second, %d rounds of %.0f s\n", qUtf8Printable(format), rounds,
                seconds);
    print("ours", medianOf(ours));
    print("ours with preview", medianOf(shown));
    print("ours, preview alone", medianOf(preview));
    print("ffmpeg", medianOf(other));
    print("ffmpeg, reading the pipe", medianOf(piped));
    const Figures one = medianOf(ours);
    const Figures two = medianOf(other);
    std::printf("  ours/ffmpeg: CPU %.2f (%.2f without what reading the pipe costs), size %.2f, SSIM %+.4f\n",
                one.cpuPerPicture / two.cpuPerPicture,
                one.cpuPerPicture / (two.cpuPerPicture - medianOf(piped).cpuPerPicture),
                one.kilobytesPerSecond / two.kilobytesPerSecond, one.ssim - two.ssim);
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--record-own")
        return recordOwnCamera(arguments.value(2).toStdString(), arguments.value(3).toInt());
    QCommandLineParser parser;
    const QCommandLineOption seconds("seconds", {}, "N", "10");
    const QCommandLineOption rounds("rounds", {}, "N", "3");
    const QCommandLineOption formats("formats", {}, "NAME,...", "yuyv,mjpeg");
    const QCommandLineOption keep("keep", {}, "DIR");
    parser.addOptions({seconds, rounds, formats, keep});
    parser.process(application);
    const testing::SoundSession session;
    const testing::TemporaryFolder folder;
    const std::filesystem::path kept = parser.value(keep).toStdString();
    for (const QString &format : parser.value(formats).split(','))
        compare(format, parser.value(seconds).toDouble(), parser.value(rounds).toInt(),
                kept.empty() ? std::filesystem::path(folder.path()) : kept);
    return 0;
}

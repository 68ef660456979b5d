// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QImage>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <limits>
#include <map>
#include <optional>
#include <set>

namespace vantrell::testing {

namespace {

constexpr int codeX = 16;
constexpr int codeY = 32;

/// A recording with sound that was paused, of a screen on which numbers count.
class RecordedMovie {
public:
    RecordedMovie() {
        program.start({"record", "--mic", "--system-audio", "--json"});
        program.waitForLog("recording started");
        count(2.5);
        program.signal(SIGUSR1);
        program.waitForLog("recording paused");
        program.signal(SIGUSR1);
        program.waitForLog("recording resumed");
        count(2.5);
        program.signal(SIGINT);
        const auto ended = program.finish();
        EXPECT_EQ(ended.exitCode, 0) << ended.errors;
        path = ended.json().at("file").get<std::string>();
        forEachPicture(path, [this](const MoviePicture &picture) {
            if (const auto number =
                    framecode::read(picture.luma + codeY * picture.lumaStride + codeX, picture.lumaStride))
                shownAt[int(*number)] = picture.seconds;
        });
        // A busy machine drops pictures.
        EXPECT_GT(shownAt.size(), 40u);
    }

    CaptureProgram program;
    std::filesystem::path path;
    /// Number to the time at which the movie shows it.
    std::map<int, double> shownAt;

private:
    void count(double seconds) {
        const double until = hostNow() + seconds;
        for (double next = hostNow(); next < until; next += 1 / 30.0) {
            m_painter.drawNumber(++m_number, codeX, codeY);
            m_painter.sync();
            eventually([next] { return hostNow() >= next; });
        }
    }

    X11Painter m_painter;
    std::uint32_t m_number = 0;
};

/// Runs a player to its end; what it complained of.
std::string play(const QString &player, const QStringList &arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(player, arguments);
    constexpr int patience = 180'000;
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        ADD_FAILURE() << player.toStdString() << " failed: " << process.exitCode() << ' '
                      << process.errorString().toStdString();
    return process.readAll().toStdString();
}

/// When the movie shows what is on a player's picture.
std::optional<double> timeOf(const std::filesystem::path &picture, const RecordedMovie &movie) {
    const QImage image = QImage(picture.c_str()).convertToFormat(QImage::Format_Grayscale8);
    if (image.isNull())
        return std::nullopt;
    const auto number = framecode::read(image.constScanLine(codeY) + codeX, image.bytesPerLine());
    const auto shown = movie.shownAt.find(number ? int(*number) : -1);
    return shown == movie.shownAt.end() ? std::nullopt : std::optional(shown->second);
}

/// The picture that the movie begins to show then is on show at `seconds`, or nearly.
void expectOnShow(std::optional<double> since, double seconds, const RecordedMovie &movie,
                  const std::string &output) {
    // Some show the picture of that time, some the next one.
    constexpr double tolerance = 0.1;
    ASSERT_TRUE(since) << output;
    // On a busy machine the next one comes late.
    double next = std::numeric_limits<double>::max();
    for (const auto &[number, time] : movie.shownAt)
        next = time > *since ? std::min(next, time) : next;
    EXPECT_LE(*since, seconds + tolerance) << output;
    EXPECT_GE(next, seconds - tolerance) << output;
}

/// The first picture after a jump: players show pictures from before they seek, and go on behind it.
std::optional<double> timeAfterSeeking(const std::filesystem::path &pictures, const RecordedMovie &movie) {
    // More than any gap between pictures that follow each other.
    constexpr double jump = 0.6;
    std::set<std::filesystem::path> files{std::filesystem::directory_iterator(pictures), {}};
    double last = 0;
    for (const auto &file : files) {
        const auto time = timeOf(file, movie);
        if (time && *time > last + jump)
            return time;
        last = time.value_or(last);
    }
    return std::nullopt;
}

TEST(Players, openARecordingAndSeekInIt) {
    const X11Session session({.width = 640, .height = 360});
    const SoundSession sound;
    const RecordedMovie movie;
    const QString file = QString::fromStdString(movie.path.string());
    // Before and behind the joint, and back from there: each player starts anew.
    for (const double seconds : {4.2, 1.3}) {
        const QString time = QString::number(seconds);
        const std::filesystem::path folder = movie.program.folder() / time.toStdString();
        std::filesystem::create_directories(folder / "gst");
        const QString path = QString::fromStdString(folder.string());

        std::string output =
            play(QStringLiteral("mpv"),
                 {QStringLiteral("--no-config"), QStringLiteral("--really-quiet"),
                  QStringLiteral("--ao=null"), QStringLiteral("--vo=image"),
                  QStringLiteral("--vo-image-format=png"), QStringLiteral("--vo-image-outdir=") + path,
                  QStringLiteral("--start=") + time, QStringLiteral("--frames=1"), file});
        expectOnShow(timeOf(folder / "00000001.png", movie), seconds, movie, output);

        output = play(QStringLiteral("gst-play-1.0"),
                      {QStringLiteral("--no-interactive"), QStringLiteral("-s"), time,
                       QStringLiteral("--videosink=videoconvert ! pngenc ! multifilesink location=") + path +
                           QStringLiteral("/gst/%05d.png"),
                       QStringLiteral("--audiosink=fakesink"), file});
        expectOnShow(timeAfterSeeking(folder / "gst", movie), seconds, movie, output);

        output = play(QStringLiteral("node"),
                      {QStringLiteral(VANTRELL_SOURCE_DIR "/service/test/support/showFrame.js"), file, time,
                       path + QStringLiteral("/browser.png")});
        expectOnShow(timeOf(folder / "browser.png", movie), seconds, movie, output);

        EXPECT_EQ(play(QStringLiteral("ffplay"),
                       {QStringLiteral("-loglevel"), QStringLiteral("warning"), QStringLiteral("-nostats"),
                        QStringLiteral("-autoexit"), QStringLiteral("-ss"), time, QStringLiteral("-t"),
                        QStringLiteral("0.5"), file}),
                  "");
    }
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/StagedCameraSession.h"
#include "Platform/Camera/PipeWireCameraSource.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/CameraPainter.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"
#include "TestSupport/TemporaryFolder.h"

#include <atomic>

namespace vantrell {
namespace {

using namespace testing;

/// One movie file of a session with what it tells.
class FileRun {
public:
    FileRun(CameraSession &session, std::filesystem::path file)
        : m_session(session), m_file(std::move(file)) {
        session.startRecording(m_file, {.firstFrame = [this](double hostTime) { m_anchor = hostTime; },
                                        .stoppedWithError =
                                            [this](PlatformError error) {
                                                const std::scoped_lock lock(m_mutex);
                                                m_error = std::move(error);
                                            },
                                        .recordingFinished =
                                            [this](RecordingSummary summary) {
                                                const std::scoped_lock lock(m_mutex);
                                                m_summary = summary;
                                                m_isOver = true;
                                            },
                                        .recordingFailed = [this](PlatformError) { m_isOver = true; }});
    }

    RecordingSummary stop() {
        m_session.stopRecording();
        return waitForEnd();
    }
    RecordingSummary waitForEnd() {
        EXPECT_TRUE(eventually([this] { return m_isOver.load(); }));
        const std::scoped_lock lock(m_mutex);
        EXPECT_TRUE(m_summary);
        return m_summary.value_or(RecordingSummary{});
    }
    std::optional<PlatformError> error() {
        const std::scoped_lock lock(m_mutex);
        return m_error;
    }
    double anchor() const { return m_anchor; }
    const std::filesystem::path &file() const { return m_file; }

private:
    CameraSession &m_session;
    const std::filesystem::path m_file;
    std::atomic<double> m_anchor = 0;
    std::atomic<bool> m_isOver = false;
    std::mutex m_mutex;
    std::optional<PlatformError> m_error;
    std::optional<RecordingSummary> m_summary;
};

class CameraSessions : public ::testing::Test {
protected:
    std::unique_ptr<CameraSession> open() {
        auto session = std::make_unique<StagedCameraSession>(
            std::make_unique<PipeWireCameraSource>(PipeWireRemote(), std::nullopt),
            std::make_shared<EncoderChoice>(EncoderPreference::software, std::vector<LibavEncoder::Codec>()));
        const auto opened = runTask(session->open({}));
        EXPECT_TRUE(opened.has_value());
        return session;
    }
    std::filesystem::path file(const std::string &name) const { return m_folder / (name + ".mov"); }
    /// Lets the camera send so many more pictures.
    static bool waitForPictures(const VirtualCamera &camera, int more) {
        const int wanted = camera.sent() + more;
        return eventually([&] { return camera.sent() >= wanted; });
    }

    TemporaryFolder m_folder;
    SoundSession m_sound;
};

/// Every picture of the movie must lie where the camera took it; returns how many there are.
int expectTrueTimes(const FileRun &run, const VirtualCamera &camera, bool mayRepeatLast = true) {
    int pictures = 0;
    std::optional<std::uint32_t> last;
    forEachPicture(run.file(), [&](const MoviePicture &picture) {
        const auto number = framecode::read(picture.luma, picture.lumaStride);
        ASSERT_TRUE(number) << "picture " << pictures << " of " << run.file();
        ++pictures;
        if (mayRepeatLast && last == number)
            return;
        EXPECT_TRUE(!last || *number > *last);
        last = number;
        EXPECT_NEAR(run.anchor() + picture.seconds, camera.hostTimeOf(*number), 0.001);
    });
    return pictures;
}

TEST_F(CameraSessions, RecordEveryPictureAtItsTimeWhateverTheFormat) {
    for (const CameraFormat format : {CameraFormat::yuyv, CameraFormat::nv12, CameraFormat::i420,
                                      CameraFormat::mjpeg, CameraFormat::h264}) {
        const bool isCompressed = format == CameraFormat::mjpeg || format == CameraFormat::h264;
        // A damaged picture of a video stream spoils those that refer to it: one is enough.
        VirtualCamera camera({.modes = {{format, {640, 480}, 30}},
                              .spoil = [format](std::uint32_t number, std::vector<std::uint8_t> &bytes) {
                                  if ((format == CameraFormat::mjpeg && number % 16 == 9) ||
                                      (format == CameraFormat::h264 && number == 25))
                                      bytes.resize(bytes.size() / 2);
                              }});
        const auto session = open();
        FileRun run(*session, file(std::to_string(int(format))));
        ASSERT_TRUE(waitForPictures(camera, 40));
        const double stopped = hostNow();
        const RecordingSummary summary = run.stop();
        const int pictures = expectTrueTimes(run, camera);
        EXPECT_EQ(pictures, summary.frames);
        // All but those that were under way, and the damaged ones. A busy machine's are counted as dropped,
        // but for those that the server has lost.
        EXPECT_GE(summary.frames + summary.droppedFrames, format == CameraFormat::h264 ? 5 : 18)
            << int(format);
        EXPECT_GT(summary.durationSeconds, stopped - run.anchor() - 0.02);
        EXPECT_LT(summary.durationSeconds, hostNow() - run.anchor());
        EXPECT_FALSE(run.error());
        forEachPicture(run.file(), [&](const MoviePicture &picture) {
            const auto [y, cb, cr] = picture.at(320, 240);
            EXPECT_NEAR(cb,
                        isCompressed ? 128 - 28 * (format == CameraFormat::mjpeg ? 0.878 : 1)
                                     : CameraPainter::groundCb,
                        3);
            EXPECT_NEAR(cr,
                        isCompressed ? 128 + 32 * (format == CameraFormat::mjpeg ? 0.878 : 1)
                                     : CameraPainter::groundCr,
                        3);
        });
    }
}

TEST_F(CameraSessions, HoldThePictureWhileNoneComesAndUpToTheStop) {
    VirtualCamera camera;
    const auto session = open();
    FileRun run(*session, file("held"));
    ASSERT_TRUE(waitForPictures(camera, 10));
    camera.hang();
    const double hung = hostNow();
    EXPECT_TRUE(eventually([&] { return hostNow() > hung + 1.5; }));
    camera.goOn();
    ASSERT_TRUE(waitForPictures(camera, 10));
    camera.hang();
    const double stopped = hostNow();
    EXPECT_GT(run.stop().durationSeconds, stopped - run.anchor() - 0.02);
    EXPECT_GE(expectTrueTimes(run, camera), 4);

    // A file that begins while nothing comes shows what was there last.
    FileRun still(*session, file("still"));
    EXPECT_TRUE(eventually([&] { return still.anchor() > 0; }));
    EXPECT_GT(still.stop().frames, 0);
    int pictures = 0;
    forEachPicture(still.file(), [&](const MoviePicture &picture) {
        EXPECT_TRUE(framecode::read(picture.luma, picture.lumaStride));
        ++pictures;
    });
    EXPECT_GE(pictures, 1);
}

TEST_F(CameraSessions, FinishTheFileWhenTheCameraGoesAndRecordAgainWhenItIsBack) {
    VirtualCamera camera;
    const auto session = open();
    EXPECT_EQ(session->camera().name, "Virtual camera");
    FileRun first(*session, file("first"));
    ASSERT_TRUE(waitForPictures(camera, 10));
    camera.unplug();
    EXPECT_GT(first.waitForEnd().durationSeconds, 0.1);
    ASSERT_TRUE(first.error());
    EXPECT_TRUE(isCameraError(*first.error(), CameraErrorCode::unplugged));
    EXPECT_GE(expectTrueTimes(first, camera), 2);
    session->stopRecording();

    camera.plug();
    ASSERT_TRUE(waitForPictures(camera, 2));
    FileRun second(*session, file("second"));
    ASSERT_TRUE(waitForPictures(camera, 10));
    second.stop();
    EXPECT_GE(expectTrueTimes(second, camera), 2);
}

TEST_F(CameraSessions, FitAPictureThatChangesItsSizeIntoTheFirst) {
    VirtualCamera camera;
    const auto session = open();
    FileRun run(*session, file("fitted"));
    ASSERT_TRUE(waitForPictures(camera, 5));
    // Wider: a bar above and below.
    camera.changeMode({CameraFormat::nv12, {1280, 480}, 30});
    ASSERT_TRUE(eventually([&] { return camera.mode().size.width == 1280; }));
    ASSERT_TRUE(waitForPictures(camera, 15));
    run.stop();
    int barred = 0;
    forEachPicture(run.file(), [&](const MoviePicture &picture) {
        EXPECT_EQ(picture.width, 640);
        EXPECT_EQ(picture.height, 480);
        if (picture.at(320, 60).y < 30 && picture.at(320, 420).y < 30 && picture.at(320, 240).y > 60)
            ++barred;
    });
    EXPECT_GE(barred, 2);
}

TEST_F(CameraSessions, ShowASquareOfTheLivePictureWithoutEncoding) {
    for (const CameraFormat format : {CameraFormat::yuyv, CameraFormat::mjpeg}) {
        VirtualCamera camera({.modes = {{format, {1280, 720}, 30}}});
        const auto session = open();
        int told = 0;
        session->showPreview(180, [&] { ++told; });
        ASSERT_TRUE(eventually([&] { return told == 1; }));
        // Nobody took it: no other is made.
        ASSERT_TRUE(waitForPictures(camera, 5));
        settle();
        EXPECT_EQ(told, 1);
        const QImage picture = session->preview();
        ASSERT_EQ(picture.size(), QSize(180, 180));
        // The ground: Y 90 or 98, Cb 100, Cr 160 in BT.601, of which a JPEG has the full range.
        const QColor colour = picture.pixelColor(150, 100);
        EXPECT_NEAR(colour.red(), 142, 8);
        EXPECT_NEAR(colour.green(), 78, 8);
        EXPECT_NEAR(colour.blue(), 35, 8);
        ASSERT_TRUE(eventually([&] { return told == 2; }));

        // The preview goes on beside a file and ends when it is not wanted any more.
        FileRun run(*session, file("seen" + std::to_string(int(format))));
        EXPECT_TRUE(eventually([&] {
            session->preview();
            return told > 8;
        }));
        EXPECT_GT(run.stop().frames, 3);
        session->showPreview(0, {});
        const int before = told;
        ASSERT_TRUE(waitForPictures(camera, 3));
        settle();
        EXPECT_EQ(told, before);
    }
}

TEST_F(CameraSessions, TellWhyACameraIsNotOpenedAndStopInTheMiddleOfIt) {
    StagedCameraSession session(std::make_unique<PipeWireCameraSource>(PipeWireRemote(), std::nullopt),
                                nullptr);
    const auto opened = runTask(session.open({}));
    ASSERT_FALSE(opened);
    EXPECT_TRUE(isCameraError(std::get<PlatformError>(opened.error()), CameraErrorCode::noCamera));

    VirtualCamera camera;
    const auto file = open();
    {
        FileRun run(*file, m_folder / "no folder" / "movie.mov");
        EXPECT_TRUE(waitForPictures(camera, 3));
        file->stopRecording();
    }
}

} // namespace
} // namespace vantrell

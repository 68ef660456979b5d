// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraRecorder.h"

#include "Platform/Camera/PipeWireCameraSource.h"
#include "Platform/Camera/PipeWireCameraWatch.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/Sound/SoundSession.h"

#include <gmock/gmock.h>

#include <atomic>
#include <set>

namespace vantrell {
namespace {

using namespace testing;
using ::testing::ElementsAre;

std::vector<std::string> idsOf(const std::expected<std::vector<Camera>, PlatformError> &cameras) {
    std::vector<std::string> ids;
    for (const Camera &camera : cameras.value())
        ids.push_back(camera.isDefault ? camera.id + " (default)" : camera.id);
    return ids;
}

std::unique_ptr<CameraSource> makeSource(std::optional<std::string> id = std::nullopt) {
    return std::make_unique<PipeWireCameraSource>(PipeWireRemote(), std::move(id));
}

class PipeWireCameras : public ::testing::Test {
protected:
    SoundSession m_session;
};

TEST_F(PipeWireCameras, AreListedWithTheDefaultFirstAndWatchedAcrossPluggingAndRestarts) {
    std::atomic<int> changes = 0;
    const PipeWireCameraWatch watch({}, [&] { ++changes; });
    EXPECT_THAT(idsOf(listPipeWireCameras({})), ElementsAre());
    VirtualCamera front({.name = "front", .description = "Front camera"});
    EXPECT_TRUE(eventually([&] { return changes > 0; }));
    VirtualCamera back({.name = "back"});
    EXPECT_TRUE(eventually([&] { return idsOf(listPipeWireCameras({})).size() == 2; }));
    EXPECT_EQ(listPipeWireCameras({})->front().name, "Front camera");

    m_session.setDefaultCamera("back");
    EXPECT_THAT(idsOf(listPipeWireCameras({})), ElementsAre("back (default)", "front"));
    const int before = changes;
    back.unplug();
    EXPECT_TRUE(eventually([&] { return changes > before; }));
    EXPECT_TRUE(eventually([&] { return idsOf(listPipeWireCameras({})).size() == 1; }));

    m_session.killServer();
    EXPECT_TRUE(isCameraError(listPipeWireCameras({}).error(), CameraErrorCode::noCameraServer));
    m_session.startServer();
    const int restarted = changes;
    back.unplug();
    back.plug();
    EXPECT_TRUE(eventually([&] { return changes > restarted; }));
    EXPECT_THAT(idsOf(listPipeWireCameras({})), ElementsAre("back (default)"));
}

TEST_F(PipeWireCameras, SendEachPictureOnceAtTheTimeItWasTaken) {
    for (const CameraFormat format :
         {CameraFormat::yuyv, CameraFormat::nv12, CameraFormat::i420, CameraFormat::mjpeg}) {
        VirtualCamera camera({.modes = {{format, {642, 362}, 30}}});
        CameraRecorder recorder(makeSource());
        ASSERT_TRUE(recorder.waitForPictures(15)) << int(format);
        const auto pictures = recorder.pictures();
        double last = 0;
        std::set<std::uint32_t> numbers;
        for (const auto &picture : pictures) {
            EXPECT_EQ(picture.size, (PixelSize{642, 362}));
            EXPECT_EQ(picture.format, format);
            EXPECT_GT(picture.hostTime, last);
            last = picture.hostTime;
            if (format == CameraFormat::mjpeg)
                continue;
            ASSERT_TRUE(picture.number) << int(format);
            EXPECT_TRUE(numbers.insert(*picture.number).second);
            EXPECT_NEAR(picture.hostTime, camera.hostTimeOf(*picture.number), 0.001);
        }
        EXPECT_EQ(recorder.source().camera().id, "vcam");
        EXPECT_EQ(recorder.states().size(), 1u);
    }
}

TEST_F(PipeWireCameras, AreAskedForTheLargestFluentMode) {
    VirtualCamera camera({.modes = {{CameraFormat::yuyv, {640, 480}, 30},
                                    {CameraFormat::yuyv, {1280, 720}, 10},
                                    {CameraFormat::yuyv, {2560, 1440}, 5},
                                    {CameraFormat::mjpeg, {1280, 720}, 30},
                                    {CameraFormat::mjpeg, {1280, 720}, 60}}});
    CameraRecorder recorder(makeSource());
    ASSERT_TRUE(recorder.waitForPictures(2));
    EXPECT_EQ(camera.mode(), (VirtualCamera::Mode{CameraFormat::mjpeg, {1280, 720}, 30}));
}

TEST_F(PipeWireCameras, ThatTellNoTimesOrWrongOnesAreTimedByArrival) {
    VirtualCamera silent({.name = "silent", .tellsTime = false});
    VirtualCamera liar({.name = "liar", .falsifyTime = [](std::uint32_t number, std::int64_t taken) {
                            return number % 5 == 2 ? 0 : number % 5 == 4 ? taken + 9'000'000'000 : taken;
                        }});
    for (VirtualCamera *camera : {&silent, &liar}) {
        CameraRecorder recorder(makeSource(camera == &silent ? "silent" : "liar"));
        ASSERT_TRUE(recorder.waitForPictures(20));
        double last = 0;
        for (const auto &picture : recorder.pictures()) {
            EXPECT_GT(picture.hostTime, last);
            last = picture.hostTime;
            ASSERT_TRUE(picture.number);
            // What a loaded machine adds to the way is in it.
            EXPECT_NEAR(picture.hostTime, camera->hostTimeOf(*picture.number), 0.5);
        }
    }
}

TEST_F(PipeWireCameras, ThatGoAwayAreToldAndGoOnWhenTheyAreBack) {
    VirtualCamera camera({.name = "mine"});
    VirtualCamera other({.name = "other"});
    CameraRecorder recorder(makeSource("mine"));
    ASSERT_TRUE(recorder.waitForPictures(3));
    camera.unplug();
    const auto error = recorder.waitForState(2);
    ASSERT_TRUE(error);
    EXPECT_TRUE(isCameraError(*error, CameraErrorCode::unplugged)) << error->message;
    camera.plug();
    EXPECT_TRUE(recorder.waitForPictures(3));
    EXPECT_EQ(recorder.source().camera().id, "mine");
    EXPECT_EQ(other.sent(), 0);

    // The whole server, with its cameras.
    m_session.killServer();
    EXPECT_TRUE(recorder.waitForState(4).has_value());
    m_session.startServer();
    camera.unplug();
    camera.plug();
    EXPECT_TRUE(recorder.waitForPictures(3));
}

TEST_F(PipeWireCameras, ThatChangeTheirSizeGoOnWithTheNewOne) {
    VirtualCamera camera;
    CameraRecorder recorder(makeSource("not there"));
    ASSERT_TRUE(recorder.waitForPictures(3));
    camera.changeMode({CameraFormat::nv12, {800, 600}, 15});
    EXPECT_TRUE(eventually([&] { return recorder.pictures().back().size == (PixelSize{800, 600}); }));
    EXPECT_EQ(recorder.pictures().back().format, CameraFormat::nv12);
}

TEST_F(PipeWireCameras, ThatAreNotThereOrSendNothingAreToldWithinFiveSeconds) {
    {
        CameraRecorder none(makeSource());
        const auto error = none.waitForState(1);
        ASSERT_TRUE(error);
        EXPECT_TRUE(isCameraError(*error, CameraErrorCode::noCamera)) << error->message;
        // Plugged in later it is taken.
        const VirtualCamera late;
        EXPECT_TRUE(none.waitForPictures(1));
    }
    VirtualCamera camera;
    camera.hang();
    CameraRecorder recorder(makeSource());
    const auto error = recorder.waitForState(1);
    ASSERT_TRUE(error);
    EXPECT_TRUE(isCameraError(*error, CameraErrorCode::noPicture)) << error->message;
}

} // namespace
} // namespace vantrell

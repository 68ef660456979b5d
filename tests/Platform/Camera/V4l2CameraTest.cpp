// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraRecorder.h"
#include "ScriptedKernel.h"

#include "Platform/Camera/V4l2CameraList.h"
#include "Platform/Camera/V4l2CameraSource.h"
#include "Platform/CameraError.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/CameraPainter.h"
#include "TestSupport/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <fstream>

namespace vantrell {
namespace {

using namespace testing;

const std::string device = "/dev/video0";

class V4l2Cameras : public ::testing::Test {
protected:
    std::unique_ptr<CameraSource> makeSource(std::optional<std::string> id = std::nullopt) {
        return std::make_unique<V4l2CameraSource>(m_kernel, std::move(id));
    }
    /// Sends a numbered picture that was taken now.
    double send(std::uint32_t number, double time, const std::string &path = device) {
        const auto bytes = m_painter.paint(number);
        m_kernel.send(path, {.bytes = {bytes.begin(), bytes.end()}, .time = time});
        return time;
    }
    bool waitForStream(const std::string &path = device) {
        return eventually([&] { return m_kernel.streaming(path).has_value(); });
    }

    ScriptedKernel m_kernel;
    CameraPainter m_painter{CameraFormat::yuyv, {640, 480}};
};

TEST_F(V4l2Cameras, AreListedOnceUnderANameThatStays) {
    m_kernel.plug("/dev/video0", {.card = "Webcam", .stableName = "usb-Webcam_1234"});
    m_kernel.plug("/dev/video1", {.card = "Webcam", .isCamera = false});
    m_kernel.plug("/dev/video2", {.card = "Infrared", .modes = {}});
    m_kernel.plug("/dev/video3", {.card = "Webcam", .stableName = "usb-Webcam_1234"});
    m_kernel.plug("/dev/video4", {.card = "Other", .bus = "usb-2"});
    m_kernel.plug("/dev/video5", {.openError = EACCES});
    const V4l2CameraList list = listV4l2Cameras(m_kernel);
    ASSERT_EQ(list.cameras.size(), 2u);
    EXPECT_EQ(list.cameras[0].camera, (Camera{"usb-Webcam_1234", "Webcam", true}));
    EXPECT_EQ(list.cameras[1].camera, (Camera{"usb-2 Other", "Other", false}));
    EXPECT_TRUE(list.isRefused);
    EXPECT_EQ(m_kernel.openDescriptors(), 0);
}

TEST_F(V4l2Cameras, SendPicturesWithTheSensorsTimeAndWithoutTheDamagedOnes) {
    m_kernel.plug(device, {.modes = {{CameraFormat::yuyv, {640, 480}, 30},
                                     {CameraFormat::yuyv, {1280, 720}, 8},
                                     {CameraFormat::nv12, {320, 240}, 30}}});
    {
        CameraRecorder recorder(makeSource());
        ASSERT_TRUE(waitForStream());
        EXPECT_EQ(m_kernel.streaming(device), (CameraMode{CameraFormat::yuyv, {640, 480}, 30}));
        std::vector<std::vector<std::uint8_t>> painted;
        for (std::uint32_t number = 0; number < 12; ++number) {
            const auto bytes = m_painter.paint(number);
            painted.emplace_back(bytes.begin(), bytes.end());
        }
        std::vector<double> times;
        const double begin = hostNow();
        for (std::uint32_t number = 0; number < 12; ++number) {
            ScriptedKernel::Picture picture{.bytes = painted[number], .time = begin - 0.5 + number * 0.033};
            picture.isDamaged = number == 4;
            if (number == 6)
                picture.bytes.resize(picture.bytes.size() / 3);
            times.push_back(picture.time);
            m_kernel.send(device, std::move(picture));
        }
        ASSERT_TRUE(recorder.waitForPictures(10 - recorder.pictures().size()));
        for (const auto &picture : recorder.pictures()) {
            ASSERT_TRUE(picture.number);
            EXPECT_NE(*picture.number, 4u);
            EXPECT_NE(*picture.number, 6u);
            EXPECT_NEAR(picture.hostTime, times[*picture.number], 1e-4);
        }
    }
    EXPECT_EQ(m_kernel.openDescriptors(), 0);
}

TEST_F(V4l2Cameras, InUseRefusedOrNotThereAreToldAndTakenOnceTheyAreFree) {
    const std::vector<std::pair<ScriptedKernel::Device, CameraErrorCode>> cases{
        {{.streamError = EBUSY}, CameraErrorCode::inUse},
        {{.openError = EACCES}, CameraErrorCode::accessRefused},
        {{.isCamera = false}, CameraErrorCode::noCamera}};
    for (const auto &[plugged, code] : cases) {
        m_kernel.plug(device, plugged);
        CameraRecorder recorder(makeSource());
        const auto error = recorder.waitForState(1);
        ASSERT_TRUE(error);
        EXPECT_TRUE(isCameraError(*error, code)) << error->message;
        m_kernel.plug(device, {});
        ASSERT_TRUE(waitForStream());
        send(1, hostNow());
        EXPECT_TRUE(recorder.waitForPictures(1 - recorder.pictures().size()));
    }
}

TEST_F(V4l2Cameras, ThatArePulledOutAreWaitedForUnderWhateverNumber) {
    m_kernel.plug(device, {.stableName = "mine"});
    m_kernel.plug("/dev/video7", {.card = "Other", .stableName = "other"});
    CameraRecorder recorder(makeSource("mine"));
    ASSERT_TRUE(waitForStream());
    send(1, hostNow());
    ASSERT_TRUE(eventually([&] { return recorder.pictures().size() == 1; }));
    m_kernel.unplug(device);
    const auto error = recorder.waitForState(2);
    ASSERT_TRUE(error);
    EXPECT_TRUE(isCameraError(*error, CameraErrorCode::unplugged)) << error->message;
    m_kernel.plug("/dev/video3", {.stableName = "mine"});
    ASSERT_TRUE(waitForStream("/dev/video3"));
    send(2, hostNow(), "/dev/video3");
    EXPECT_TRUE(eventually([&] { return recorder.pictures().size() == 2; }));
    EXPECT_FALSE(m_kernel.streaming("/dev/video7"));
}

TEST_F(V4l2Cameras, TimesOfAnotherClockOrNoneAreThoseOfArrival) {
    m_kernel.plug(device, {});
    CameraRecorder recorder(makeSource("unknown"));
    ASSERT_TRUE(waitForStream());
    const double begin = hostNow();
    double last = 0;
    std::size_t count = 0;
    for (const double told : {0.0, 1.7e9, begin, begin - 60, hostNow() + 30}) {
        send(std::uint32_t(count), told);
        ASSERT_TRUE(eventually([&] { return recorder.pictures().size() > count; }));
        const double time = recorder.pictures()[count++].hostTime;
        EXPECT_GT(time, last);
        EXPECT_GE(time, begin - 0.01);
        EXPECT_LE(time, hostNow());
        last = time;
    }
}

TEST_F(V4l2Cameras, DevicesThatComeAndGoAreNoticed) {
    struct FolderKernel : V4l2Kernel {
        TemporaryFolder place;
        std::filesystem::path folder() const override { return place.path(); }
    } kernel;
    std::atomic<int> changes = 0;
    const V4l2Watch watch(kernel, [&] { ++changes; });
    std::ofstream(kernel.place / "sda1");
    std::ofstream(kernel.place / "video10");
    std::ofstream(kernel.place / "video2");
    EXPECT_TRUE(eventually([&] { return changes > 0; }));
    const std::string folder = kernel.folder();
    EXPECT_EQ(kernel.devices(), (std::vector{folder + "/video2", folder + "/video10"}));
    // Files are no cameras.
    EXPECT_TRUE(listV4l2Cameras(kernel).cameras.empty());
    const int before = changes;
    std::filesystem::remove(kernel.place / "video2");
    EXPECT_TRUE(eventually([&] { return changes > before; }));
}

} // namespace
} // namespace vantrell

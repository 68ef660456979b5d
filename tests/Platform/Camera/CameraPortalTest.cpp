// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraRecorder.h"

#include "Platform/Camera/DesktopCameraBackend.h"
#include "Platform/CameraError.h"
#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QDBusArgument>

namespace vantrell {
namespace {

using namespace testing;

/// A portal that asks nobody: the test answers, and the way to the server is open or not.
class CameraPortals : public ::testing::Test {
protected:
    CameraPortals() {
        m_portal.addMethod("AccessCamera", "a{sv}", "o", "ret = dbus.ObjectPath('/')");
        // The dialog's answer is a signal of an object that is made for the question.
        m_portal.addMethod("Answer", "su", "",
                           "import dbus.lowlevel\n"
                           "told = dbus.lowlevel.SignalMessage(args[0], 'org.freedesktop.portal.Request', "
                           "'Response')\n"
                           "told.append(args[1], {}, signature='ua{sv}')\n"
                           "self.connection.send_message(told)");
        allow(false);
    }

    void allow(bool isAllowed) {
        const std::string socket = std::getenv("PIPEWIRE_REMOTE");
        m_portal.addMethod("OpenPipeWireRemote", "a{sv}", "h",
                           isAllowed ? "import socket\nway = socket.socket(socket.AF_UNIX)\nway.connect('" +
                                           socket + "')\nret = dbus.types.UnixFd(way)"
                                     : "raise dbus.exceptions.DBusException('no', "
                                       "name='org.freedesktop.portal.Error.NotAllowed')");
    }

    /// Answers the dialog that is open: 0 is a yes.
    void answer(unsigned code) {
        std::size_t &answered = m_answered;
        ASSERT_TRUE(eventually([&] { return m_portal.calls("AccessCamera").size() > answered; }));
        const auto options = qdbus_cast<QVariantMap>(m_portal.calls("AccessCamera")[answered++].constFirst());
        const QString sender = m_bus.connection().baseService().mid(1).replace('.', '_');
        const QString path =
            "/org/freedesktop/portal/desktop/request/" + sender + "/" + options["handle_token"].toString();
        m_portal.call("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Camera", "Answer",
                      {path, code});
    }

    SoundSession m_session;
    SessionBus m_bus;
    ServiceDouble m_portal{m_bus, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                           "org.freedesktop.portal.Camera"};
    std::size_t m_answered = 0;
};

TEST_F(CameraPortals, OpenTheWayToTheCamerasOnceTheUserAllowsIt) {
    VirtualCamera camera;
    const auto backend = DesktopCameraBackend::throughPortal(m_bus.connection());
    const auto refused = runTask(backend->cameras({}));
    ASSERT_FALSE(refused);
    EXPECT_TRUE(isCameraError(refused.error(), CameraErrorCode::accessRefused)) << refused.error().message;
    {
        CameraRecorder recorder(backend->makeSource(std::nullopt));
        const auto error = recorder.waitForState(1);
        ASSERT_TRUE(error);
        EXPECT_TRUE(isCameraError(*error, CameraErrorCode::accessRefused)) << error->message;
    }

    auto no = backend->requestAccess({});
    answer(1);
    EXPECT_FALSE(runTask(std::move(no)));
    auto yes = backend->requestAccess({});
    answer(0);
    EXPECT_TRUE(runTask(std::move(yes)));

    allow(true);
    const auto cameras = runTask(backend->cameras({}));
    ASSERT_TRUE(cameras);
    ASSERT_EQ(cameras->size(), 1u);
    CameraRecorder recorder(backend->makeSource(std::nullopt));
    EXPECT_TRUE(recorder.waitForPictures(3));
    EXPECT_EQ(recorder.source().camera().id, "vcam");
}

} // namespace
} // namespace vantrell

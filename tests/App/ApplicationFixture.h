// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Session/ApplicationBus.h"
#include "Support/AtomicFile.h"
#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Camera/VirtualCamera.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>

#include <gtest/gtest.h>

#include <algorithm>

namespace vantrell::testing {

/// The application as it runs in a session: a display with a window manager, a bus, a service.
class ApplicationTest : public ::testing::Test {
protected:
    explicit ApplicationTest(bool hasCompositor = false)
        : x11({.width = 960, .height = 600, .windowManager = true, .compositor = hasCompositor}) {
        app.set("VANTRELL_API_URL", service.url());
        app.set("VANTRELL_API_KEY", key);
        app.set("DBUS_SESSION_BUS_ADDRESS", bus.address());
        app.set("QT_QPA_PLATFORM", "xcb");
        app.set("DISPLAY", x11.display());
        app.set("QT_LOGGING_RULES", "app.vantrell.*=true");
        app.set("HOME", app.folder());
    }

    void launch() {
        app.start({});
        app.waitForLog("launched");
    }
    QDBusMessage call(const std::string &method, const QVariantList &arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(applicationBus::name, applicationBus::path,
                                                              applicationBus::interface, method.c_str());
        message.setArguments(arguments);
        return bus.connection().call(message, QDBus::Block, 60'000);
    }
    std::string state() {
        const QDBusReply<QVariantMap> status = call("Status");
        return status.value().value(QStringLiteral("state")).toString().toStdString();
    }
    bool reaches(const std::string &wanted) {
        return eventually([&] { return state() == wanted; });
    }
    void record() {
        const QDBusMessage answer = call("Start", {QVariantMap()});
        ASSERT_NE(answer.type(), QDBusMessage::ErrorMessage) << answer.errorMessage().toStdString();
        ASSERT_TRUE(reaches("recording"));
    }
    /// Lines of the settings' only group.
    void writeSettings(const std::string &line) {
        const std::filesystem::path settings = app.folder() / "config/VantrellCapture/settings.ini";
        std::filesystem::create_directories(settings.parent_path());
        ASSERT_TRUE(writeFileAtomically(settings, "[General]\n" + line + "\n"));
    }
    QList<QVariantMap> cards() { return qdbus_cast<QList<QVariantMap>>(call("Items").arguments().value(0)); }
    int confirmed() {
        int count = 0;
        for (const nlohmann::json &capture : service.captures(key))
            count += capture.at("status") == "confirmed" ? 1 : 0;
        return count;
    }
    /// All that was recorded has arrived and nothing of it waits any more.
    void expectArrived(int captures) {
        EXPECT_TRUE(eventually([&] { return confirmed() == captures; })) << confirmed();
        EXPECT_TRUE(eventually([&] {
            const auto files = app.captureFiles();
            return std::ranges::none_of(files,
                                        [](const std::string &name) { return name.ends_with(".recording"); });
        }));
        EXPECT_EQ(confirmed(), captures);
        EXPECT_EQ(int(service.captures(key).size()), captures);
    }
    void quit() {
        call("Quit");
        EXPECT_EQ(app.finish().exitCode, 0);
    }

    X11Session x11;
    SessionBus bus;
    LocalService service;
    const std::string key = service.createKey();
    const std::string project = service.createProject("Tests");
    CaptureProgram app;
};

/// Before the application's environment is made.
struct CameraServer {
    SoundSession server;
    VirtualCamera camera;
};

/// With a camera that is switched on.
class ApplicationCameraTest : protected CameraServer, public ApplicationTest {
protected:
    explicit ApplicationCameraTest(bool hasCompositor = false) : ApplicationTest(hasCompositor) {
        writeSettings("cameraEnabled=true");
    }
    /// Records until the camera has sent so many pictures too.
    void recordPictures(int count) {
        record();
        const int wanted = camera.sent() + count;
        ASSERT_TRUE(eventually([&] { return camera.sent() >= wanted; }));
    }
    int cardsNamed(const char *beginning) {
        const QList<QVariantMap> shown = cards();
        return int(std::ranges::count_if(shown, [&](const QVariantMap &card) {
            return card[QStringLiteral("title")].toString().startsWith(QLatin1String(beginning));
        }));
    }
};

} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CaptureBar.h"

#include "Overlay/CaptureBarWindow.h"
#include "Panels/DesktopLink.h"
#include "Platform/X11/X11StillCapture.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <QAccessible>
#include <QApplication>
#include <QMenu>
#include <QScreen>

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;

/// Microphones that the test plugs in and out.
class PluggedSound final : public AudioBackend {
public:
    std::vector<Microphone> connected{{"built-in", "Built-in", true}, {"usb", "Headset", false}};
    AudioSourceHandlers handlers;
    int listening = 0;

    Task<std::expected<std::vector<Microphone>, PlatformError>> microphones(std::stop_token) override {
        co_return std::vector(connected);
    }
    std::unique_ptr<AudioSource> makeSource(AudioSourceRequest) override {
        struct Source final : AudioSource {
            explicit Source(PluggedSound &sound) : owner(sound) { ++owner.listening; }
            ~Source() override { --owner.listening; }
            void start(AudioSourceHandlers given) override { owner.handlers = std::move(given); }
            PluggedSound &owner;
        };
        return std::make_unique<Source>(*this);
    }
};

/// Cameras that the test plugs in and out.
class PluggedCameras final : public CameraBackend {
public:
    std::vector<Camera> connected{{"desk", "Desk camera", true}, {"usb", "Webcam", false}};
    Observers observers;
    int asked = 0;

    Task<std::expected<std::vector<Camera>, PlatformError>> cameras(std::stop_token) override {
        co_return std::vector(connected);
    }
    Observation observeCameras(std::function<void()> changed) override {
        return observers.observe(std::move(changed));
    }
    Task<bool> requestAccess(std::stop_token) override {
        ++asked;
        co_return true;
    }
    std::unique_ptr<CameraSource> makeSource(std::optional<std::string>) override { return nullptr; }
};

class CaptureBarTest : public ::testing::Test {
protected:
    CaptureBarTest() {
        state->isConnected = true;
        state->projects = {{"1", "My captures"}, {"2", "Bugs & ideas\n\u202ereversed"}};
        state->onToolChange = [this](ToolMode tool) {
            calls.push_back("tool " + std::string(spelling(tool)));
        };
        state->onMicChange = [this](bool isOn, std::optional<std::string> id) {
            calls.push_back("mic " + std::to_string(isOn) + " " + id.value_or("default"));
        };
        state->onCameraChange = [this](bool isOn, std::optional<std::string> id) {
            calls.push_back("camera " + std::to_string(isOn) + " " + id.value_or("default"));
        };
        state->onCountdownChange = [this](int seconds) {
            calls.push_back("countdown " + std::to_string(seconds));
        };
        state->onProjectChange = [this](std::optional<std::string> id) {
            calls.push_back("project " + id.value_or("none"));
        };
        state->onClose = [this] {
            calls.push_back("close");
            bar->hide();
        };
        bar->show(state, std::nullopt, [] {
            auto menu = std::make_unique<QMenu>();
            menu->addAction("Quit");
            return menu;
        });
        EXPECT_TRUE(eventually([this] { return bar->isVisible() && !bar->frame().isEmpty(); }));
    }
    /// Opens the control's menu with the pointer and chooses the entry that so many presses of the down key
    /// reach.
    void choose(const QString &control, int downs) {
        clickOn(*controlNamed(control));
        ASSERT_TRUE(eventually([] { return QApplication::activePopupWidget() != nullptr; }));
        std::vector<std::string> keys{"key"};
        keys.insert(keys.end(), std::size_t(downs), "Down");
        keys.emplace_back("Return");
        xdotool(keys);
        ASSERT_TRUE(eventually([] { return QApplication::activePopupWidget() == nullptr; }));
    }

    const TemporaryFolder folder;
    Settings settings{folder / "settings.ini"};
    ManualClock clock;
    X11StillCapture stills;
    PluggedSound sound;
    PluggedCameras cameras;
    std::vector<std::string> calls;
    std::shared_ptr<ToolBarState> state = std::make_shared<ToolBarState>();
    X11Application editor{{.pixels = {100, 50, 900, 600}}};
    std::unique_ptr<CaptureBar> bar =
        std::make_unique<CaptureBar>(CaptureBar::Services{sound, cameras, stills, settings, clock});
};

TEST_F(CaptureBarTest, writesEachChoiceAndThenTellsIt) {
    xdotool({"mousemove", "150", "150", "click", "1"});
    ASSERT_TRUE(eventually([this] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    clickOn(*controlNamed("Window"));
    ASSERT_TRUE(eventually([this] { return calls.size() == 1; }));
    choose("Microphone", 4);
    choose("Recording countdown", 2);
    choose("Upload to", 2);
    EXPECT_EQ(DesktopLink::instance().focusedWindow(), editor.window());
    EXPECT_THAT(calls, ElementsAre("tool window", "mic 1 usb", "countdown 3", "project 2"));
    EXPECT_EQ(state->tool.get(), ToolMode::window);
    EXPECT_EQ(state->countdownSeconds.get(), 3);
    EXPECT_EQ(controlNamed("Upload to")->toolTip(), "Upload to: Bugs & ideas reversed");
    clickOn(*controlNamed("Close"));
    ASSERT_TRUE(eventually([this] { return !bar->isVisible(); }));
    EXPECT_EQ(sound.listening, 0);
}

TEST_F(CaptureBarTest, isWorkedByKeysAndGivesTheKeyboardBack) {
    xdotool({"mousemove", "150", "150", "click", "1"});
    ASSERT_TRUE(eventually([this] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    bar->takeKeyboard();
    ASSERT_TRUE(eventually(
        [] { return controlNamed("Area")->hasFocus() && controlNamed("Area")->isActiveWindow(); }));
    xdotool({"key", "Tab", "Tab", "Tab", "Tab"});
    EXPECT_TRUE(eventually([] { return QApplication::focusWidget() != nullptr; }));
    xdotool({"key", "Escape"});
    EXPECT_TRUE(eventually([this] { return DesktopLink::instance().focusedWindow() == editor.window(); }));
    // Also when the window that had it is gone, and when the bar goes with it.
    bar->takeKeyboard();
    editor.close();
    bar->hide();
    EXPECT_TRUE(eventually(
        [] { return DesktopLink::instance().focusedWindow() <= 1 || !QApplication::focusWidget(); }));
}

TEST_F(CaptureBarTest, showsThatAMicrophoneHasGoneAndIsThereAgain) {
    state->micDeviceId = "usb";
    state->micEnabled = true;
    const auto help = [] { return controlNamed("Microphone")->toolTip(); };
    EXPECT_EQ(sound.listening, 1);
    EXPECT_EQ(help(), "Microphone: Headset");
    const auto plug = [this](std::vector<Microphone> connected, AudioSourceState seen) {
        sound.connected = std::move(connected);
        sound.handlers.stateChanged(seen);
    };
    plug({{"built-in", "Built-in", true}}, AudioSourceState::deviceMissing);
    EXPECT_TRUE(eventually([&] { return help() == "Headset: not connected"; })) << help().toStdString();
    plug({}, AudioSourceState::serverMissing);
    settle();
    plug({{"usb", "Headset", true}}, AudioSourceState::running);
    EXPECT_TRUE(eventually([&] { return help() == "Microphone: Headset"; })) << help().toStdString();
    const std::vector<float> loud{0.5F};
    sound.handlers.block({.samples = loud, .channels = 1});
    QAccessibleInterface *control = QAccessible::queryAccessibleInterface(controlNamed("Microphone"));
    EXPECT_TRUE(eventually([&] {
        return control->valueInterface() && control->valueInterface()->currentValue().toInt() == 50;
    }));
}

TEST_F(CaptureBarTest, choosesACameraAndFollowsThoseThatComeAndGo) {
    const auto help = [] { return controlNamed("Camera")->toolTip(); };
    EXPECT_EQ(help(), "Camera: off");
    choose("Camera", 4);
    EXPECT_THAT(calls, ElementsAre("camera 1 usb"));
    EXPECT_EQ(help(), "Camera: Webcam");
    // The desktop is asked for leave now and not in the middle of a recording.
    EXPECT_EQ(cameras.asked, 1);
    const auto plug = [this](std::vector<Camera> connected) {
        cameras.connected = std::move(connected);
        cameras.observers.notify();
    };
    plug({});
    EXPECT_TRUE(eventually([&] { return help() == "Webcam: not connected"; })) << help().toStdString();
    plug({{"usb", "Webcam", true}});
    EXPECT_TRUE(eventually([&] { return help() == "Camera: Webcam"; })) << help().toStdString();
    choose("Camera", 1);
    EXPECT_EQ(calls.back(), "camera 0 usb");
    EXPECT_EQ(help(), "Camera: off");
}

TEST_F(CaptureBarTest, offersToConnectAndToUpdate) {
    EXPECT_EQ(controlNamed("Connect"), nullptr);
    state->isConnected = false;
    state->availableUpdateVersion = "2.0";
    EXPECT_EQ(controlNamed("Upload to"), nullptr);
    EXPECT_TRUE(controlNamed("Connect") && controlNamed("Update to 2.0"));
    bool isDeferred = false;
    state->onDeferUpdate = [&] { isDeferred = state->updateDeferred; };
    clickOn(*controlNamed("Later"));
    EXPECT_TRUE(eventually([&] { return isDeferred; }));
    EXPECT_EQ(controlNamed("Install"), nullptr);
}

TEST_F(CaptureBarTest, isWholeOnANarrowDisplayAndInOneRowWhereThatFits) {
    CaptureBarWindow window(sound, cameras, clock);
    state->micEnabled = state->cameraEnabled = true;
    state->countdownSeconds = 3;
    int oneRow = 0;
    for (const int width : {1920, 1000, 760, 540}) {
        window.show(state, {}, width);
        EXPECT_LE(window.panelRect().width(), width);
        for (const auto *control : window.findChildren<PanelButton *>())
            EXPECT_TRUE(!control->isVisibleTo(&window) || window.panelRect().contains(control->geometry()))
                << width << " " << control->accessibleName().toStdString();
        if (width == 1920)
            oneRow = window.panelRect().height();
        EXPECT_EQ(window.panelRect().height() > oneRow, width == 540) << width;
    }
}

TEST_F(CaptureBarTest, liesBesideTheCardsOrAboveThem) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    for (const int width : {350, 900}) {
        const QRect cards(screen.right() - width, screen.bottom() - 200, width, 190);
        bar->hide();
        bar->avoided = [cards] { return cards; };
        bar->show(state, std::nullopt, {});
        EXPECT_FALSE(bar->frame().intersects(cards)) << width;
        EXPECT_TRUE(screen.contains(bar->frame())) << width;
    }
    // Nor does it grow over them.
    state->isConnected = false;
    const QRect narrow = bar->frame();
    const QRect cards(narrow.right() + 6, narrow.top(), 350, narrow.height());
    bar->avoided = [cards] { return cards; };
    state->isConnected = true;
    EXPECT_GT(bar->frame().width(), narrow.width());
    EXPECT_FALSE(bar->frame().intersects(cards));
}

} // namespace

} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/MenuBuilder.h"
#include "App/StatusMenu.h"
#include "GalleryCameras.h"
#include "GallerySound.h"
#include "Overlay/CaptureBar.h"
#include "Panels/PanelButton.h"
#include "Scenes.h"

#include <QApplication>
#include <QMenu>

namespace vantrell::gallery {

namespace {

struct Bar {
    Bar(StillCapture &stills, Settings &settings, Clock &clock)
        : bar({sound, cameras, stills, settings, clock}) {
        sound.connected = {{"built-in", "Built-in", true}, {"usb", "Røde NT-USB Mini Analog Stereo", false}};
        state->isConnected = true;
        state->projects = {{"1", "My captures"},
                           {"2", "Release films & tutorials of the second half of the year 2026"},
                           {"3", "Bug reports"}};
        state->selectedProjectId = "1";
    }
    void show() {
        bar.show(state, std::nullopt, [] {
            StatusMenuState status;
            status.uploadingCount = 3;
            status.micEnabled = true;
            status.pairing.kind = PairingState::Kind::paired;
            status.takenHotKeys = {"Another program holds the keys of Capture Full Screen"};
            auto menu = std::make_unique<QMenu>();
            fillMenu(*menu, statusMenu(status), [](const MenuEntry &) {});
            return menu;
        });
    }

    GallerySound sound;
    GalleryCameras cameras;
    std::shared_ptr<ToolBarState> state = std::make_shared<ToolBarState>();
    CaptureBar bar;
};

} // namespace

std::vector<Scene> barScenes(StillCapture &stills, Settings &settings, Clock &clock) {
    const auto scene = [&](const QString &name, std::function<void(Bar &)> prepare,
                           std::function<void(Bar &)> finish = {}) {
        return Scene{"bar-" + name, [&, prepare, finish]() -> std::shared_ptr<void> {
                         auto bar = std::make_shared<Bar>(stills, settings, clock);
                         prepare(*bar);
                         bar->show();
                         if (finish)
                             finish(*bar);
                         return bar;
                     }};
    };
    const auto withMenu = [](const QString &label) {
        return [label](Bar &) { controlNamed(label)->openMenu(); };
    };
    const auto microphone = [](Bar &bar) {
        bar.state->micEnabled = true;
        bar.state->systemAudioEnabled = true;
        bar.state->countdownSeconds = 3;
    };
    return {
        scene("plain", [](Bar &) {}),
        scene("microphone", microphone),
        scene("microphone-gone",
              [](Bar &bar) {
                  bar.state->micEnabled = true;
                  bar.state->micDeviceId = "alsa_input.usb-headset";
              }),
        scene("camera",
              [](Bar &bar) {
                  bar.state->micEnabled = true;
                  bar.state->cameraEnabled = true;
              }),
        scene("camera-gone",
              [](Bar &bar) {
                  bar.state->cameraEnabled = true;
                  bar.state->cameraDeviceId = "unplugged";
              }),
        scene("keyboard", microphone, [](Bar &bar) { bar.bar.takeKeyboard(); }),
        scene("not-connected", [](Bar &bar) { bar.state->isConnected = false; }),
        scene(
            "no-projects",
            [](Bar &bar) {
                bar.state->projects = {};
                bar.state->selectedProjectId = std::nullopt;
            },
            withMenu("Upload to")),
        scene("update", [](Bar &bar) { bar.state->availableUpdateVersion = "1.4.2"; }),
        scene("long-names",
              [](Bar &bar) {
                  bar.state->micEnabled = true;
                  bar.state->micDeviceId = "usb";
                  bar.state->selectedProjectId = "2";
                  bar.state->tool = ToolMode::window;
              }),
        scene("menu-microphone", microphone, withMenu("Microphone")),
        scene(
            "menu-camera", [](Bar &bar) { bar.state->cameraEnabled = true; }, withMenu("Camera")),
        scene("menu-countdown", microphone, withMenu("Recording countdown")),
        scene("menu-options", microphone, withMenu("Options")),
        scene("menu-more", microphone, withMenu("More")),
        scene("menu-projects", microphone, withMenu("Upload to")),
    };
}

} // namespace vantrell::gallery

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/RecordingHUD.h"
#include "Panels/PanelButton.h"
#include "Scenes.h"

#include <QApplication>
#include <QHelpEvent>

namespace vantrell::gallery {

namespace {

struct Hud {
    Hud(StillCapture &stills, Settings &settings, Clock &clock, bool hasMicrophone)
        : state(std::make_shared<RecordingHUDState>(clock, 1200, hasMicrophone)),
          hud({stills, settings, clock}, state) {
        state->elapsedSeconds = 187;
        state->micLevel = 0.3;
        hud.show({});
    }
    std::shared_ptr<RecordingHUDState> state;
    RecordingHUD hud;
};

} // namespace

std::vector<Scene> hudScenes(StillCapture &stills, Settings &settings, Clock &clock) {
    const auto scene = [&](const QString &name, bool hasMicrophone, std::function<void(Hud &)> prepare) {
        return Scene{"hud-" + name, [&, hasMicrophone, prepare]() -> std::shared_ptr<void> {
                         auto hud = std::make_shared<Hud>(stills, settings, clock, hasMicrophone);
                         prepare(*hud);
                         return hud;
                     }};
    };
    return {
        scene("running", true, [](Hud &) {}),
        scene("near-limit", false, [](Hud &hud) { hud.state->elapsedSeconds = 1152; }),
        scene("paused", true, [](Hud &hud) { hud.state->isPaused = true; }),
        scene("delete-asked", true, [](Hud &) { controlNamed("Delete")->click(); }),
        scene("tip", true,
              [](Hud &) {
                  PanelButton *stop = controlNamed("Stop");
                  QHelpEvent pointedAt(QEvent::ToolTip, stop->rect().center(), QPoint());
                  QCoreApplication::sendEvent(stop, &pointedAt);
              }),
    };
}

} // namespace vantrell::gallery

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayText.h"
#include "Overlay/SelectionView.h"
#include "Overlay/WindowPicker.h"
#include "Scenes.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantrell::gallery {

namespace {

Display primaryDisplay() {
    const QScreen &screen = *QGuiApplication::primaryScreen();
    const QRect frame = screen.geometry();
    const double scale = screen.devicePixelRatio();
    return {.id = screen.name().toStdString(),
            .name = "Dell U2723QE",
            .frame = {0, 0, double(frame.width()), double(frame.height())},
            .pixels = {0, 0, int(frame.width() * scale), int(frame.height() * scale)},
            .scale = scale,
            .isPrimary = true};
}

WindowPicker pickedWindow() {
    WindowPicker picker;
    picker.setWindows({{.id = 1,
                        .applicationName = "Firefox",
                        .title = "שלום, release 2.4 and what is new in it",
                        .pixels = {200, 150, 700, 500}}});
    picker.pointAt({300, 300});
    return picker;
}

} // namespace

std::vector<Scene> overlayScenes() {
    const auto scene = [](const QString &name, ToolMode tool, std::function<void(SelectionView &)> prepare) {
        return Scene{"overlay-" + name, [tool, prepare]() -> std::shared_ptr<void> {
                         const Display display = primaryDisplay();
                         auto view = std::make_shared<SelectionView>(display,
                                                                     QGuiApplication::primaryScreen(), false);
                         view->freezeScreen();
                         view->setTool(tool);
                         prepare(*view);
                         view->present();
                         return view;
                     }};
    };
    const auto withHelp = [](SelectionView &view) { view.setHelpShown(true); };
    return {
        scene("area", ToolMode::area, [](SelectionView &) {}),
        scene("selected", ToolMode::area, [](SelectionView &view) { view.selectMiddle(); }),
        scene("window", ToolMode::window,
              [](SelectionView &view) { view.setWindows(pickedWindow(), {}, QRect(200, 150, 700, 500)); }),
        scene("no-window", ToolMode::window, [](SelectionView &view) { view.setWindows({}, {}, {}); }),
        scene("desktop-picks", ToolMode::window, [](SelectionView &view) { view.setDesktopPicks(true); }),
        scene("screen", ToolMode::screen, [](SelectionView &view) { view.setLit(true); }),
        scene("keys-area", ToolMode::area, withHelp),
        scene("keys-window", ToolMode::window, withHelp),
        scene("keys-screen", ToolMode::screen, withHelp),
    };
}

} // namespace vantrell::gallery

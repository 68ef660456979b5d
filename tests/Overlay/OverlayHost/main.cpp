// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Shows the overlay with the tool and the settings file that it is given, and tells in lines of JSON when it
// came onto the screen, which tool or bar was asked for, and what was picked. Ends with the overlay.
//
//     overlay_host area|window|screen SETTINGS

#include "Overlay/SelectionOverlayController.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11StillCapture.h"

#include <QApplication>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <string_view>

using namespace vantrell;

namespace {

using Json = nlohmann::json;

void tell(const Json &line) {
    std::puts(line.dump().c_str());
    std::fflush(stdout);
}

Json told(const SelectionOutcome::Region &region) {
    const Rect &rect = region.rect;
    return {{"picked", "region"},
            {"rect", {rect.x, rect.y, rect.width, rect.height}},
            {"display", region.display.id},
            {"record", region.record}};
}
Json told(const SelectionOutcome::WholeDisplay &display) {
    return {{"picked", "display"}, {"display", display.display.id}, {"record", display.record}};
}
Json told(const SelectionOutcome::Window &window) {
    return {{"picked", "window"},
            {"window", window.window.id},
            {"display", window.display.id},
            {"record", window.record}};
}
Json told(const SelectionOutcome::DesktopPicker &picker) {
    return {{"picked", "by the desktop"}, {"display", picker.display.id}, {"record", picker.record}};
}
Json told(const SelectionOutcome::Dismissed &) {
    return {{"picked", "nothing"}};
}

ToolMode toolNamed(std::string_view name) {
    for (const ToolMode tool : {ToolMode::window, ToolMode::screen})
        if (spelling(tool) == name)
            return tool;
    return ToolMode::area;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3)
        return 2;
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    auto capture = X11CaptureBackend::create();
    if (!capture)
        return 1;
    X11StillCapture stills;
    Settings settings(argv[2]);
    SelectionOverlayController overlay({**capture, stills, settings});
    // The bar comes after the overlay.
    QRect bar;
    overlay.barFrame = [&bar] { return bar; };
    overlay.onShown = [&](QWidget &) {
        if (argc > 3) {
            bar = {0, std::atoi(argv[3]), 1200, 100};
            overlay.followBar();
        }
        tell({{"shown", true}});
    };
    overlay.onBarWanted = [] { tell({{"wanted", "bar"}}); };
    overlay.onToolWanted = [&](ToolMode tool) {
        tell({{"wanted", spelling(tool)}});
        overlay.setTool(tool);
    };
    overlay.begin(toolNamed(argv[1]), nullptr, [](const SelectionOutcome &outcome, ToolMode) {
        tell(std::visit([](const auto &picked) { return told(picked); }, outcome.picked));
        QApplication::quit();
    });
    return QApplication::exec();
}

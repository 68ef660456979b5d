// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraBubble.h"
#include "Overlay/CountdownPanel.h"
#include "Panels/Alert.h"
#include "Panels/FloatingPanel.h"
#include "Panels/PanelButton.h"
#include "Scenes.h"
#include "Support/TaskScope.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QPainter>
#include <QRadialGradient>
#include <QScreen>

namespace vantrell::gallery {

namespace {

QImage face() {
    QImage picture(480, 480, QImage::Format_RGB32);
    picture.fill(0x39424a);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x7c5b4e));
    painter.drawEllipse(QPointF(240, 560), 260, 240);
    painter.setBrush(QColor(0xd9b49b));
    painter.drawEllipse(QPointF(220, 210), 110, 130);
    return picture;
}

std::shared_ptr<void> countdownScene(Clock &clock) {
    auto scope = std::make_shared<TaskScope>();
    scope->start(
        [](Clock *clock, std::stop_token stop) -> Task<> { co_await countDown(3, {}, *clock, stop); },
        &clock);
    return scope;
}

std::shared_ptr<void> alertScene() {
    auto scope = std::make_shared<TaskScope>();
    scope->start([](std::stop_token stop) -> Task<> {
        const std::vector<std::string> buttons{"Open Settings", "Later"};
        co_await ask("Vantrell Capture needs permission to record the screen",
                     "The desktop asks once. Nothing is recorded before you press a button that says so.",
                     buttons, stop);
    });
    return scope;
}

std::shared_ptr<void> symbolScene(bool isLight) {
    auto panel = std::make_shared<FloatingPanel>(FloatingPanel::Options{});
    auto *grid = new QGridLayout(panel.get());
    const int margin = panel->shadowMargin() + 12;
    grid->setContentsMargins(margin, margin, margin, margin);
    constexpr int columns = 8;
    for (int symbol = 1; symbol <= int(Symbol::resize); ++symbol) {
        auto *button = new PanelButton(QString::number(symbol), panel.get());
        button->setSymbol(Symbol(symbol));
        button->setEnabled(symbol % columns != 0);
        grid->addWidget(button, (symbol - 1) / columns, (symbol - 1) % columns);
    }
    panel->adjustSize();
    panel->placePanel(QGuiApplication::primaryScreen()->geometry().center());
    panel->setOnLightBackdrop(isLight);
    panel->showPanel();
    return panel;
}

} // namespace

std::vector<Scene> otherScenes(Settings &settings, Clock &clock) {
    using Camera = CameraBubbleState::Camera;
    const auto bubble = [&settings, &clock](Camera camera, const std::string &problem = {}) {
        return [&settings, &clock, camera, problem]() -> std::shared_ptr<void> {
            const auto state = std::make_shared<CameraBubbleState>();
            state->preview = [] { return face(); };
            state->showPreview = [](int, const std::function<void()> &newer) {
                if (newer)
                    newer();
            };
            state->problem = problem;
            state->camera = camera;
            auto made = std::make_shared<CameraBubble>(settings, clock);
            made->show(state, {});
            return made;
        };
    };
    return {{"symbols-dark", [] { return symbolScene(false); }},
            {"symbols-light", [] { return symbolScene(true); }},
            {"countdown", [&clock] { return countdownScene(clock); }},
            {"bubble", bubble(Camera::running)},
            {"bubble-starting", bubble(Camera::starting)},
            {"bubble-unplugged", bubble(Camera::missing, "Disconnected")},
            {"bubble-in-use", bubble(Camera::missing, "In use elsewhere")},
            {"alert", alertScene}};
}

} // namespace vantrell::gallery

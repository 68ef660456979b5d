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

#include <algorithm>
#include <iterator>

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

std::shared_ptr<void> alertScene(const std::string &message, const std::string &informative,
                                 const std::vector<std::string> &buttons) {
    auto scope = std::make_shared<TaskScope>();
    scope->start([](std::string title, std::string text, std::vector<std::string> answers,
                    std::stop_token stop) -> Task<> { co_await ask(title, text, answers, stop); },
                 message, informative, buttons);
    return scope;
}

std::vector<Scene> alertScenes() {
    return {
        {"alert-crash",
         [] {
             return alertScene(
                 "Vantrell Capture ended unexpectedly",
                 "What it was doing is in a file on this computer, for a bug report if you want "
                 "to write one. Nothing was sent anywhere. A recording that was cut off is on "
                 "the shelf.",
                 {"Open Folder", "OK"});
         }},
        {"alert-permission",
         [] {
             return alertScene(
                 "Allow Vantrell Capture to record the screen",
                 "GNOME asks for this once. Turn on Vantrell Capture under Screen & System Audio "
                 "Recording, and this window will close and reopen the app for you "
                 "automatically.",
                 {"Open System Settings", "Cancel"});
         }},
        {"alert-portal",
         [] {
             return alertScene("Screen Recording permission needed",
                               "The desktop's part that shares the screen is missing. Install "
                               "xdg-desktop-portal and the portal of this desktop (xdg-desktop-portal-kde, "
                               "-gnome or -wlr), then log in again.",
                               {"OK"});
         }},
        {"alert-update", [] {
             return alertScene("Vantrell Capture 1.4.2 is available",
                               "You have version 1.4.1. The new one is downloaded and put in its place; then "
                               "the app restarts.",
                               {"Install and Restart", "Later"});
         }}};
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
    std::vector<Scene> scenes{
        {"symbols-dark", [] { return symbolScene(false); }},
        {"symbols-light", [] { return symbolScene(true); }},
        {"countdown", [&clock] { return countdownScene(clock); }},
        {"bubble", bubble(Camera::running)},
        {"bubble-starting", bubble(Camera::starting)},
        {"bubble-unplugged", bubble(Camera::missing, "Disconnected")},
        {"bubble-in-use", bubble(Camera::missing, "In use elsewhere")},
    };
    std::ranges::move(alertScenes(), std::back_inserter(scenes));
    return scenes;
}

} // namespace vantrell::gallery

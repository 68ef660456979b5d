// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Gallery.h"

#include "Backdrop.h"
#include "Panels/PanelButton.h"
#include "Panels/Sentence.h"
#include "Support/SystemClock.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QScreen>

#include <chrono>

namespace vantrell::gallery {

namespace {

using namespace std::chrono_literals;

/// Long enough for a fade, a look at the backdrop and a compositor.
constexpr auto settleTime = 700ms;

QRect shownArea() {
    QRect area;
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && !dynamic_cast<const Backdrop *>(window))
            area |= window->frameGeometry();
    }
    constexpr int margin = 8;
    return area.adjusted(-margin, -margin, margin, margin) & QGuiApplication::primaryScreen()->geometry();
}

} // namespace

Task<> grabScenes(std::vector<Scene> scenes, QString folder, std::stop_token stop) {
    QDir().mkpath(folder);
    SystemClock clock;
    for (const Scene &scene : scenes) {
        const std::shared_ptr<void> shown = scene.show();
        if (!co_await clock.sleep(settleTime, stop))
            co_return;
        const QRect area = shownArea();
        QGuiApplication::primaryScreen()
            ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
            .save(folder + "/" + scene.name + ".png");
        while (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
    }
}

bool isCalled(const QString &name, const QString &english) {
    const QByteArray key = english.toUtf8();
    for (const char *const context : {"CaptureBar", "RecordingHUD", "ShelfPanel", "SelectionOverlay"})
        if (name == QCoreApplication::translate(context, key.constData()))
            return true;
    return name == inUsersLanguage(english);
}

PanelButton *controlNamed(const QString &label) {
    for (QWidget *widget : QApplication::allWidgets()) {
        auto *button = dynamic_cast<PanelButton *>(widget);
        if (button && button->isVisible() && isCalled(button->accessibleName(), label))
            return button;
    }
    return nullptr;
}

} // namespace vantrell::gallery

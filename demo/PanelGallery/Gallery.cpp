// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Gallery.h"

#include "Backdrop.h"
#include "Panels/PanelButton.h"
#include "Panels/Sentence.h"
#include "Support/SystemClock.h"
#include "TextAudit.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QScreen>

#include <chrono>
#include <cstdio>

namespace vantrell::gallery {

namespace {

using namespace std::chrono_literals;

/// Long enough for a fade, a look at the backdrop and a compositor.
constexpr auto settleTime = 700ms;
constexpr auto goneTime = 150ms;
/// Long enough for lists of devices.
constexpr auto auditTime = 150ms;

/// What the scenes call people's and makers' things, and keys.
const QStringList givenNames{"Vantrell Capture",
                             "Vantrell capture overlay",
                             "Super",
                             "Meta",
                             "Shift",
                             "Ctrl",
                             "Built-in",
                             "Røde NT-USB Mini Analog Stereo",
                             "Integrated Camera",
                             "Logitech BRIO Ultra HD Pro Business Webcam",
                             "My captures",
                             "Release films & tutorials of the second half of the year 2026",
                             "Bug reports",
                             "Team & talks",
                             "Private",
                             "Capture Nov 21 at 4.58.45 PM",
                             "notes.md, Capture Nov 21",
                             "Capture",
                             "Release plan",
                             "Dell U2723QE",
                             "Firefox",
                             "release 2.4 and what is new in it"};

/// Names that no person gives, to see what becomes of them.
bool hasOnlyTranslatedTexts(const Scene &scene) {
    return scene.name != QLatin1String("shelf-names");
}

/// All but the screen behind them.
std::vector<QWidget *> shownWindows() {
    std::vector<QWidget *> shown;
    for (QWidget *const window : QApplication::topLevelWidgets())
        if (window->isVisible() && !dynamic_cast<const Backdrop *>(window))
            shown.push_back(window);
    return shown;
}

QRect shownArea() {
    QRect area;
    for (const QWidget *const window : shownWindows())
        area |= window->frameGeometry();
    constexpr int margin = 8;
    return area.adjusted(-margin, -margin, margin, margin) & QGuiApplication::primaryScreen()->geometry();
}

void closePopups() {
    while (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
}

} // namespace

Task<> grabScenes(std::vector<Scene> scenes, QString folder, std::stop_token stop) {
    QDir().mkpath(folder);
    SystemClock clock;
    for (const Scene &scene : scenes) {
        std::shared_ptr<void> shown = scene.show();
        if (!co_await clock.sleep(settleTime, stop))
            co_return;
        const QRect area = shownArea();
        QGuiApplication::primaryScreen()
            ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
            .save(folder + "/" + scene.name + ".png");
        closePopups();
        // The next one may lie on a picture of the screen.
        shown.reset();
        if (!co_await clock.sleep(goneTime, stop))
            co_return;
    }
}

Task<> auditScenes(std::vector<Scene> scenes, int *faults, std::stop_token stop) {
    SystemClock clock;
    for (const Scene &scene : scenes) {
        if (!hasOnlyTranslatedTexts(scene))
            continue;
        const std::shared_ptr<void> shown = scene.show();
        if (!co_await clock.sleep(auditTime, stop))
            co_return;
        for (QWidget *const window : shownWindows())
            for (const QString &text : faultyTexts(textsOf(*window), givenNames)) {
                std::printf("%s: %s\n", qUtf8Printable(scene.name), qUtf8Printable(text));
                ++*faults;
            }
        closePopups();
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

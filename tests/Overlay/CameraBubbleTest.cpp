// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraBubble.h"

#include "Panels/FloatingPanel.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/Widgets/ScreenPointer.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

QRect bubbleFrame() {
    const auto *panel = dynamic_cast<FloatingPanel *>(controlNamed("Camera"));
    return panel ? panel->panelFrame() : QRect();
}

/// The colour on the screen at a quarter of the bubble's width.
QRgb leftColour() {
    const QRect frame = bubbleFrame();
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, frame.left() + frame.width() / 4, frame.center().y() - 20, 1, 1)
        .toImage()
        .pixel(0, 0);
}

TEST(CameraBubbleTest, showsTheCameraMirroredOrNotInThreeSizesAndRemembers) {
    const TemporaryFolder folder;
    Settings settings(folder / "settings.ini");
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QPainter(&picture).fillRect(0, 0, 32, 48, Qt::green);
    QRect left;
    {
        CameraBubble bubble(settings);
        bubble.show({});
        bubble.setPicture(picture);
        EXPECT_EQ(bubbleFrame().size(), QSize(168, 168));
        EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::blue).rgb(); }));
        clickOn(*controlNamed("Camera"));
        ASSERT_TRUE(eventually([] { return controlNamed("Mirror") != nullptr; }));
        clickOn(*controlNamed("Mirror"));
        EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::green).rgb(); }));
        clickOn(*controlNamed("Change size"));
        EXPECT_TRUE(eventually([] { return bubbleFrame().width() == 240; }));
        left = bubbleFrame();
    }
    CameraBubble bubble(settings);
    bubble.show({});
    bubble.setPicture(picture);
    EXPECT_EQ(bubbleFrame(), left);
    EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::green).rgb(); }));
    // The camera has gone.
    bubble.setPicture({});
    EXPECT_TRUE(eventually([] { return leftColour() != QColor(Qt::green).rgb(); }));
}

} // namespace

} // namespace vantrell::testing

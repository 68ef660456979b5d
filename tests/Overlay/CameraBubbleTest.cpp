// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraBubble.h"

#include "Panels/FloatingPanel.h"
#include "TestSupport/ManualClock.h"
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

/// A camera that shows one picture for as long as it is asked for pictures.
struct FixedCamera {
    explicit FixedCamera(const QImage &picture) {
        state->showPreview = [this](int squarePixels, std::function<void()> changed) {
            pixels = squarePixels;
            newer = std::move(changed);
        };
        state->preview = [picture] { return picture; };
    }

    std::shared_ptr<CameraBubbleState> state = std::make_shared<CameraBubbleState>();
    int pixels = 0;
    std::function<void()> newer;
};

QImage greenAndBlue() {
    QImage picture(168, 168, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QPainter(&picture).fillRect(0, 0, 84, 168, Qt::green);
    return picture;
}

TEST(CameraBubbleTest, showsTheCameraMirroredOrNotInThreeSizesAndRemembers) {
    const TemporaryFolder folder;
    Settings settings(folder / "settings.ini");
    ManualClock clock;
    FixedCamera camera(greenAndBlue());
    QRect left;
    {
        CameraBubble bubble(settings, clock);
        bubble.show(camera.state, {});
        EXPECT_EQ(camera.pixels, 0);
        camera.state->camera = CameraBubbleState::Camera::running;
        EXPECT_EQ(camera.pixels, 168);
        camera.newer();
        EXPECT_EQ(bubbleFrame().size(), QSize(168, 168));
        EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::blue).rgb(); }));
        clickOn(*controlNamed("Camera"));
        ASSERT_TRUE(eventually([] { return controlNamed("Mirror") != nullptr; }));
        clickOn(*controlNamed("Mirror"));
        EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::green).rgb(); }));
        clickOn(*controlNamed("Change size"));
        EXPECT_TRUE(eventually([&] { return camera.pixels == 240; }));
        left = bubbleFrame();
        EXPECT_EQ(left.width(), 240);
        bubble.hide();
        EXPECT_EQ(camera.pixels, 0);
    }
    CameraBubble bubble(settings, clock);
    bubble.show(camera.state, {});
    camera.newer();
    EXPECT_EQ(bubbleFrame(), left);
    EXPECT_TRUE(eventually([] { return leftColour() == QColor(Qt::green).rgb(); }));
    bubble.hide();
    bubble.show(camera.state, {}, left);
    EXPECT_FALSE(bubbleFrame().intersects(left));
}

TEST(CameraBubbleTest, saysWhyThereIsNoPicture) {
    const TemporaryFolder folder;
    Settings settings(folder / "settings.ini");
    ManualClock clock;
    FixedCamera camera(greenAndBlue());
    CameraBubble bubble(settings, clock);
    bubble.show(camera.state, {});
    const auto says = [](const char *words) {
        return eventually([words] { return controlNamed("Camera")->accessibleDescription() == words; });
    };
    EXPECT_TRUE(says("Starting…"));
    camera.state->camera = CameraBubbleState::Camera::running;
    camera.newer();
    EXPECT_TRUE(says(""));
    clock.advance(std::chrono::seconds(4));
    EXPECT_TRUE(says("No picture"));
    EXPECT_TRUE(eventually([] { return leftColour() != QColor(Qt::blue).rgb(); }));
    camera.newer();
    EXPECT_TRUE(says(""));
    camera.state->problem = "The camera was disconnected";
    camera.state->camera = CameraBubbleState::Camera::missing;
    EXPECT_TRUE(says("The camera was disconnected"));
    EXPECT_EQ(camera.pixels, 0);
}

} // namespace

} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/AreaSelection.h"

#include "Overlay/AreaMemory.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>

namespace vantrell::testing {

namespace {

const std::optional<Rect> none;

AreaSelection selected(const Rect &rect) {
    AreaSelection area({800, 600});
    area.setRect(rect);
    return area;
}

/// What a drag makes of a selection.
std::optional<Rect> dragged(AreaSelection area, const Point &from, const Point &to,
                            const AreaSelection::Modifiers &modifiers = {}) {
    area.press(from);
    area.dragTo(to, modifiers);
    area.release();
    return area.rect();
}

TEST(AreaSelectionTest, gripsEdgesWithinTheirReachAndCornersBeforeEdges) {
    AreaSelection area = selected({100, 100, 200, 150});
    const auto resize = [](std::optional<double> x, std::optional<double> y) {
        return AreaZone{AreaZone::Resize{x, y}};
    };
    EXPECT_EQ(area.areaZone({92, 175}), resize(300, {}));
    EXPECT_EQ(area.areaZone({91.9, 175}), AreaZone{});
    EXPECT_EQ(area.areaZone({107.9, 175}), resize(300, {}));
    EXPECT_EQ(area.areaZone({108, 175}), AreaZone{AreaZone::Move{}});
    EXPECT_EQ(area.areaZone({307.9, 175}), resize(100, {}));
    EXPECT_EQ(area.areaZone({308, 175}), AreaZone{}) << "the far edge of the reach is outside";
    EXPECT_EQ(area.areaZone({200, 92}), resize({}, 250));
    EXPECT_EQ(area.areaZone({200, 257}), resize({}, 100));
    EXPECT_EQ(area.areaZone({95, 104}), resize(300, 250));
    EXPECT_EQ(area.areaZone({305, 255}), resize(100, 100));
    EXPECT_EQ(selected({100, 100, 10, 10}).areaZone({105, 105}), resize(110, 110)) << "all edges are near";

    area.captureButtonRect = Rect{90, 90, 20, 20};
    area.recordButtonRect = Rect{100, 100, 50, 20};
    EXPECT_EQ(area.areaZone({105, 105}), AreaZone{AreaZone::CaptureButton{}});
    EXPECT_EQ(area.areaZone({115, 105}), AreaZone{AreaZone::RecordButton{}});
}

TEST(AreaSelectionTest, keepsADraggedSelectionOnItsDisplay) {
    const AreaSelection area = selected({100, 100, 200, 150});
    EXPECT_EQ(dragged(area, {200, 175}, {2000, -500}), (Rect{600, 0, 200, 150}));
    EXPECT_EQ(dragged(area, {95, 175}, {-50, 0}), (Rect{0, 100, 300, 150}));
    EXPECT_EQ(dragged(area, {95, 175}, {95, 300}), area.rect()) << "an edge that is only clicked stays";
    EXPECT_EQ(dragged(area, {105, 175}, {405, 175}), (Rect{300, 100, 100, 150})) << "past the other edge";
    EXPECT_EQ(dragged(area, {700, 500}, {900, 400}), (Rect{700, 400, 100, 100}));
    EXPECT_EQ(area.clampedToBounds({-5, 590, 900, 20}), (Rect{0, 580, 800, 20}));
}

TEST(AreaSelectionTest, discardsAndCommitsAtTheirLimits) {
    EXPECT_EQ(dragged(AreaSelection({800, 600}), {10, 10}, {10, 10}), none);
    EXPECT_EQ(dragged(AreaSelection({800, 600}), {10, 10}, {13.5, 20}), none);
    EXPECT_EQ(dragged(AreaSelection({800, 600}), {10, 10}, {13.5, 13.5}), none);
    EXPECT_EQ(dragged(AreaSelection({800, 600}), {10, 10}, {14, 14}), (Rect{10, 10, 4, 4}));
    EXPECT_EQ(dragged(selected({100, 100, 50, 50}), {400, 400}, {401, 401}), none) << "a click elsewhere";
    EXPECT_EQ(selected({10, 10, 3, 40}).committed(), none);
    EXPECT_EQ(selected({10.4, 10.5, 20.2, 30.4}).committed(), (Rect{10, 10, 21, 31}));
    EXPECT_EQ(AreaSelection({800, 600}).committed(), none);
}

TEST(AreaSelectionTest, drawsAndResizesInProportionAndFromTheMiddle) {
    AreaSelection area({800, 600});
    area.press({100, 100});
    area.dragTo({300, 200});
    area.dragTo({500, 220}, {.keepsRatio = true});
    EXPECT_EQ(area.rect(), (Rect{100, 100, 400, 200})) << "the proportions it had";
    area.dragTo({790, 590}, {.keepsRatio = true});
    EXPECT_EQ(area.rect(), (Rect{100, 100, 700, 350})) << "as far as the display reaches";
    area.dragTo({140, 130}, {.fromCentre = true});
    EXPECT_EQ(area.rect(), (Rect{60, 70, 80, 60}));
    area.dragTo({400, 130}, {.fromCentre = true});
    EXPECT_EQ(area.rect(), (Rect{0, 70, 200, 60})) << "no further than the nearer edge of the display";

    area.dragTo({140, 130});
    area.dragTo({160, 100}, {.movesWhole = true});
    EXPECT_EQ(area.rect(), (Rect{120, 70, 40, 30}));
    area.dragTo({170, 100});
    EXPECT_EQ(area.rect(), (Rect{120, 70, 50, 30})) << "goes on from where it was moved to";

    const AreaSelection wide = selected({100, 100, 200, 100});
    EXPECT_EQ(dragged(wide, {300, 200}, {400, 210}, {.keepsRatio = true}), (Rect{100, 100, 300, 150}));
    EXPECT_EQ(dragged(wide, {300, 150}, {400, 150}, {.keepsRatio = true}), (Rect{100, 75, 300, 150}));
    EXPECT_EQ(dragged(wide, {300, 150}, {320, 150}, {.fromCentre = true}), (Rect{80, 100, 240, 100}));
}

TEST(AreaSelectionTest, movesAndStretchesByKeysWithinTheDisplay) {
    AreaSelection area({800, 600});
    area.moveBy(1, 1);
    EXPECT_EQ(area.rect(), none);
    area.selectMiddle();
    EXPECT_EQ(area.rect(), (Rect{200, 150, 400, 300}));
    area.moveBy(-500, 10);
    area.stretchBy(1000, -1000);
    EXPECT_EQ(area.rect(), (Rect{0, 160, 800, 4}));
}

TEST(AreaMemoryTest, restoresWhatStillFits) {
    const TemporaryFolder folder;
    const Rect screen{0, 0, 800, 600};
    Settings settings(folder / "settings.ini");
    AreaMemory memory(settings);
    EXPECT_EQ(memory.restore("DP-1", screen), none);
    memory.save({10.5, 20, 789.5, 580}, "DP-1");
    EXPECT_EQ(memory.restore("DP-1", screen), (Rect{10.5, 20, 789.5, 580})) << "up to the last point";
    EXPECT_EQ(memory.restore("DP-2", screen), none);
    EXPECT_EQ(memory.restore("DP-1", {0, 0, 799, 600}), none);
    EXPECT_EQ(settings.number("area.DP-1.w"), 789.5);
    memory.save({0, 0, 3, 100}, "DP-1");
    EXPECT_EQ(memory.restore("DP-1", screen), none);
    for (const char *broken : {"nan", "wide", "1e400"}) {
        memory.save({0, 0, 100, 100}, "DP-1");
        settings.setString("area.DP-1.w", broken);
        EXPECT_EQ(memory.restore("DP-1", screen), none) << broken;
    }
}

} // namespace
} // namespace vantrell::testing

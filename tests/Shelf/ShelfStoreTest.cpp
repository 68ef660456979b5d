// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Shelf/ShelfStore.h"
#include "Shelf/ShelfPanelFrame.h"
#include "TestSupport/ManualClock.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;

class ShelfStoreTest : public ::testing::Test {
protected:
    QUuid addDone() {
        const QUuid id = shelf.addProcessing("Screenshot");
        shelf.update(id, ShelfItem::Done{"project"});
        return id;
    }

    ManualClock clock;
    ShelfStore shelf{clock};
};

TEST_F(ShelfStoreTest, movesACardFromProcessingToDoneAndDismissesIt) {
    std::vector<bool> visibility;
    std::vector<std::string> seen;
    std::vector<std::string> done;
    shelf.onVisibilityChange = [&visibility](bool visible) { visibility.push_back(visible); };
    shelf.onItemDone = [&done](const ShelfItem &item) { done.push_back(item.title()); };
    auto observation = shelf.observe(
        [&] { seen.push_back(shelf.items().empty() ? "none" : shelf.items().front().statusText()); });

    const QUuid id = shelf.addProcessing("Camera recording");
    EXPECT_EQ(shelf.find(id)->title(), "Camera recording");
    EXPECT_FALSE(shelf.find(id)->fileURL());

    CaptureResult capture;
    capture.name = "Firefox";
    capture.fileURL = "/movies/a.mov";
    shelf.attach(std::make_shared<const CaptureResult>(capture), id);
    shelf.update(id, ShelfItem::Uploading{0.42});
    shelf.update(id, ShelfItem::Uploading{0.999});
    EXPECT_EQ(shelf.find(id)->fileURL(), "/movies/a.mov");
    shelf.update(id, ShelfItem::Done{"project"});
    EXPECT_THAT(done, ElementsAre("Firefox"));

    clock.advance(5999ms);
    ASSERT_EQ(shelf.items().size(), 1u);
    clock.advance(1ms);
    EXPECT_TRUE(shelf.items().empty());
    EXPECT_THAT(seen, ElementsAre("Processing…", "Uploading…", "Uploading 42%", "Uploading 99%",
                                  "In your library", "none"));
    EXPECT_THAT(visibility, ElementsAre(true, false));

    observation.reset();
    shelf.addProcessing("unseen");
    EXPECT_EQ(seen.size(), 6u);
}

TEST_F(ShelfStoreTest, keepsEveryCardThatIsNotDone) {
    const QUuid failed = shelf.addProcessing("a");
    const QUuid needsProject = shelf.addProcessing("b");
    const QUuid processing = shelf.addProcessing("c");
    const QUuid retried = addDone();
    shelf.update(failed, ShelfItem::Failed{"Upload failed"});
    shelf.update(needsProject, ShelfItem::NeedsProject{});
    shelf.update(retried, ShelfItem::Uploading{});
    clock.advance(1h);
    EXPECT_EQ(shelf.items().size(), 4u);
    EXPECT_EQ(shelf.find(failed)->statusText(), "Upload failed");
    EXPECT_EQ(shelf.find(needsProject)->statusText(), "Pick a project in the menu bar first");
    EXPECT_TRUE(shelf.find(failed)->canRetry() && shelf.find(needsProject)->canRetry());
    EXPECT_FALSE(shelf.find(processing)->canRetry());
}

TEST_F(ShelfStoreTest, ignoresWhatConcernsARemovedCard) {
    const QUuid id = addDone();
    shelf.remove(id);
    shelf.update(id, ShelfItem::Done{"project"});
    shelf.setEntry(id, QUuid::createUuid());
    shelf.attach(nullptr, id);
    EXPECT_EQ(clock.sleeperCount(), 0);
    EXPECT_TRUE(shelf.items().empty());
}

TEST_F(ShelfStoreTest, neverDismissesUnderThePointer) {
    const QUuid before = addDone();
    clock.advance(5s);
    shelf.setHovering(true);
    const QUuid during = addDone();
    clock.advance(1h);
    EXPECT_TRUE(shelf.find(before) && shelf.find(during));

    for (int i = 0; i < 5; ++i) {
        shelf.setHovering(false);
        clock.advance(2999ms);
        EXPECT_EQ(shelf.items().size(), 2u);
        shelf.setHovering(true);
    }
    shelf.remove(before);
    shelf.setHovering(false);
    clock.advance(2999ms);
    EXPECT_EQ(shelf.items().size(), 1u);
    clock.advance(1ms);
    EXPECT_TRUE(shelf.items().empty());
}

TEST_F(ShelfStoreTest, letsItsCallbacksChangeIt) {
    const QUuid id = shelf.addProcessing("a");
    auto observation = shelf.observe([this, id] {
        if (const ShelfItem *const item = shelf.find(id); item && item->isDone())
            shelf.remove(id);
    });
    shelf.onItemDone = [this](const ShelfItem &) { shelf.addProcessing("next"); };
    shelf.update(id, ShelfItem::Done{"project"});
    EXPECT_EQ(shelf.items().size(), 1u);
    EXPECT_EQ(clock.sleeperCount(), 0);
}

TEST(ShelfPanelFrame, growsWithItsCardsInsideTheVisibleFrame) {
    const Rect visible{100, 30, 1920, 1050};
    EXPECT_EQ(shelfPanelFrame(0, visible), (Rect{1630, 620, 390, 420}));
    EXPECT_EQ(shelfPanelFrame(4, visible), (Rect{1630, 594, 390, 446}));
    EXPECT_EQ(shelfPanelFrame(50, visible), (Rect{1630, 30, 390, 1010}));
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelButton.h"
#include "Platform/NullCaptureBackend.h"
#include "Scenes.h"
#include "ShelfPanel/ShelfPanel.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QPainter>

#include <chrono>

namespace vantrell::gallery {

namespace {

using namespace std::chrono_literals;

struct NoFiles final : FileOpener {
    bool openPage(const std::string &) override { return false; }
    bool openFile(const std::filesystem::path &) override { return false; }
    bool showInFileManager(const std::filesystem::path &) override { return false; }
};

QImage desktopPicture() {
    QImage picture(1280, 720, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, 1280, 720);
    ground.setColorAt(0, 0x44617c);
    ground.setColorAt(1, 0x8b6480);
    painter.fillRect(picture.rect(), ground);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xfbfaf7));
    painter.drawRoundedRect(160, 110, 760, 470, 14, 14);
    painter.setBrush(QColor(0xd8d3ca));
    for (int line = 0; line < 6; ++line)
        painter.drawRoundedRect(210, 180 + 56 * line, 600 - 70 * (line % 3), 22, 11, 11);
    return picture;
}

struct Shelf {
    Shelf(StillCapture &stills, Clock &clock)
        : store(clock), panel({store, capture, files, &stills, &clock}) {
        panel.projects = [] {
            return std::vector<TargetProject>{{"1", "Team & talks"}, {"2", "Bug reports"}, {"3", "Private"}};
        };
        panel.pageOf = [](const ShelfItem &) { return std::string("https://example.org/"); };
        store.onVisibilityChange = [this](bool visible) { panel.setVisible(visible); };
    }

    void add(const std::string &name, const ShelfItem::Status &status,
             std::chrono::milliseconds length = 41s) {
        CaptureResult made{.fileURL = "/tmp/movie.mov", .name = name, .previewImage = desktopPicture()};
        made.durationMs = length.count();
        store.update(store.add(std::make_shared<const CaptureResult>(std::move(made))), status);
    }

    ShelfStore store;
    NullCaptureBackend capture{"none"};
    NoFiles files;
    ShelfPanel panel;
};

void addStates(Shelf &shelf) {
    shelf.add("Capture Nov 21 at 4.58.45 PM", ShelfItem::Uploading{0.42});
    shelf.add("notes.md, Capture Nov 21", ShelfItem::Done{"1"}, 130s);
    shelf.add("Screen recording", ShelfItem::Failed{"Connect to Vantrell in the menu bar first"}, 1h + 125s);
    shelf.add("Release plan", ShelfItem::NeedsProject{});
    shelf.store.addProcessing("Camera recording");
}

/// Names and messages as life brings them.
void addOddities(Shelf &shelf) {
    shelf.add(std::string(250, 'W') + std::string(250, 'i'), ShelfItem::Uploading{0.07});
    shelf.add("two\nlines \u202eand a mark that turns <b>what</b> follows", ShelfItem::Done{"1"});
    shelf.add("הקלטת מסך של ישיבה, Nov 21", ShelfItem::Failed{std::string(60, 'x') + " was refused"});
    shelf.add("Firefox, Nov 21 at 9.12.03 AM (recovered)", ShelfItem::Done{"1"}, 751s);
    shelf.store.addRestored("Screenshot", "/tmp/still.png", std::nullopt, QUuid::createUuid(),
                            ShelfItem::Failed{"The recording file was cleaned up and can't be re-uploaded"});
}

template <typename Chosen>
void forShown(const QString &name, Chosen chosen) {
    for (QWidget *widget : QApplication::allWidgets()) {
        if (isCalled(widget->accessibleName(), name) && widget->isVisible())
            return chosen(*widget);
    }
}

} // namespace

std::vector<Scene> shelfScenes(StillCapture &stills, Clock &clock) {
    const auto scene = [&](const QString &name, std::function<void(Shelf &)> fill) {
        return Scene{"shelf-" + name, [&, fill]() -> std::shared_ptr<void> {
                         auto shelf = std::make_shared<Shelf>(stills, clock);
                         fill(*shelf);
                         return shelf;
                     }};
    };
    const auto several = [](int count) {
        return [count](Shelf &shelf) {
            for (int i = 1; i <= count; ++i)
                shelf.add("Capture " + std::to_string(i), ShelfItem::Uploading{i / (count + 1.0)});
        };
    };
    return {scene("states", addStates),
            scene("names", addOddities),
            scene("1", several(1)),
            scene("3", several(3)),
            scene("12", several(12)),
            scene("keyboard",
                  [](Shelf &shelf) {
                      addStates(shelf);
                      shelf.panel.takeKeyboard();
                  }),
            scene("menu",
                  [](Shelf &shelf) {
                      addStates(shelf);
                      forShown("notes.md, Capture Nov 21", [](QWidget &card) {
                          const QPoint middle = card.rect().center();
                          QContextMenuEvent asked(QContextMenuEvent::Mouse, middle, card.mapToGlobal(middle));
                          QApplication::sendEvent(&card, &asked);
                      });
                  }),
            scene("projects", [](Shelf &shelf) {
                addStates(shelf);
                forShown("Choose project",
                         [](QWidget &button) { static_cast<PanelButton &>(button).openMenu(); });
            })};
}

} // namespace vantrell::gallery

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// The shelf on the screen, without the application around it: a test says what happens to its cards.
//
//     shelf-host FD        answers the commands below on that descriptor

#include "CommandSocket.h"

#include "Panels/DesktopLink.h"
#include "Platform/NullCaptureBackend.h"
#include "ShelfPanel/ShelfPanel.h"
#include "TestSupport/ManualClock.h"

#include <QAction>
#include <QApplication>
#include <QPainter>
#include <QWidget>

#include <algorithm>

using namespace vantrell;
using namespace vantrell::testing;

namespace {

class NoFiles final : public FileOpener {
public:
    bool openPage(const std::string &) override { return true; }
    bool openFile(const std::filesystem::path &) override { return true; }
    bool showInFileManager(const std::filesystem::path &) override { return true; }
};

QImage picture() {
    QImage image(640, 360, QImage::Format_RGB32);
    QLinearGradient colours(0, 0, 640, 360);
    colours.setColorAt(0, 0x44617c);
    colours.setColorAt(1, 0x8b6480);
    QPainter(&image).fillRect(image.rect(), colours);
    return image;
}

class Host {
public:
    Host() {
        m_store.onVisibilityChange = [this](bool visible) { m_shelf.setVisible(visible); };
        m_store.onOpen = [this](const ShelfItem &item) { note("open " + item.title()); };
        m_store.onRetry = [this](const ShelfItem &item) { note("retry " + item.title()); };
        m_shelf.projects = [] {
            return std::vector<TargetProject>{{"p1", "Team & talks"}, {"p2", "Private"}};
        };
        m_shelf.onProjectChosen = [this](const QUuid &id, const std::string &project) {
            note("project " + project + " for " + m_store.find(id)->title());
        };
        m_shelf.pageOf = [](const ShelfItem &) { return std::string("https://example.org/editor/1"); };
    }

    QString answer(const QStringList &words) {
        const QString command = words[0];
        const QString rest = words.mid(1).join(' ');
        if (command == "add") {
            CaptureResult made{.fileURL = "/tmp/a film \xff.mov", .name = rest.toStdString()};
            made.previewImage = picture();
            made.durationMs = 41000;
            m_store.add(std::make_shared<const CaptureResult>(std::move(made)));
        } else if (command == "add-damaged") {
            CaptureResult made{.name = QString(rest).replace("\\n", "\n").toStdString()};
            made.thumbnailJPEG = "\xff\xd8 no picture";
            m_store.add(std::make_shared<const CaptureResult>(std::move(made)));
        } else if (command == "clear") {
            while (!m_store.items().empty())
                m_store.remove(newest());
        } else if (command == "upload") {
            m_store.update(newest(), ShelfItem::Uploading{words[1].toDouble()});
        } else if (command == "done") {
            m_store.update(newest(), ShelfItem::Done{"p1"});
        } else if (command == "fail") {
            m_store.update(newest(), ShelfItem::Failed{rest.toStdString()});
        } else if (command == "needs-project") {
            m_store.update(newest(), ShelfItem::NeedsProject{});
        } else if (command == "advance") {
            m_clock.advance(std::chrono::milliseconds(words[1].toInt()));
        } else if (command == "keyboard") {
            m_shelf.takeKeyboard();
        } else if (command == "attended") {
            return QString::number(
                std::ranges::any_of(QApplication::topLevelWidgets(), &QWidget::underMouse));
        } else if (command == "blended") {
            return QString::number(DesktopLink::instance().isComposited());
        } else if (command == "menu") {
            const QWidget *menu = QApplication::activePopupWidget();
            return menu ? menu->actions().front()->text() : QString();
        } else if (command == "cards") {
            QStringList titles;
            for (const ShelfItem &item : m_store.items())
                titles += QString::fromStdString(item.title());
            return titles.join(", ");
        } else if (command == "where") {
            return whereIs(rest);
        } else if (command == "happened") {
            return std::exchange(m_happened, {}).join(", ");
        } else {
            return "what?";
        }
        return "ok";
    }

private:
    QUuid newest() const { return m_store.items().back().id; }
    void note(const std::string &what) { m_happened += QString::fromStdString(what); }

    /// "x y" of the middle of what has that accessible name, once it can be seen and has come to rest.
    static QString whereIs(const QString &name) {
        // Cards fade while they move.
        const auto isMoving = [](const QWidget *widget) {
            return widget->isVisible() && widget->graphicsEffect();
        };
        if (std::ranges::any_of(QApplication::allWidgets(), isMoving))
            return {};
        for (const QWidget *widget : QApplication::allWidgets()) {
            const QPoint middle = widget->mapToGlobal(widget->rect().center());
            if (widget->accessibleName() == name && widget->isVisible())
                return QString("%1 %2").arg(middle.x()).arg(middle.y());
        }
        return {};
    }

    ManualClock m_clock;
    ShelfStore m_store{m_clock};
    NullCaptureBackend m_capture{"none"};
    NoFiles m_files;
    ShelfPanel m_shelf{{m_store, m_capture, m_files}};
    QStringList m_happened;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    Host host;
    const CommandSocket socket(application.arguments().value(1).toInt(),
                               [&host](const QStringList &words) { return host.answer(words); });
    return application.exec();
}

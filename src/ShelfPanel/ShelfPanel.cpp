// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/ShelfPanel.h"

#include "Panels/BackdropMonitor.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelPlacement.h"
#include "Panels/PanelShell.h"
#include "ShelfPanel/ShelfStack.h"
#include "ShelfPanel/ShelfText.h"
#include "Support/Log.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vantrell {

struct ShelfPanel::Panel final : ShelfStack::Host {
    Panel(ShelfPanel &shelf, Services given) : owner(shelf), services(given) {
        observation = services.store.observe([this] { itemsChanged(); });
        picture = PanelShell::instance().observePicture([this] { keepOutOfPicture(); });
        for (const auto changed : {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved,
                                   &QGuiApplication::primaryScreenChanged})
            QObject::connect(qGuiApp, changed, &context, [this] { place(); });
    }

    void open() {
        if (!stack) {
            stack = std::make_unique<ShelfStack>(*this);
            place();
        }
        stack->setItems(services.store.items());
        keepOutOfPicture();
        if (!backdrop && services.stills && services.clock) {
            backdrop.emplace(*stack, *services.stills, *services.clock,
                             [this](bool isLight) { stack->setOnLightBackdrop(isLight); });
            backdrop->start();
        }
    }

    void close() {
        backdrop.reset();
        if (!stack)
            return;
        stack->hide();
        // Not inside a call of its own: one of its buttons may have led here.
        retired = std::move(stack);
        QTimer::singleShot(0, &context, [this] { retired.reset(); });
    }

    /// What is being recorded there shows no cards: they come back when it is over.
    void keepOutOfPicture() {
        if (!stack)
            return;
        if (stack->mayLieAt(stack->panelFrame().topLeft()))
            stack->showPanel();
        else
            stack->hide();
    }

    /// The display that the shelf shall be on, or what has become of it.
    QScreen *display() const {
        QScreen *const primary = QGuiApplication::primaryScreen();
        const std::optional<std::string> &wanted = services.store.preferredDisplay;
        if (!wanted || !primary)
            return primary;
        QPoint where = primary->geometry().center();
        if (const auto displays = services.capture.displays()) {
            const auto found = std::ranges::find(*displays, *wanted, &Display::id);
            if (found != displays->end()) {
                const Rect &frame = found->frame;
                where = {int(std::lround(frame.x + frame.width / 2)),
                         int(std::lround(frame.y + frame.height / 2))};
            }
        }
        return screenOf(*wanted, where);
    }

    void place() {
        if (!stack)
            return;
        QScreen *const screen = display();
        QObject::disconnect(roomChanged);
        if (screen)
            roomChanged =
                QObject::connect(screen, &QScreen::availableGeometryChanged, &context, [this] { place(); });
        stack->setDisplay(screen);
    }

    void itemsChanged() {
        if (stack)
            stack->setItems(services.store.items());
    }

    void act(const QUuid &id, ShelfCard::Action action) override {
        switch (action) {
        case ShelfCard::Action::open:
            services.store.open(id);
            break;
        case ShelfCard::Action::retry:
            services.store.retry(id);
            break;
        case ShelfCard::Action::dismiss:
            services.store.remove(id);
            break;
        case ShelfCard::Action::dragOut:
            break;
        }
    }

    QMenu *makeProjectMenu(const QUuid &id) override {
        auto *menu = new QMenu;
        const std::vector<TargetProject> known =
            owner.projects ? owner.projects() : std::vector<TargetProject>();
        for (const TargetProject &project : known) {
            QString name = oneLine(QString::fromStdString(project.name));
            QAction *choice = menu->addAction(name.replace('&', "&&"));
            QObject::connect(choice, &QAction::triggered, &context, [this, id, projectId = project.id] {
                if (owner.onProjectChosen)
                    owner.onProjectChosen(id, projectId);
            });
        }
        if (known.empty())
            menu->addAction(shelfText("No projects yet. Create one in Vantrell"))->setEnabled(false);
        return menu;
    }

    QMenu *makeCardMenu(const QUuid &id) override {
        const ShelfItem *item = services.store.find(id);
        if (!item)
            return nullptr;
        auto *menu = new QMenu;
        const auto add = [this, menu](const QString &text, bool isPossible, auto action) {
            QAction *entry = menu->addAction(text);
            entry->setEnabled(isPossible);
            QObject::connect(entry, &QAction::triggered, &context, action);
        };
        add(shelfText("Open"), item->isDone(), [this, id] { services.store.open(id); });
        add(shelfText("Retry"), item->canRetry(), [this, id] { services.store.retry(id); });
        add(shelfText("Copy link"), item->isDone() && owner.pageOf, [this, id] { copyLink(id); });
        add(shelfText("Show in file manager"), item->fileURL().has_value(),
            [this, id] { showInFileManager(id); });
        menu->addSeparator();
        add(shelfText("Dismiss"), true, [this, id] { services.store.remove(id); });
        return menu;
    }

    void copyLink(const QUuid &id) const {
        const ShelfItem *item = services.store.find(id);
        if (item && item->isDone() && owner.pageOf)
            QGuiApplication::clipboard()->setText(QString::fromStdString(owner.pageOf(*item)));
    }

    void showInFileManager(const QUuid &id) const {
        const auto file = fileOf(id);
        if (file && !services.files.showInFileManager(*file))
            qCWarning(logApp, "no file manager to show a capture in");
    }

    std::optional<std::filesystem::path> fileOf(const QUuid &id) const override {
        const ShelfItem *item = services.store.find(id);
        return item ? item->fileURL() : std::nullopt;
    }

    void setAttended(bool attended) override { services.store.setHovering(attended); }

    void emptied() override {
        if (stack)
            close();
    }

    ShelfPanel &owner;
    const Services services;
    std::unique_ptr<ShelfStack> stack;
    std::unique_ptr<ShelfStack> retired;
    std::optional<BackdropMonitor> backdrop;
    QMetaObject::Connection roomChanged;
    Observation observation;
    Observation picture;
    /// What the connections end with.
    QObject context;
};

ShelfPanel::ShelfPanel(Services services) : m_panel(std::make_unique<Panel>(*this, services)) {}

ShelfPanel::~ShelfPanel() = default;

void ShelfPanel::setVisible(bool visible) {
    if (visible && !m_panel->services.store.items().empty()) {
        m_panel->place();
        m_panel->open();
    } else if (!visible && !m_panel->services.store.items().empty()) {
        m_panel->close();
    }
    // A shelf that has become empty goes when its last card has.
}

bool ShelfPanel::isVisible() const {
    return m_panel->stack && m_panel->stack->isVisible() && !m_panel->stack->isEmpty();
}

QRect ShelfPanel::frame() const {
    return isVisible() ? m_panel->stack->panelFrame() : QRect();
}

void ShelfPanel::takeKeyboard() {
    if (m_panel->stack)
        m_panel->stack->takeKeyboard();
}

} // namespace vantrell

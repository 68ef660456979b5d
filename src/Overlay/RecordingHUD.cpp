// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/RecordingHUD.h"

#include "Overlay/OverlayDesktop.h"
#include "Panels/BackdropMonitor.h"
#include "Panels/FloatingPanel.h"
#include "Panels/LevelMeter.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelPlacement.h"
#include "Panels/PillPanel.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <chrono>
#include <optional>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr int hudHeight = 48;
constexpr int hudPadding = 4;
constexpr int hudButtonHeight = hudHeight - 2 * hudPadding;
/// From the display's lower edge, where nobody has put it elsewhere: a line of text fits below.
constexpr int hudDistance = 64;
constexpr auto deletePatience = 3s;

} // namespace

struct RecordingHUD::Panel {
    Q_DECLARE_TR_FUNCTIONS(RecordingHUD)

public:
    Panel(Services given, std::shared_ptr<RecordingHUDState> shown)
        : state(std::move(shown)), window(new FloatingPanel({.radius = hudHeight / 2.0})),
          placement(given.settings, "hud"),
          backdrop(*window, given.stills, given.clock,
                   [this](bool isLight) { state->onLightBackdrop = isLight; }) {
        build();
        observation = state->observe([this] { refresh(); });
        window->onMoved = [this](QRect frame) { placement.save(frame); };
        window->onPlaced = [this] { placePill(); };
        refresh();
    }

    ~Panel() {
        observation.reset();
        window->onMoved = nullptr;
        window->onPlaced = nullptr;
        window->hide();
        // A control of it may be on the stack.
        window->deleteLater();
    }

    void build() {
        window->setWindowTitle(tr("Recording"));
        window->setAccessibleName(window->windowTitle());
        auto *row = new QHBoxLayout(window);
        const int margin = window->shadowMargin() + hudPadding;
        row->setContentsMargins(margin, margin, margin, margin);
        row->setSpacing(2);
        row->setSizeConstraint(QLayout::SetFixedSize);
        stop = addButton(*row, tr("Stop"), Symbol::stop, &RecordingHUDState::onStop);
        stop->setTabular(true);
        if (state->micEnabled()) {
            meter = new LevelMeter(tr("Microphone level"), window);
            row->addSpacing(8);
            row->addWidget(meter);
            row->addSpacing(8);
        }
        pause = addButton(*row, tr("Pause"), Symbol::pause, &RecordingHUDState::onPauseToggle);
        addButton(*row, tr("Restart"), Symbol::restart, &RecordingHUDState::onRestart)
            ->setHelp(tr("Start over, without what was recorded"));
        remove = new PanelButton(tr("Delete"), window);
        remove->setSymbol(Symbol::trash);
        dress(*remove);
        row->addWidget(remove);
        QObject::connect(remove, &QAbstractButton::clicked, window, [this] { deleteOrAsk(); });
        deleteAsked.setSingleShot(true);
        deleteAsked.setInterval(deletePatience);
        QObject::connect(&deleteAsked, &QTimer::timeout, &deleteAsked, [this] { refresh(); });
    }

    PanelButton *addButton(QHBoxLayout &row, const QString &label, Symbol symbol,
                           std::function<void()> RecordingHUDState::*action) {
        auto *button = new PanelButton(label, window);
        button->setSymbol(symbol);
        dress(*button);
        row.addWidget(button);
        QObject::connect(button, &QAbstractButton::clicked, window, [this, action] { call(action); });
        return button;
    }

    static void dress(PanelButton &button) {
        button.setHeight(hudButtonHeight);
        button.setRadius(hudButtonHeight / 2.0);
    }

    /// The last thing that a handler does: the panel may be gone afterwards.
    void call(std::function<void()> RecordingHUDState::*action) {
        const std::shared_ptr<RecordingHUDState> kept = state;
        const std::function<void()> callback = kept.get()->*action;
        if (callback)
            callback();
    }

    void deleteOrAsk() {
        if (deleteAsked.isActive()) {
            deleteAsked.stop();
            call(&RecordingHUDState::onDelete);
            return;
        }
        deleteAsked.start();
        refresh();
    }

    /// All that is shown but the level, which changes by itself ten times a second.
    struct Shown {
        QString time;
        bool isPaused = false;
        bool isNearCap = false;
        bool asksToDelete = false;
        bool isOnLight = false;
        bool operator==(const Shown &) const = default;
    };

    void refresh() {
        const bool isPaused = state->isPaused;
        if (meter)
            meter->setLevel(isPaused ? 0 : double(state->micLevel));
        const Shown now{QString::fromStdString(timeLabel(state->elapsedSeconds)), isPaused,
                        state->isNearCap(), deleteAsked.isActive(), state->onLightBackdrop};
        if (shown == now)
            return;
        shown = now;
        window->setOnLightBackdrop(now.isOnLight);
        const QString help = QString::fromStdString(state->stopHelp());
        stop->setWords(now.time);
        stop->setHelp(help);
        //: The recorded time, and what the button does.
        stop->setAccessibleDescription(tr("%1. %2").arg(now.time, help));
        stop->setKind(isPaused ? PanelButton::Kind::filled : PanelButton::Kind::recording);
        pause->setLabel(isPaused ? tr("Resume") : tr("Pause"));
        pause->setSymbol(isPaused ? Symbol::play : Symbol::pause);
        pause->setKind(isPaused ? PanelButton::Kind::accent : PanelButton::Kind::plain);
        remove->setWarning(now.asksToDelete);
        remove->setKind(now.asksToDelete ? PanelButton::Kind::filled : PanelButton::Kind::plain);
        remove->setHelp(now.asksToDelete ? tr("Click again to delete the recording") : QString());
        setNote(now.asksToDelete ? remove->toolTip() : now.isNearCap && !isPaused ? help : QString());
        pill.setOnLightBackdrop(now.isOnLight);
    }

    void setNote(const QString &text) {
        if (std::exchange(note, text) == text)
            return;
        if (!note.isEmpty())
            pill.setText(note);
        placePill();
    }

    void placePill() {
        if (note.isEmpty() || !window->isVisible()) {
            pill.hide();
            return;
        }
        PanelShell::instance().adopt(pill, PanelShell::Role::tip, window);
        pill.showBelow(window->panelFrame());
    }

    bool show(const Display &display) {
        window->adjustSize();
        const QScreen *screen = screenOf(display);
        const QRect room = PanelShell::instance().room(*screen);
        const QSize size = window->panelRect().size();
        const QPoint first(room.center().x() - size.width() / 2,
                           room.bottom() + 1 - hudDistance - size.height());
        const auto place =
            placeOutOfPicture(*window, *screen, placement.restore(*screen, size).value_or(first));
        if (!place || !window->placePanel(*place))
            return false;
        window->showPanel();
        placePill();
        backdrop.start();
        return true;
    }

    void hide() {
        backdrop.stop();
        pill.hide();
        window->hide();
    }

    std::shared_ptr<RecordingHUDState> state;
    FloatingPanel *window;
    PillPanel pill{PanelShell::Role::tip};
    PanelPlacement placement;
    PanelButton *stop = nullptr;
    LevelMeter *meter = nullptr;
    PanelButton *pause = nullptr;
    PanelButton *remove = nullptr;
    QTimer deleteAsked;
    QString note;
    std::optional<Shown> shown;
    Observation observation;
    BackdropMonitor backdrop;
};

RecordingHUD::RecordingHUD(Services services, std::shared_ptr<RecordingHUDState> state)
    : m_panel(std::make_unique<Panel>(services, std::move(state))) {}

RecordingHUD::~RecordingHUD() = default;

bool RecordingHUD::show(const Display &display) {
    return m_panel->show(display);
}

void RecordingHUD::hide() {
    m_panel->hide();
}

QRect RecordingHUD::frame() const {
    return m_panel->window->isVisible() ? m_panel->window->panelFrame() : QRect();
}

} // namespace vantrell

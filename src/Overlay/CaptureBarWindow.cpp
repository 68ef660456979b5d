// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CaptureBarWindow.h"

#include "Panels/PanelFont.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr int barPadding = 6;
constexpr int barGap = 4;
constexpr int controlHeight = 44;
constexpr int updateHeight = 40;
constexpr int screenMargin = 4;
constexpr int mostProjectWidth = 150;
constexpr int mostNarrowProjectWidth = 90;

/// A line between groups of controls.
class Separator final : public QWidget {
public:
    explicit Separator(QWidget *parent) : QWidget(parent) {
        setFixedSize(9, controlHeight);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        constexpr int length = 28;
        QColor color = Theme::of(*this).text;
        color.setAlphaF(0.16F);
        QPainter(this).fillRect(QRectF(4, (height() - length) / 2.0, 1, length), color);
    }
};

} // namespace

CaptureBarWindow::CaptureBarWindow(AudioBackend &audio, CameraBackend &cameras, Clock &clock)
    : FloatingPanel({}), m_microphone(audio, clock, this), m_camera(cameras, this) {
    setWindowTitle(tr("Capture bar"));
    setAccessibleName(windowTitle());
    auto *column = new QVBoxLayout(this);
    const int margin = shadowMargin() + barPadding;
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(0);
    column->setSizeConstraint(QLayout::SetFixedSize);
    m_updateRow = new QWidget(this);
    auto *updateRow = new QHBoxLayout(m_updateRow);
    updateRow->setContentsMargins(8, 0, 0, barPadding);
    updateRow->setSpacing(barGap);
    buildUpdateRow(*updateRow);
    column->addWidget(m_updateRow);
    m_controls = new QBoxLayout(QBoxLayout::LeftToRight);
    m_controls->setSpacing(barGap);
    buildTools(addPart());
    m_betweenParts = new Separator(this);
    m_controls->addWidget(m_betweenParts);
    buildOptions(addPart());
    column->addLayout(m_controls);
}

PanelButton *CaptureBarWindow::add(QBoxLayout &row, const QString &label, Symbol symbol) {
    auto *button = new PanelButton(label, this);
    button->setSymbol(symbol);
    button->setHeight(controlHeight, true);
    row.addWidget(button);
    return button;
}

void CaptureBarWindow::addSeparator(QBoxLayout &row) {
    row.addWidget(new Separator(this));
}

QBoxLayout &CaptureBarWindow::addPart() {
    auto *part = new QHBoxLayout;
    part->setSpacing(barGap);
    m_controls->addLayout(part);
    m_controls->setAlignment(part, Qt::AlignHCenter);
    return *part;
}

void CaptureBarWindow::buildTools(QBoxLayout &row) {
    const auto *close = add(row, tr("Close"), Symbol::close);
    QObject::connect(close, &QAbstractButton::clicked, this, [this] {
        const auto state = m_state;
        giveKeyboardBack();
        if (state && state->onClose)
            state->onClose();
    });
    addSeparator(row);
    m_tools = {Tool{ToolMode::area, add(row, tr("Area"), Symbol::area), tr("Area")},
               Tool{ToolMode::window, add(row, tr("Window"), Symbol::window), tr("Window")},
               Tool{ToolMode::screen, add(row, tr("Screen"), Symbol::screen), tr("Screen")}};
    const std::array<QString, 3> helps{tr("Capture Area"), tr("Capture Window"), tr("Capture Full Screen")};
    for (std::size_t at = 0; at < m_tools.size(); ++at) {
        const Tool &tool = m_tools[at];
        tool.button->setCheckable(true);
        tool.button->setAutoExclusive(true);
        tool.button->setHelp(helps[at]);
        QObject::connect(tool.button, &QAbstractButton::clicked, this,
                         [this, mode = tool.mode] { setTool(mode); });
    }
}

void CaptureBarWindow::buildOptions(QBoxLayout &row) {
    for (PanelButton *const device : {m_microphone.button(), m_camera.button()}) {
        device->setHeight(controlHeight, true);
        row.addWidget(device);
    }
    m_systemAudio = add(row, tr("System audio"), Symbol::speaker);
    m_systemAudio->setCheckable(true);
    QObject::connect(m_systemAudio, &QAbstractButton::clicked, this, [this](bool isOn) {
        const auto state = m_state;
        if (!state)
            return;
        state->systemAudioEnabled = isOn;
        if (state->onSystemAudioChange)
            state->onSystemAudioChange(isOn);
    });
    m_countdown = add(row, tr("Recording countdown"), Symbol::timer);
    m_countdown->setMenuMaker([this] { return countdownMenu(); });
    addSeparator(row);
    m_project = new PanelButton(tr("Upload to"), this);
    m_project->setHeight(controlHeight, true);
    m_project->setMostTextWidth(mostProjectWidth);
    m_project->setMenuMaker([this] { return projectMenu(); });
    row.addWidget(m_project);
    m_connect = new PanelButton(tr("Connect"), this);
    m_connect->setWords(tr("Connect"));
    m_connect->setKind(PanelButton::Kind::accent);
    m_connect->setHelp(tr("Connect to Vantrell…"));
    row.addWidget(m_connect);
    QObject::connect(m_connect, &QAbstractButton::clicked, this, [this] {
        const auto state = m_state;
        if (state && state->onConnect)
            state->onConnect();
    });
    add(row, tr("Options"), Symbol::options)->setMenuMaker([this] { return optionsMenu(); });
    add(row, tr("More"), Symbol::more)->setMenuMaker([this] {
        return m_menu ? m_menu().release() : nullptr;
    });
}

void CaptureBarWindow::buildUpdateRow(QBoxLayout &row) {
    m_updateText = new PanelLabel(panelFont(labelSize, QFont::DemiBold), {}, m_updateRow);
    row.addWidget(m_updateText);
    row.addStretch();
    auto *later = new PanelButton(tr("Later"), m_updateRow);
    auto *install = new PanelButton(tr("Install"), m_updateRow);
    install->setKind(PanelButton::Kind::accent);
    for (PanelButton *button : {later, install}) {
        button->setWords(button->accessibleName());
        button->setHeight(updateHeight);
        row.addWidget(button);
    }
    QObject::connect(install, &QAbstractButton::clicked, this, [this] {
        const auto state = m_state;
        if (state && state->onInstallUpdate)
            state->onInstallUpdate();
    });
    QObject::connect(later, &QAbstractButton::clicked, this, [this] {
        const auto state = m_state;
        if (!state)
            return;
        state->updateDeferred = true;
        if (state->onDeferUpdate)
            state->onDeferUpdate();
    });
}

void CaptureBarWindow::show(std::shared_ptr<ToolBarState> state, std::function<std::unique_ptr<QMenu>()> menu,
                            int screenWidth) {
    m_state = std::move(state);
    m_menu = std::move(menu);
    m_screenWidth = screenWidth;
    m_microphone.activate(m_state);
    m_camera.activate(m_state);
    refresh();
}

void CaptureBarWindow::release() {
    giveKeyboardBack();
    m_microphone.deactivate();
    m_camera.deactivate();
    m_state.reset();
    m_menu = nullptr;
}

void CaptureBarWindow::refresh() {
    if (!m_state)
        return;
    setOnLightBackdrop(m_state->onLightBackdrop);
    for (const Tool &tool : m_tools)
        tool.button->setChecked(tool.mode == m_state->tool);
    m_systemAudio->setChecked(m_state->systemAudioEnabled);
    m_systemAudio->setSymbol(m_state->systemAudioEnabled ? Symbol::speaker : Symbol::speakerOff);
    m_systemAudio->setHelp(m_state->systemAudioEnabled ? tr("System audio: on") : tr("System audio: off"));
    const int seconds = m_state->countdownSeconds;
    m_countdown->setWords(seconds > 0 ? tr("%1 s").arg(seconds) : tr("Off"));
    // One takes the other's place, for the keys too.
    const bool hasKeys = m_project->hasFocus() || m_connect->hasFocus();
    m_project->setVisible(m_state->isConnected);
    m_connect->setVisible(!m_state->isConnected);
    if (hasKeys)
        (m_state->isConnected ? m_project : m_connect)->setFocus();
    const TargetProject *project = selectedProject();
    const QString name = project ? QString::fromStdString(project->name) : QString();
    m_project->setWords(project ? name : tr("No project"), tr("Upload to"));
    m_project->setHelp(project ? tr("Upload to: %1").arg(oneLine(name)) : tr("Upload to…"));
    const std::optional<std::string> &version = m_state->availableUpdateVersion;
    m_updateRow->setVisible(version && !m_state->updateDeferred);
    if (version)
        m_updateText->setText(tr("Update to %1").arg(oneLine(QString::fromStdString(*version))));
    fit();
}

void CaptureBarWindow::fit() {
    if (!fitRows(QBoxLayout::LeftToRight))
        fitRows(QBoxLayout::TopToBottom);
    layout()->activate();
    adjustSize();
}

bool CaptureBarWindow::fitRows(QBoxLayout::Direction direction) {
    m_controls->setDirection(direction);
    m_betweenParts->setVisible(direction == QBoxLayout::LeftToRight);
    for (const Room room : {Room::full, Room::symbolsForTools, Room::symbols}) {
        m_room = room;
        applyRoom();
        // Asked alone: the window's own layout would make the window as large before it is known to fit.
        for (int at = 0; at < m_controls->count(); ++at)
            m_controls->itemAt(at)->invalidate();
        m_controls->invalidate();
        if (m_controls->sizeHint().width() + 2 * (barPadding + screenMargin) <= m_screenWidth)
            return true;
    }
    return false;
}

void CaptureBarWindow::applyRoom() {
    // A row of their own has room for words.
    const bool saysTools = m_room == Room::full || m_controls->direction() == QBoxLayout::TopToBottom;
    for (const Tool &tool : m_tools)
        tool.button->setWords(saysTools ? tool.words : QString());
    m_microphone.refresh(m_room != Room::symbols);
    m_camera.refresh(m_room != Room::symbols);
    m_project->setMostTextWidth(m_room == Room::symbols ? mostNarrowProjectWidth : mostProjectWidth);
}

void CaptureBarWindow::setTool(ToolMode tool) {
    const auto state = m_state;
    if (!state)
        return;
    state->tool = tool;
    if (state->onToolChange)
        state->onToolChange(tool);
}

const TargetProject *CaptureBarWindow::selectedProject() const {
    const std::optional<std::string> &id = m_state->selectedProjectId;
    const std::vector<TargetProject> &projects = m_state->projects;
    const auto project = id ? std::ranges::find(projects, *id, &TargetProject::id) : projects.end();
    return project == projects.end() ? nullptr : &*project;
}

QMenu *CaptureBarWindow::countdownMenu() {
    if (!m_state)
        return nullptr;
    auto *menu = new QMenu(m_countdown);
    const std::array<std::pair<int, QString>, 3> choices{
        std::pair{0, tr("Off")}, std::pair{3, tr("3 seconds")}, std::pair{5, tr("5 seconds")}};
    menu->addSection(tr("Recording countdown"));
    for (const auto &[seconds, title] : choices) {
        QAction *action = menu->addAction(title);
        action->setCheckable(true);
        action->setChecked(m_state->countdownSeconds == seconds);
        QObject::connect(action, &QAction::triggered, menu, [this, value = seconds] {
            const auto state = m_state;
            if (!state)
                return;
            state->countdownSeconds = value;
            if (state->onCountdownChange)
                state->onCountdownChange(value);
        });
    }
    return menu;
}

QMenu *CaptureBarWindow::projectMenu() {
    if (!m_state)
        return nullptr;
    auto *menu = new QMenu(m_project);
    menu->addSection(tr("Upload to"));
    if (m_state->projects->empty())
        menu->addAction(tr("No projects yet. Create one in Vantrell"))->setEnabled(false);
    for (const TargetProject &project : m_state->projects.get()) {
        QAction *action = menu->addAction(oneLine(QString::fromStdString(project.name)).replace('&', "&&"));
        action->setCheckable(true);
        action->setChecked(m_state->selectedProjectId.get() == project.id);
        QObject::connect(action, &QAction::triggered, menu, [this, id = project.id] {
            const auto state = m_state;
            if (!state)
                return;
            state->selectedProjectId = id;
            if (state->onProjectChange)
                state->onProjectChange(id);
        });
    }
    return menu;
}

QMenu *CaptureBarWindow::optionsMenu() {
    if (!m_state)
        return nullptr;
    using Property = Published<bool> ToolBarState::*;
    using Callback = std::function<void(bool)> ToolBarState::*;
    struct Option {
        QString title;
        Property property;
        Callback changed;
    };
    auto *menu = new QMenu(this);
    menu->setToolTipsVisible(true);
    const std::array<Option, 4> options{
        Option{tr("Open after upload"), &ToolBarState::openAfterUpload,
               &ToolBarState::onOpenAfterUploadChange},
        Option{tr("Separate cursor"), &ToolBarState::separateCursor, &ToolBarState::onSeparateCursorChange},
        Option{tr("Auto camera"), &ToolBarState::autoCamera, &ToolBarState::onAutoCameraChange},
        Option{tr("Send usage events"), &ToolBarState::sendsUsage, &ToolBarState::onSendsUsageChange}};
    for (const Option &option : options) {
        QAction *action = menu->addAction(option.title);
        action->setCheckable(true);
        action->setChecked((m_state.get()->*option.property).get());
        if (option.property == &ToolBarState::sendsUsage) {
            action->setDisabled(m_state->usageForbidden.get());
            action->setToolTip(tr("How often what is used; no names, titles or pictures"));
        }
        QObject::connect(action, &QAction::triggered, menu,
                         [this, property = option.property, changed = option.changed](bool isOn) {
                             const auto state = m_state;
                             if (!state)
                                 return;
                             state.get()->*property = isOn;
                             if (state.get()->*changed)
                                 (state.get()->*changed)(isOn);
                         });
    }
    return menu;
}

void CaptureBarWindow::takeKeyboard() {
    DesktopLink &desktop = DesktopLink::instance();
    const DesktopLink::WindowId before = desktop.focusedWindow();
    if (before != DesktopLink::WindowId(winId()))
        m_keyboardBefore = before;
    const auto chosen =
        std::ranges::find_if(m_tools, [](const Tool &tool) { return tool.button->isChecked(); });
    (chosen == m_tools.end() ? m_tools.front() : *chosen).button->setFocus(Qt::TabFocusReason);
    if (!PanelShell::instance().lendKeyboard(*this))
        desktop.focus(DesktopLink::WindowId(winId()));
}

void CaptureBarWindow::giveKeyboardBack() {
    PanelShell::instance().takeKeyboardBack(*this);
    DesktopLink &desktop = DesktopLink::instance();
    const DesktopLink::WindowId before = std::exchange(m_keyboardBefore, 0);
    // Somebody else may have taken it meanwhile.
    if (before != 0 && internalWinId() != 0 &&
        desktop.focusedWindow() == DesktopLink::WindowId(internalWinId()))
        desktop.focus(before);
}

void CaptureBarWindow::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        giveKeyboardBack();
    else
        FloatingPanel::keyPressEvent(event);
}

} // namespace vantrell

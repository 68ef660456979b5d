// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/DeviceControl.h"

#include "Panels/PanelFont.h"

#include <QMenu>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostNameWidth = 140;

} // namespace

DeviceControl::DeviceControl(Looks looks, QWidget *parent)
    : m_looks(std::move(looks)), m_button(new PanelButton(m_looks.label, parent)) {
    m_button->setMostTextWidth(mostNameWidth);
    m_button->setMenuMaker([this] { return makeMenu(); });
}

DeviceControl::~DeviceControl() = default;

void DeviceControl::activate(std::shared_ptr<ToolBarState> state) {
    m_state = std::move(state);
    list();
    refresh(m_showsName);
}

void DeviceControl::deactivate() {
    shutDown();
    follow(nullptr);
}

void DeviceControl::shutDown() {
    m_scope.cancel();
    m_state.reset();
}

void DeviceControl::refresh(bool showsName) {
    m_showsName = showsName;
    if (!m_state)
        return;
    follow(m_state.get());
    const bool isUsed = isOn(*m_state);
    const bool isWarned = isUsed && isGone();
    m_button->setSymbol(isUsed && !isWarned ? m_looks.on : m_looks.off);
    m_button->setWarning(isWarned);
    m_button->setKind(isUsed ? PanelButton::Kind::filled : PanelButton::Kind::plain);
    const QString second = isWarned ? tr("Not connected") : m_button->accessibleName();
    m_button->setWords(isUsed && showsName ? deviceName() : QString(),
                       isUsed && showsName ? second : QString());
    m_button->setHelp(!isUsed    ? tr("%1: off").arg(m_looks.label)
                      : isWarned ? tr("%1: not connected").arg(deviceName())
                                 : tr("%1: %2").arg(m_looks.label, deviceName()));
}

void DeviceControl::list() {
    // Another one may have come in its place.
    m_scope.cancel();
    if (m_state)
        m_scope.start(this, &DeviceControl::listNow);
}

Task<> DeviceControl::listNow(std::stop_token stop) {
    auto found = co_await connected(stop);
    if (stop.stop_requested())
        co_return;
    m_devices = std::move(found);
    m_isListed = true;
    for (const Device &device : m_devices)
        m_names[device.id] = device.name;
    refresh(m_showsName);
}

bool DeviceControl::isGone() const {
    if (isBroken())
        return true;
    if (!m_isListed || !m_state)
        return false;
    const std::optional<std::string> id = chosen(*m_state);
    return id ? std::ranges::find(m_devices, *id, &Device::id) == m_devices.end() : m_devices.empty();
}

QString DeviceControl::deviceName() const {
    const std::optional<std::string> id = chosen(*m_state);
    if (id) {
        const auto known = m_names.find(*id);
        return known == m_names.end() ? m_looks.label : oneLine(QString::fromStdString(known->second));
    }
    const auto standard = std::ranges::find(m_devices, true, &Device::isDefault);
    return standard == m_devices.end() ? tr("Default") : oneLine(QString::fromStdString(standard->name));
}

QMenu *DeviceControl::makeMenu() {
    if (!m_state)
        return nullptr;
    auto *menu = new QMenu(m_button);
    const bool isUsed = isOn(*m_state);
    const std::optional<std::string> current = chosen(*m_state);
    const auto add = [&](const QString &name, bool isChosen, bool turnsOn, std::optional<std::string> id) {
        QAction *action = menu->addAction(QString(name).replace('&', "&&"));
        action->setCheckable(true);
        action->setChecked(isChosen);
        QObject::connect(action, &QAction::triggered, menu, [this, turnsOn, id] { choose(turnsOn, id); });
        return action;
    };
    add(m_looks.none, !isUsed, false, current);
    menu->addSeparator();
    add(tr("System default"), isUsed && !current, true, std::nullopt);
    for (const Device &device : m_devices)
        add(oneLine(QString::fromStdString(device.name)), isUsed && current == device.id, true, device.id);
    const bool isMissing = current && std::ranges::find(m_devices, *current, &Device::id) == m_devices.end();
    if (isMissing && m_isListed)
        add(tr("%1 (not connected)").arg(deviceName()), isUsed, true, current)->setEnabled(false);
    // For the next time it opens.
    list();
    return menu;
}

void DeviceControl::choose(bool isUsed, const std::optional<std::string> &deviceId) {
    if (const std::shared_ptr<ToolBarState> state = m_state)
        change(*state, isUsed, deviceId);
}

} // namespace vantrell

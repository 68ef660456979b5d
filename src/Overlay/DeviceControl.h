// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/ToolBarState.h"
#include "Panels/PanelButton.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>

#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The capture bar's control for devices of one kind: off, or one of them; the menu offers those that are
/// connected. Main thread.
class DeviceControl {
    Q_DECLARE_TR_FUNCTIONS(CaptureBar)

public:
    struct Device {
        std::string id;
        std::string name;
        bool isDefault = false;
    };

    virtual ~DeviceControl();
    DeviceControl(const DeviceControl &) = delete;
    DeviceControl &operator=(const DeviceControl &) = delete;

    PanelButton *button() const { return m_button; }
    /// Shows that state's choice and changes it, from now until `deactivate`.
    void activate(std::shared_ptr<ToolBarState> state);
    void deactivate();
    /// The state has changed, or the room for words.
    void refresh(bool showsName);

protected:
    /// What the control is about, in words and as a symbol.
    struct Looks {
        /// "Microphone", and the entry that switches it off.
        QString label;
        QString none;
        Symbol on;
        Symbol off;
    };
    DeviceControl(Looks looks, QWidget *parent);

    /// Which of the state's properties it shows and changes.
    virtual bool isOn(const ToolBarState &state) const = 0;
    virtual std::optional<std::string> chosen(const ToolBarState &state) const = 0;
    virtual void change(ToolBarState &state, bool isOn, std::optional<std::string> deviceId) = 0;
    /// What is connected; empty as well when that cannot be told.
    virtual Task<std::vector<Device>> connected(std::stop_token stop) = 0;
    /// Something is shown, or no longer; the state may have changed. `state` is null for the latter.
    virtual void follow(const ToolBarState *state) = 0;
    /// The device does not work though it is connected.
    virtual bool isBroken() const { return false; }

    /// Asks anew what is connected.
    void list();
    /// The chosen device is not there.
    bool isGone() const;
    bool showsName() const { return m_showsName; }
    /// To be called first by the destructors of subclasses: nothing of theirs is called afterwards.
    void shutDown();

private:
    QMenu *makeMenu();
    void choose(bool isOn, const std::optional<std::string> &deviceId);
    Task<> listNow(std::stop_token stop);
    QString deviceName() const;

    const Looks m_looks;
    PanelButton *m_button;
    std::shared_ptr<ToolBarState> m_state;
    std::vector<Device> m_devices;
    /// The name that each device had when it was last seen.
    std::map<std::string, std::string> m_names;
    bool m_isListed = false;
    bool m_showsName = true;
    TaskScope m_scope;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelAccessibility.h"

#include "Panels/LevelMeter.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelLabel.h"

#include <QAccessibleWidget>

#include <cmath>

namespace vantrell {

namespace {

/// A part of 0...1 as whole per cent, which nobody changes.
class ShownLevel : public QAccessibleValueInterface {
public:
    QVariant currentValue() const override { return int(std::lround(level() * 100)); }
    void setCurrentValue(const QVariant &) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

protected:
    virtual double level() const = 0;
};

class AccessibleButton final : public QAccessibleWidget, public ShownLevel {
public:
    explicit AccessibleButton(PanelButton *button)
        : QAccessibleWidget(button, roleOf(*button), button->accessibleName()) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? button().accessibleName() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = button().isCheckable();
        state.checked = button().isChecked();
        state.pressed = button().isDown();
        state.hasPopup = button().hasMenu();
        state.expandable = button().hasMenu();
        state.expanded = button().isMenuOpen();
        return state;
    }
    QStringList actionNames() const override {
        if (!button().isEnabled())
            return {};
        if (button().hasMenu())
            return {showMenuAction(), pressAction()};
        return button().isCheckable() ? QStringList{toggleAction(), pressAction()}
                                      : QStringList{pressAction()};
    }
    void doAction(const QString &name) override {
        if (!button().isEnabled())
            return;
        if (name == showMenuAction())
            button().openMenu();
        else if (name == pressAction() || name == toggleAction())
            button().click();
        else
            QAccessibleWidget::doAction(name);
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return button().level() ? static_cast<QAccessibleValueInterface *>(this) : nullptr;
        return QAccessibleWidget::interface_cast(type);
    }

private:
    static QAccessible::Role roleOf(const PanelButton &button) {
        if (button.hasMenu())
            return QAccessible::ButtonMenu;
        if (button.isCheckable())
            return button.autoExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox;
        return QAccessible::Button;
    }
    QAccessible::Role role() const override { return roleOf(button()); }
    PanelButton &button() const { return *static_cast<PanelButton *>(widget()); }
    double level() const override { return button().level().value_or(0); }
};

class AccessibleMeter final : public QAccessibleWidget, public ShownLevel {
public:
    explicit AccessibleMeter(LevelMeter *meter) : QAccessibleWidget(meter, QAccessible::ProgressBar) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

private:
    double level() const override { return static_cast<LevelMeter *>(widget())->level(); }
};

class AccessibleLabel final : public QAccessibleWidget {
public:
    explicit AccessibleLabel(PanelLabel *label) : QAccessibleWidget(label, QAccessible::StaticText) {}
};

QAccessibleInterface *make(const QString &, QObject *object) {
    if (auto *button = dynamic_cast<PanelButton *>(object))
        return new AccessibleButton(button);
    if (auto *meter = dynamic_cast<LevelMeter *>(object))
        return new AccessibleMeter(meter);
    if (auto *label = dynamic_cast<PanelLabel *>(object))
        return new AccessibleLabel(label);
    return nullptr;
}

} // namespace

void installPanelAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    static_cast<void>(isInstalled);
}

} // namespace vantrell

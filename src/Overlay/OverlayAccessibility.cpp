// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayAccessibility.h"

#include "Overlay/QtGeometry.h"
#include "Overlay/SelectionView.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <array>
#include <functional>

namespace vantrell {

namespace {

class ButtonElement final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ButtonElement(SelectionView *view, ActionButtons::Kind kind) : m_view(view), m_kind(kind) {
        onPress = [view, kind] { view->accept(kind == ActionButtons::Kind::record); };
    }

    std::function<void()> onPress;

    bool isValid() const override { return !m_view.isNull(); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_view ? m_view->windowHandle() : nullptr; }
    QAccessibleInterface *parent() const override {
        return m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
    }
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Button; }

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? ActionButtons::labelOf(m_kind) : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}

    QRect rect() const override {
        const auto place = frame();
        return place
                   ? QRect(m_view->mapToGlobal(toQt(*place).toRect().topLeft()), toQt(*place).toRect().size())
                   : QRect();
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.disabled = !isEnabled();
        // Only a selection has them beside it.
        state.invisible = state.offscreen = !frame();
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        return isEnabled() ? QStringList{pressAction()} : QStringList();
    }
    void doAction(const QString &name) override {
        if (name == pressAction() && isEnabled())
            onPress();
    }
    QStringList keyBindingsForAction(const QString &) const override {
        return {m_kind == ActionButtons::Kind::record ? QStringLiteral("Return")
                                                      : QStringLiteral("Ctrl+Return")};
    }

private:
    bool isEnabled() const { return m_view && m_view->canAccept(); }
    std::optional<Rect> frame() const {
        if (!m_view)
            return std::nullopt;
        return m_kind == ActionButtons::Kind::record ? m_view->area().recordButtonRect
                                                     : m_view->area().captureButtonRect;
    }

    QPointer<SelectionView> m_view;
    ActionButtons::Kind m_kind;
};

class OverlayGroup final : public QAccessibleWidget {
public:
    explicit OverlayGroup(SelectionView *view)
        : QAccessibleWidget(view, QAccessible::Grouping, view->accessibleName()),
          m_buttons{add(view, ActionButtons::Kind::capture), add(view, ActionButtons::Kind::record)} {}
    ~OverlayGroup() override {
        for (const QAccessible::Id button : m_buttons)
            QAccessible::deleteAccessibleInterface(button);
    }

    int childCount() const override { return int(m_buttons.size()); }
    QAccessibleInterface *child(int index) const override {
        return index >= 0 && index < childCount()
                   ? QAccessible::accessibleInterface(m_buttons[std::size_t(index)])
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *wanted) const override {
        for (int index = 0; index < childCount(); ++index)
            if (child(index) == wanted)
                return index;
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override {
        for (int index = 0; index < childCount(); ++index)
            if (child(index)->rect().contains(x, y))
                return child(index);
        return nullptr;
    }

private:
    static QAccessible::Id add(SelectionView *view, ActionButtons::Kind kind) {
        return QAccessible::registerAccessibleInterface(new ButtonElement(view, kind));
    }

    std::array<QAccessible::Id, 2> m_buttons;
};

QAccessibleInterface *makeOverlayGroup(const QString &, QObject *object) {
    auto *view = dynamic_cast<SelectionView *>(object);
    return view ? new OverlayGroup(view) : nullptr;
}

} // namespace

void installOverlayAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeOverlayGroup);
        return true;
    }();
    static_cast<void>(isInstalled);
}

} // namespace vantrell

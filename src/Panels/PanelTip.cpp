// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelTip.h"

#include "Panels/PillPanel.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>

namespace vantrell {

namespace {

QPointer<PillPanel> shownTip;
QPointer<const QWidget> tipOwner;

void showTip(const QWidget &widget) {
    if (!shownTip) {
        shownTip = new PillPanel(PanelShell::Role::tip);
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, shownTip, [] { delete shownTip; });
    }
    PanelShell::instance().adopt(*shownTip, PanelShell::Role::tip, widget.window());
    tipOwner = &widget;
    shownTip->setOnLightBackdrop(Theme::of(widget).isLight);
    shownTip->setText(widget.toolTip());
    // Clear of the whole panel, above or below the control.
    const QWidget *window = widget.window();
    const auto *panel = dynamic_cast<const FloatingPanel *>(window);
    QRect frame = panel ? panel->panelFrame() : window->frameGeometry();
    const QRect control(widget.mapToGlobal(QPoint(0, 0)), widget.size());
    frame.setLeft(control.left());
    frame.setRight(control.right());
    shownTip->showAbove(frame);
}

} // namespace

bool handleTipEvent(QWidget &widget, const QEvent &event) {
    switch (event.type()) {
    case QEvent::ToolTip:
        if (widget.toolTip().isEmpty())
            return false;
        showTip(widget);
        return true;
    case QEvent::Leave:
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
    case QEvent::Wheel:
    case QEvent::Hide:
    case QEvent::Move:
        if (shownTip && tipOwner == &widget)
            shownTip->hide();
        return false;
    default:
        return false;
    }
}

void hideTipOf(const QWidget &window) {
    if (shownTip && tipOwner && tipOwner->window() == &window)
        shownTip->hide();
}

void updateTip(const QWidget &widget) {
    if (shownTip && shownTip->isVisible() && tipOwner == &widget)
        showTip(widget);
}

} // namespace vantrell

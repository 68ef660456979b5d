// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelMenu.h"

#include "Panels/DesktopLink.h"
#include "Panels/FloatingPanel.h"
#include "Panels/Icons.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelShape.h"
#include "Panels/PanelShell.h"

#include <QMenu>
#include <QPainter>
#include <QProxyStyle>
#include <QScreen>
#include <QStyleFactory>
#include <QStyleOptionMenuItem>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr int itemHeight = 40;
constexpr int separatorHeight = 11;
constexpr int menuPadding = 6;
/// Where the words begin: behind the check mark.
constexpr int wordsInset = 38;
constexpr int endInset = 18;
constexpr int keysGap = 28;
constexpr int arrowSize = 12;
constexpr double checkSize = 16;
constexpr double menuRadius = 12;
/// Of names, and of our own sentences that only tell something.
constexpr int mostTextWidth = 360;
constexpr int mostNoteWidth = 680;

class PanelMenuStyle final : public QProxyStyle {
public:
    explicit PanelMenuStyle(const Theme &theme)
        : QProxyStyle(QStyleFactory::create("fusion")), m_theme(theme) {}

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override {
        switch (metric) {
        case PM_MenuPanelWidth:
            return 0;
        case PM_MenuHMargin:
        case PM_MenuVMargin:
            return menuPadding;
        case PM_SubMenuOverlap:
            return -2;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *answer) const override {
        switch (hint) {
        case SH_Menu_SupportsSections:
        case SH_Menu_MouseTracking:
            return 1;
        case SH_Menu_Mask:
            return 0;
        default:
            return QProxyStyle::styleHint(hint, option, widget, answer);
        }
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (type != CT_MenuItem || !item)
            return QProxyStyle::sizeFromContents(type, option, size, widget);
        if (item->menuItemType == QStyleOptionMenuItem::Separator && item->text.isEmpty())
            return {10, separatorHeight};
        const QFont font = panelFont(labelSize, QFont::Medium);
        double width = wordsInset + endInset + QFontMetricsF(font).horizontalAdvance(words(*item)) + 1;
        if (const QString pressed = keys(*item); !pressed.isEmpty())
            width += keysGap + QFontMetricsF(panelFont(secondLineSize)).horizontalAdvance(pressed);
        if (item->menuItemType == QStyleOptionMenuItem::SubMenu)
            width += arrowSize;
        return {int(std::ceil(width)), std::max(itemHeight, int(QFontMetricsF(font).height()) + 16)};
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override {
        if (element == PE_FrameMenu)
            return;
        if (element != PE_PanelMenu) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        QColor ground = m_theme.panel;
        ground.setAlpha(255);
        const QRectF area(option->rect);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(m_theme.hairline, 1));
        if (DesktopLink::instance().isComposited()) {
            painter->setCompositionMode(QPainter::CompositionMode_Source);
            painter->fillRect(area, Qt::transparent);
            painter->setCompositionMode(QPainter::CompositionMode_SourceOver);
            painter->fillPath(roundedPath(area, menuRadius), ground);
            painter->drawPath(roundedPath(area.adjusted(0.5, 0.5, -0.5, -0.5), menuRadius - 0.5));
        } else {
            painter->fillRect(area, ground);
            painter->drawRect(area.adjusted(0.5, 0.5, -0.5, -0.5));
        }
        painter->restore();
    }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (element == CE_MenuItem && item)
            drawItem(*item, *painter);
        else if (element != CE_MenuEmptyArea && element != CE_MenuHMargin && element != CE_MenuVMargin)
            QProxyStyle::drawControl(element, option, painter, widget);
    }

private:
    static QString words(const QStyleOptionMenuItem &item) {
        QString text = item.text.section('\t', 0, 0);
        // A single & marks a key to press, a double one is meant.
        text.replace("&&", QChar(1)).remove('&').replace(QChar(1), "&");
        return QFontMetricsF(panelFont(labelSize, QFont::Medium))
            .elidedText(oneLine(text), Qt::ElideMiddle,
                        item.state & State_Enabled ? mostTextWidth : mostNoteWidth);
    }
    /// As keyboards have them written.
    static QString keys(const QStyleOptionMenuItem &item) {
        return item.text.section('\t', 1).replace(QLatin1String("Meta"), QLatin1String("Super"));
    }

    void drawItem(const QStyleOptionMenuItem &item, QPainter &painter) const {
        const QRectF area(item.rect);
        const bool isMirrored = item.direction == Qt::RightToLeft;
        const auto placed = [&](QRectF rect) {
            if (isMirrored)
                rect.moveLeft(area.left() + area.right() - rect.right());
            return rect;
        };
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setLayoutDirection(Qt::LayoutDirectionAuto);
        if (item.menuItemType == QStyleOptionMenuItem::Separator && item.text.isEmpty()) {
            painter.fillRect(QRectF(area.left() + 8, area.center().y(), area.width() - 16, 1),
                             m_theme.hairline);
            painter.restore();
            return;
        }
        const bool isSection = item.menuItemType == QStyleOptionMenuItem::Separator;
        const bool isEnabled = item.state & State_Enabled;
        const bool isSelected = (item.state & State_Selected) && !isSection;
        if (isSelected && isEnabled)
            painter.fillPath(roundedPath(area, menuRadius - menuPadding + 1), m_theme.selected);
        const QColor ink = isEnabled && !isSection ? m_theme.text : m_theme.quietText;
        const double scale = painter.device()->devicePixelRatio();
        if (item.checked) {
            const QRectF place =
                placed({area.left() + 11, area.center().y() - checkSize / 2, checkSize, checkSize});
            painter.drawPixmap(place.topLeft(),
                               symbolPixmap(Symbol::check, m_theme.accent, checkSize, scale));
        }
        const int leading = (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute;
        const int trailing = (isMirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute;
        const QRectF line = placed(
            {area.left() + wordsInset, area.top(), area.width() - wordsInset - endInset + 6, area.height()});
        painter.setPen(ink);
        painter.setFont(isSection ? panelFont(secondLineSize, QFont::DemiBold)
                                  : panelFont(labelSize, QFont::Medium));
        painter.drawText(line, leading | Qt::AlignVCenter | Qt::TextSingleLine, words(item));
        painter.setPen(m_theme.quietText);
        painter.setFont(panelFont(secondLineSize));
        painter.drawText(line, trailing | Qt::AlignVCenter | Qt::TextSingleLine, keys(item));
        if (item.menuItemType == QStyleOptionMenuItem::SubMenu) {
            const QRectF place = placed({area.right() - 10 - arrowSize, area.center().y() - arrowSize / 2.0,
                                         double(arrowSize), double(arrowSize)});
            painter.translate(place.center());
            painter.rotate(isMirrored ? 90 : -90);
            painter.drawPixmap(QPointF(-arrowSize / 2.0, -arrowSize / 2.0),
                               symbolPixmap(Symbol::chevronDown, m_theme.quietText, arrowSize, scale));
        }
        painter.restore();
    }

    const Theme &m_theme;
};

} // namespace

void dressMenu(QMenu &menu, const Theme &theme) {
    auto *style = new PanelMenuStyle(theme);
    style->setParent(&menu);
    menu.setWindowFlag(Qt::FramelessWindowHint);
    menu.setWindowFlag(Qt::NoDropShadowWindowHint);
    menu.setAttribute(Qt::WA_TranslucentBackground);
    menu.setStyle(style);
    menu.setFont(panelFont(labelSize, QFont::Medium));
    PanelShell::instance().adopt(menu, PanelShell::Role::menu);
    for (const QAction *action : menu.actions()) {
        if (action->menu())
            dressMenu(*action->menu(), theme);
    }
}

void popUpMenu(QMenu &menu, const QWidget &control) {
    constexpr int distance = 10;
    const QSize size = menu.sizeHint();
    PanelShell &shell = PanelShell::instance();
    const QRect room = shell.room(*control.screen());
    const QRect frame(control.mapToGlobal(QPoint(0, 0)), control.size());
    const bool fitsBelow = frame.bottom() + distance + size.height() <= room.bottom();
    const int y = fitsBelow ? frame.bottom() + 1 + distance : frame.top() - distance - size.height();
    const bool isMirrored = control.layoutDirection() == Qt::RightToLeft;
    const int x = isMirrored ? frame.right() + 1 - size.width() : frame.left();
    menu.setLayoutDirection(control.layoutDirection());
    shell.adopt(menu, PanelShell::Role::menu, control.window());
    menu.popup({std::clamp(x, room.left(), std::max(room.left(), room.right() + 1 - size.width())),
                std::max(room.top(), y)});
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelButton.h"

#include "Panels/PanelAccessibility.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelMenu.h"
#include "Panels/PanelShape.h"
#include "Panels/PanelTip.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr double symbolSize = 20;
constexpr double symbolGap = 8;
constexpr double sidePadding = 11;
constexpr double menuMark = 12;
/// Of two lines of text of the usual size.
constexpr double linesHeight = 30;
/// Lines of text have room of their own above and below.
constexpr double linesOverlap = 1;

} // namespace

PanelButton::PanelButton(const QString &label, QWidget *parent) : QAbstractButton(parent) {
    installPanelAccessibility();
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setLabel(label);
    QObject::connect(this, &QAbstractButton::clicked, this, [this] {
        if (m_menuMaker)
            openMenu();
    });
}

void PanelButton::setLabel(const QString &label) {
    if (accessibleName() == label)
        return;
    setAccessibleName(label);
    tellTip();
}

void PanelButton::setHelp(const QString &help) {
    if (m_help == help)
        return;
    m_help = help;
    tellTip();
}

void PanelButton::tellTip() {
    const QString tip = m_help.isEmpty() ? accessibleName() : m_help;
    setAccessibleDescription(m_help);
    // What is written on it needs no tip.
    setToolTip(tip == m_words ? QString() : tip);
    updateTip(*this);
}

void PanelButton::setKind(Kind kind) {
    if (m_kind == kind)
        return;
    m_kind = kind;
    update();
}

void PanelButton::setSymbol(std::optional<Symbol> symbol) {
    if (m_symbol == symbol)
        return;
    m_symbol = symbol;
    updateGeometry();
    update();
}

void PanelButton::setWords(const QString &words, const QString &secondLine) {
    const QString line = oneLine(words);
    if (m_words == line && m_secondLine == secondLine)
        return;
    const QSize before = sizeHint();
    m_words = line;
    m_secondLine = secondLine;
    tellTip();
    // A time that runs does not change the layout.
    if (sizeHint() != before)
        updateGeometry();
    update();
}

void PanelButton::setMostTextWidth(int points) {
    if (m_mostTextWidth == points)
        return;
    m_mostTextWidth = points;
    updateGeometry();
}

void PanelButton::setTabular(bool isTabular) {
    m_isTabular = isTabular;
    updateGeometry();
}

void PanelButton::setWarning(bool warns) {
    if (m_warns == warns)
        return;
    m_warns = warns;
    update();
}

void PanelButton::setHeight(int height, bool growsWithText) {
    m_height = height;
    m_growsWithText = growsWithText;
    updateGeometry();
}

void PanelButton::setRadius(double radius) {
    m_radius = radius;
    update();
}

void PanelButton::setLevel(std::optional<double> level) {
    if (m_level == level)
        return;
    const bool isSmaller = level.has_value() && m_level.has_value();
    m_level = level;
    // Ten times a second: only the bar.
    update(isSmaller ? QRect(0, height() - 9, width(), 9) : rect());
}

void PanelButton::setMenuMaker(std::function<QMenu *()> maker) {
    m_menuMaker = std::move(maker);
    updateGeometry();
}

void PanelButton::openMenu() {
    if (m_isMenuOpen || !isEnabled() || !m_menuMaker)
        return;
    QMenu *menu = m_menuMaker();
    if (!menu)
        return;
    dressMenu(*menu, *this);
    m_isMenuOpen = true;
    update();
    const QPointer<PanelButton> self(this);
    QObject::connect(menu, &QMenu::aboutToHide, this, [self, menu] {
        menu->deleteLater();
        if (!self)
            return;
        self->m_isMenuOpen = false;
        self->setDown(false);
        self->update();
    });
    popUpMenu(*menu, *this);
}

QFont PanelButton::wordsFont() const {
    const bool isStrong = isChecked() || m_kind != Kind::plain;
    return panelFont(labelSize, isStrong ? QFont::DemiBold : QFont::Medium);
}

QFont PanelButton::secondFont() const {
    return panelFont(11);
}

QString PanelButton::elided(const QString &text, const QFont &font) const {
    return QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, mostTextWidth());
}

double PanelButton::mostTextWidth() const {
    return m_mostTextWidth * textScale();
}

double PanelButton::textWidth() const {
    // As wide as when it is switched on, so that nothing moves when it is.
    const QFont strong = panelFont(labelSize, QFont::DemiBold);
    const double words =
        m_isTabular ? tabularWidth(m_words, strong) : QFontMetricsF(strong).horizontalAdvance(m_words);
    const double second = QFontMetricsF(secondFont()).horizontalAdvance(m_secondLine);
    return std::ceil(std::min(mostTextWidth(), std::max(words, second)));
}

QSize PanelButton::sizeHint() const {
    double width = 2 * sidePadding;
    if (m_symbol)
        width += symbolSize;
    if (!m_words.isEmpty())
        width += textWidth() + (m_symbol ? symbolGap : 0);
    if (m_menuMaker && !m_words.isEmpty())
        width += menuMark + 4;
    const int more = m_growsWithText ? int(std::ceil(linesHeight * (textScale() - 1))) : 0;
    return {std::max(m_height, int(std::ceil(width))), m_height + more};
}

PanelButton::Look PanelButton::look(const Theme &theme) const {
    Look look{Qt::transparent, theme.text, theme.quietText};
    const bool isPressed = isDown() || m_isMenuOpen;
    switch (m_kind) {
    case Kind::plain:
        if (isChecked())
            look.ground = theme.selected;
        break;
    case Kind::filled:
        look.ground = theme.selected;
        break;
    case Kind::accent:
        look = {theme.accent, theme.onAccent, theme.onAccent};
        break;
    case Kind::recording:
        look = {theme.recordingGround, theme.onRecording, theme.onRecording};
        break;
    }
    const bool isSolid = m_kind == Kind::accent || m_kind == Kind::recording;
    if (isSolid && isPressed)
        look.ground = look.ground.darker(122);
    else if (isSolid && underMouse())
        look.ground = theme.isLight ? look.ground.darker(110) : look.ground.lighter(110);
    if (m_warns)
        look.ink = theme.warning;
    return look;
}

void PanelButton::paintEvent(QPaintEvent *) {
    const Theme &theme = Theme::of(*this);
    const Look colors = look(theme);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Words run as their own script does, also where the panel is turned over.
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    if (!isEnabled())
        painter.setOpacity(0.42);
    const QRectF area(rect());
    const QPainterPath form = roundedPath(area, m_radius);
    painter.fillPath(form, colors.ground);
    const bool isSolid = m_kind == Kind::accent || m_kind == Kind::recording;
    if (isEnabled() && !isSolid) {
        if (isDown() || m_isMenuOpen)
            painter.fillPath(form, theme.pressed);
        else if (underMouse())
            painter.fillPath(form, theme.hover);
    }
    if (hasFocus()) {
        painter.setPen(QPen(theme.focusRing, 2));
        painter.drawPath(roundedPath(area.adjusted(1, 1, -1, -1), m_radius - 1));
    }

    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    // Laid out from the left; turned over for those who read from the right.
    const auto placed = [&](QRectF rect) {
        if (isMirrored)
            rect.moveLeft(area.width() - rect.right());
        return rect;
    };
    const double content = sizeHint().width() - 2 * sidePadding;
    const bool hasWords = !m_words.isEmpty();
    double x = hasWords ? sidePadding + std::max(0.0, (area.width() - 2 * sidePadding - content) / 2)
                        : (area.width() - symbolSize) / 2;
    if (m_symbol) {
        const QRectF place = placed({x, (area.height() - symbolSize) / 2, symbolSize, symbolSize});
        painter.drawPixmap(place.topLeft(),
                           symbolPixmap(*m_symbol, colors.ink, symbolSize, devicePixelRatioF()));
        x += symbolSize + symbolGap;
    }
    if (hasWords) {
        const double width = textWidth();
        const QFont font = wordsFont();
        const QFontMetricsF metrics(font);
        const int align =
            (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter | Qt::AlignAbsolute;
        const QRectF whole = placed({x, 0, width + 1, area.height()});
        painter.setPen(colors.ink);
        painter.setFont(font);
        if (m_isTabular) {
            drawTabular(painter, whole, m_words, font);
        } else if (m_secondLine.isEmpty()) {
            painter.drawText(whole, align | Qt::TextSingleLine, elided(m_words, font));
        } else {
            const QFont small = secondFont();
            const double both = metrics.height() + QFontMetricsF(small).height() - linesOverlap;
            const double top = (area.height() - both) / 2;
            painter.drawText(QRectF(whole.left(), top, whole.width(), metrics.height()),
                             align | Qt::TextSingleLine, elided(m_words, font));
            painter.setPen(colors.quietInk);
            painter.setFont(small);
            painter.drawText(QRectF(whole.left(), top + metrics.height() - linesOverlap, whole.width(),
                                    QFontMetricsF(small).height()),
                             align | Qt::TextSingleLine, elided(m_secondLine, small));
        }
        if (m_menuMaker) {
            const QRectF mark = placed({x + width + 4, (area.height() - menuMark) / 2, menuMark, menuMark});
            painter.drawPixmap(mark.topLeft(), symbolPixmap(Symbol::chevronDown, colors.quietInk, menuMark,
                                                            devicePixelRatioF()));
        }
    }
    if (m_level) {
        const QRectF track(sidePadding, area.height() - 6, area.width() - 2 * sidePadding, 2.5);
        painter.fillPath(roundedPath(track, 1.5), theme.selected);
        const QRectF full = placed({track.left(), track.top(), track.width() * *m_level, track.height()});
        if (*m_level > 0.01)
            painter.fillPath(roundedPath(full, 1.5), theme.accent);
    }
}

void PanelButton::keyPressEvent(QKeyEvent *event) {
    if (m_menuMaker && (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up)) {
        openMenu();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else {
        QAbstractButton::keyPressEvent(event);
    }
}

bool PanelButton::event(QEvent *event) {
    if (handleTipEvent(*this, *event))
        return true;
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange)
        updateGeometry();
    return QAbstractButton::event(event);
}

} // namespace vantrell

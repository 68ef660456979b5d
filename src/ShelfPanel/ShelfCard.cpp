// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/ShelfCard.h"

#include "Panels/PanelButton.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelShape.h"
#include "Panels/Sentence.h"
#include "ShelfPanel/CardText.h"
#include "ShelfPanel/CardThumbnail.h"
#include "ShelfPanel/DismissButton.h"
#include "ShelfPanel/ShelfAccessibility.h"
#include "ShelfPanel/ShelfText.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QGraphicsOpacityEffect>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace vantrell {

namespace {

constexpr int padding = 10;
constexpr int gap = 10;
constexpr int actionGap = 6;
constexpr int actionHeight = 40;
constexpr int barHeight = 4;
constexpr int barDistance = 8;
constexpr double titleSize = 13.5;
constexpr double badgeSize = 11;
/// Pushed that far, a card goes when it is let go.
constexpr double farEnough = 80;
/// At the screen's edge there may be no room for that.
constexpr double farEnoughAtEdge = 24;

/// A little smaller where all of the title has room then: its date is what is looked for.
QFont titleFont(const QString &title, double width) {
    constexpr double smallest = 11.5;
    for (double size = titleSize; size >= smallest; size -= 0.5) {
        QFont font = panelFont(size, QFont::DemiBold);
        if (QFontMetricsF(font).horizontalAdvance(title) <= width)
            return font;
    }
    return panelFont(titleSize, QFont::DemiBold);
}

/// Lines of a status in the largest size in which all of it has room.
struct StatusText {
    QFont font;
    double lineHeight = 0;
    QStringList lines;
};

StatusText statusText(const QString &status, int width, int height) {
    constexpr double smallest = 10;
    constexpr int mostLines = 4;
    StatusText text;
    for (double size = secondLineSize; size >= smallest; size -= 1.25) {
        text.font = panelFont(size, QFont::Normal);
        text.lineHeight = QFontMetricsF(text.font).height();
        text.lines =
            wrappedText(status, text.font, width, std::clamp(int(height / text.lineHeight), 1, mostLines));
        if (text.lines.join(' ') == status)
            break;
    }
    return text;
}

/// All that a card shows but the progress of its upload.
auto steadyParts(const ShelfItem &item) {
    return std::tuple(item.capture.get(), item.status.index(), item.entryId, CardThumbnail::keyOf(item));
}

bool isOnlyProgress(const ShelfItem &before, const ShelfItem &now) {
    return std::holds_alternative<ShelfItem::Uploading>(now.status) &&
           steadyParts(before) == steadyParts(now) && before.placeholderName == now.placeholderName;
}

} // namespace

ShelfCard::ShelfCard(const ShelfItem &item, Owner &owner, QWidget *parent)
    : QWidget(parent), m_id(item.id), m_owner(owner), m_item(item),
      m_action(new PanelButton(shelfText("Open"), this)), m_dismiss(new DismissButton(this)) {
    installShelfAccessibility();
    setFocusPolicy(Qt::TabFocus);
    setFixedSize(bodyWidth + 2 * overhang, bodyHeight + overhang);
    m_action->setRadius(10);
    QObject::connect(m_action, &QAbstractButton::clicked, this, [this] { runAction(); });
    QObject::connect(m_dismiss, &QAbstractButton::clicked, this,
                     [this] { m_owner.act(m_id, Action::dismiss); });
    QObject::connect(qApp, &QApplication::focusChanged, this, [this] { updateDismissButton(); });
    arrange();
}

QRect ShelfCard::body() const {
    return rect().adjusted(overhang, overhang, -overhang, 0);
}

QRect ShelfCard::dismissButtonRect() const {
    return m_dismiss->isShown() ? m_dismiss->geometry() : QRect();
}

QRect ShelfCard::mirrored(const QRect &rect) const {
    return QStyle::visualRect(layoutDirection(), this->rect(), rect);
}

bool ShelfCard::setItem(const ShelfItem &item) {
    if (isOnlyProgress(m_item, item)) {
        const auto &uploading = std::get<ShelfItem::Uploading>(item.status);
        const auto &shown = std::get<ShelfItem::Uploading>(m_item.status);
        m_pending = uploading == shown ? std::nullopt : std::optional(uploading);
        return m_pending.has_value();
    }
    m_pending.reset();
    const bool isSame = steadyParts(m_item) == steadyParts(item) && m_item.status == item.status &&
                        m_item.placeholderName == item.placeholderName && m_item.note == item.note;
    m_item = item;
    if (!isSame)
        arrange();
    return false;
}

void ShelfCard::showProgress() {
    if (!m_pending)
        return;
    const int endBefore = barEnd();
    const std::string textBefore = m_item.statusText();
    m_item.status = *std::exchange(m_pending, {});
    if (const std::string english = m_item.statusText(); english != textBefore) {
        const QString text = inUsersLanguage(QString::fromStdString(english));
        m_statusLines = {text};
        update(m_statusRect);
        setAccessibleDescription(text);
        if (QAccessible::isActive()) {
            QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
            QAccessible::updateAccessibility(&changed);
        }
    }
    if (barEnd() != endBefore)
        update(m_barRect);
}

void ShelfCard::setThumbnail(const QImage &thumbnail) {
    m_thumbnail = thumbnail;
    update(m_thumbnailRect);
}

void ShelfCard::setOpacity(double opacity) {
    if (m_opacity == opacity)
        return;
    m_opacity = opacity;
    auto *effect = static_cast<QGraphicsOpacityEffect *>(graphicsEffect());
    if (opacity >= 1) {
        // An effect costs a picture of the whole card at each change in it.
        setGraphicsEffect(nullptr);
    } else {
        if (!effect)
            setGraphicsEffect(effect = new QGraphicsOpacityEffect(this));
        effect->setOpacity(opacity);
    }
}

void ShelfCard::arrangeAction() {
    m_action->setMenuMaker({});
    if (m_item.isDone()) {
        m_action->setLabel(shelfText("Open"));
        m_action->setWords(shelfText("Open"));
        m_action->setKind(PanelButton::Kind::accent);
    } else if (std::holds_alternative<ShelfItem::NeedsProject>(m_item.status)) {
        m_action->setLabel(shelfText("Choose project"));
        // Larger text leaves no room for two lines.
        m_action->setWords(shelfText("Choose"), textScale() > 1.15 ? QString() : shelfText("project"));
        m_action->setKind(PanelButton::Kind::filled);
        m_action->setMenuMaker([this] { return m_owner.makeProjectMenu(m_id); });
    } else {
        m_action->setLabel(shelfText("Retry"));
        m_action->setWords(shelfText("Retry"));
        m_action->setKind(PanelButton::Kind::filled);
    }
    const bool isOffered = m_item.isDone() || m_item.canRetry();
    // Else the focus goes on to the button beside, and a second press of Space dismisses the card.
    if (!isOffered && window()->focusWidget() == m_action)
        setFocus(Qt::OtherFocusReason);
    m_action->setVisible(isOffered);
}

void ShelfCard::arrange() {
    arrangeAction();
    const QRect inner = body().adjusted(padding, padding, -padding, -padding);
    const CardTitle title = cardTitle(m_item);
    QString status = oneLine(inUsersLanguage(QString::fromStdString(m_item.statusText())));
    // Why it is shorter or more silent than expected is worth a second line once it has arrived.
    if (!m_item.note.empty() && m_item.isDone())
        status += QStringLiteral(". ") + oneLine(inUsersLanguage(QString::fromStdString(m_item.note)));
    const bool hasBar = std::holds_alternative<ShelfItem::Uploading>(m_item.status);
    const bool hasAction = !m_action->isHidden();
    const int titleHeight = int(std::ceil(QFontMetricsF(panelFont(titleSize, QFont::DemiBold)).height()));

    // Laid out from the left, then turned over for those who read from the right.
    const QRect thumbnail(inner.topLeft(), thumbnailSize);
    const int left = thumbnail.right() + 1 + gap;
    const int width = inner.right() - 1 - left;
    // The name has the whole width; what can be done stands below it, beside how the capture fares.
    int statusWidth = width;
    int actionTop = inner.bottom();
    if (hasAction) {
        m_action->setHeight(std::min(actionHeight, inner.height() - titleHeight - 1));
        const QSize size = m_action->sizeHint();
        actionTop = inner.bottom() + 1 - size.height();
        const QRect place(inner.right() + 1 - size.width(), actionTop, size.width(), size.height());
        m_action->setGeometry(mirrored(place));
        statusWidth = place.left() - actionGap - left;
    }
    m_dismiss->move(mirrored(QRect(QPoint(0, 0), m_dismiss->size())).topLeft());

    m_isRecovered = title.isRecovered;
    m_titleFont = titleFont(title.text, width);
    m_title = QFontMetricsF(m_titleFont).elidedText(title.text, Qt::ElideMiddle, width);
    const StatusText fitted = statusText(status, statusWidth, inner.height() - titleHeight);
    m_statusLines = fitted.lines;
    m_statusFont = fitted.font;
    const int statusHeight = int(std::ceil(fitted.lineHeight * double(m_statusLines.size())));
    const int height = titleHeight + 1 + statusHeight + (hasBar ? barDistance + barHeight : 0);
    const int top = hasAction ? inner.top() : body().top() + (body().height() - height) / 2;
    const int beside = actionTop + (inner.bottom() + 1 - actionTop - statusHeight) / 2;
    const int statusTop = hasAction ? std::max(top + titleHeight, beside) : top + titleHeight + 1;
    m_thumbnailRect = mirrored(thumbnail);
    m_titleRect = mirrored({left, top, width, titleHeight});
    m_statusRect = mirrored({left, statusTop, statusWidth, statusHeight});
    m_barRect = hasBar ? mirrored({left, top + height - barHeight, width, barHeight}) : QRect();

    setAccessibleName(oneLine(inUsersLanguage(QString::fromStdString(m_item.title()))));
    setAccessibleDescription(status);
    const bool isWhole = m_title == title.text && m_statusLines.join(' ') == status;
    const QStringList tip = isWhole ? QStringList() : QStringList{title.text, status};
    // What is shown of it is no longer true.
    if (std::exchange(m_tip, tip) != tip && underMouse())
        m_owner.showTip(*this, {});
    update();
}

double ShelfCard::progress() const {
    const auto *uploading = std::get_if<ShelfItem::Uploading>(&m_item.status);
    return uploading && uploading->progress > 0 ? std::min(uploading->progress, 1.0) : 0;
}

int ShelfCard::barEnd() const {
    return int(std::lround(m_barRect.width() * devicePixelRatioF() * progress()));
}

void ShelfCard::runAction() {
    if (m_item.isDone())
        m_owner.act(m_id, Action::open);
    else if (std::holds_alternative<ShelfItem::Failed>(m_item.status))
        m_owner.act(m_id, Action::retry);
}

void ShelfCard::updateDismissButton() {
    const bool wasShown = m_dismiss->isShown();
    const QWidget *focus = QApplication::focusWidget();
    // Qt also tells of a pointer that has left the application since, where it was seen last.
    const bool isPointed = underMouse() && window()->underMouse();
    m_dismiss->setShown(isPointed || focus == this || (focus && isAncestorOf(focus)));
    if (m_dismiss->isShown() != wasShown)
        m_owner.outlineChanged();
}

bool ShelfCard::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip) {
        m_owner.showTip(*this, m_tip);
        return true;
    }
    const bool isUsed = QWidget::event(event);
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave)
        updateDismissButton();
    if (event->type() == QEvent::Leave || event->type() == QEvent::MouseButtonPress)
        m_owner.showTip(*this, {});
    return isUsed;
}

void ShelfCard::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange)
        arrange();
}

void ShelfCard::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_press = Press{event->globalPosition()};
}

void ShelfCard::mouseMoveEvent(QMouseEvent *event) {
    if (!m_press || !(event->buttons() & Qt::LeftButton))
        return;
    const QPointF moved = event->globalPosition() - m_press->place;
    if (!m_press->isPushing) {
        if (moved.manhattanLength() < QApplication::startDragDistance())
            return;
        if (moved.x() <= std::abs(moved.y())) {
            m_press.reset();
            m_owner.act(m_id, Action::dragOut);
            return;
        }
        m_press->isPushing = true;
    }
    m_owner.pushAside(*this, std::max(0.0, moved.x()));
}

void ShelfCard::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton || !m_press)
        return;
    const Press press = *std::exchange(m_press, {});
    if (!press.isPushing)
        return;
    const double moved = event->globalPosition().x() - press.place.x();
    const bool isAtEdge = event->globalPosition().x() >= screen()->geometry().right() - 1;
    m_owner.letGo(*this, moved >= (isAtEdge ? farEnoughAtEdge : farEnough));
}

void ShelfCard::contextMenuEvent(QContextMenuEvent *event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    m_owner.showMenu(*this, isByKey ? mapToGlobal(body().center()) : event->globalPos());
}

void ShelfCard::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!m_action->isHidden())
            m_action->click();
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        m_owner.act(m_id, Action::dismiss);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void ShelfCard::paintEvent(QPaintEvent *event) {
    const Theme &theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (event->region().intersects(m_thumbnailRect))
        paintThumbnail(painter);
    if (event->region().intersects(m_titleRect | m_statusRect))
        paintTexts(painter);
    if (event->region().intersects(m_barRect)) {
        painter.setClipRect(m_barRect);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.selected);
        painter.drawRoundedRect(m_barRect, barHeight / 2.0, barHeight / 2.0);
        QRectF done(m_barRect);
        done.setWidth(barEnd() / devicePixelRatioF());
        if (layoutDirection() == Qt::RightToLeft)
            done.moveRight(m_barRect.right() + 1);
        painter.setBrush(theme.accent);
        if (done.width() > 0)
            painter.drawRoundedRect(done, barHeight / 2.0, barHeight / 2.0);
        painter.setClipping(false);
    }
    if (hasFocus()) {
        painter.setPen(QPen(theme.focusRing, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(roundedPath(QRectF(body()).adjusted(1, 1, -1, -1), cornerRadius - 1));
    }
}

void ShelfCard::paintThumbnail(QPainter &painter) const {
    const Theme &theme = Theme::of(*this);
    constexpr double radius = 8;
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.selected);
    painter.drawPath(roundedPath(QRectF(m_thumbnailRect), radius));
    if (m_thumbnail.isNull()) {
        constexpr double size = 24;
        const bool isStill = m_item.capture && m_item.capture->kind == CaptureResult::Kind::image;
        const QPointF place = QRectF(m_thumbnailRect).center() - QPointF(size / 2, size / 2);
        painter.drawPixmap(place, symbolPixmap(isStill ? Symbol::still : Symbol::screen, theme.quietText,
                                               size, devicePixelRatioF()));
    } else {
        QBrush brush(m_thumbnail);
        QTransform fit = QTransform::fromTranslate(m_thumbnailRect.x(), m_thumbnailRect.y());
        fit.scale(double(m_thumbnailRect.width()) / m_thumbnail.width(),
                  double(m_thumbnailRect.height()) / m_thumbnail.height());
        brush.setTransform(fit);
        painter.setBrush(brush);
        painter.setOpacity(m_item.canRetry() ? 0.55 : 1);
        painter.drawPath(roundedPath(QRectF(m_thumbnailRect), radius));
        painter.setOpacity(1);
    }
    if (m_isRecovered)
        paintBadge(painter, shelfText("Recovered"), false);
    if (const auto length = m_item.durationMs())
        paintBadge(painter, lengthText(std::chrono::milliseconds(*length)), true);
}

void ShelfCard::paintBadge(QPainter &painter, const QString &words, bool isAtEnd) const {
    constexpr int inset = 5;
    constexpr int sidePadding = 5;
    const QRect room = m_thumbnailRect.adjusted(inset, inset, -inset, -inset);
    const double textRoom = room.width() - 2 * sidePadding;
    // Larger text and other languages are wider than the picture.
    QFont font = panelFont(badgeSize, QFont::DemiBold);
    for (double size = badgeSize; size > 6 && QFontMetricsF(font).horizontalAdvance(words) > textRoom; --size)
        font = panelFont(size, QFont::DemiBold);
    const QString text = QFontMetricsF(font).elidedText(words, Qt::ElideRight, textRoom);
    const int width = int(std::ceil(tabularWidth(text, font))) + 2 * sidePadding;
    const int height = int(std::ceil(QFontMetricsF(font).capHeight())) + 8;
    // The length at the lower end; what else there is to say at the upper.
    const bool isRight = layoutDirection() == Qt::LeftToRight;
    QRect badge(room.left(), room.top(), width, height);
    if (isAtEnd)
        badge.moveBottom(room.bottom());
    if (isRight)
        badge.moveRight(room.right());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 178));
    painter.drawRoundedRect(badge, 4, 4);
    painter.setPen(Qt::white);
    drawTabular(painter, QRectF(badge).adjusted(sidePadding, 0, 0, 0), text, font);
}

void ShelfCard::paintTexts(QPainter &painter) const {
    const Theme &theme = Theme::of(*this);
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    const int align = (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter |
                      Qt::TextSingleLine;
    // Each text in the direction of its own letters.
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    painter.setPen(theme.text);
    painter.setFont(m_titleFont);
    painter.drawText(m_titleRect, align, m_title);
    const bool hasFailed = std::holds_alternative<ShelfItem::Failed>(m_item.status);
    painter.setPen(hasFailed ? theme.warning : theme.quietText);
    painter.setFont(m_statusFont);
    const double lineHeight =
        double(m_statusRect.height()) / double(std::max<qsizetype>(1, m_statusLines.size()));
    for (qsizetype i = 0; i < m_statusLines.size(); ++i) {
        const QRectF line(m_statusRect.left(), m_statusRect.top() + lineHeight * double(i),
                          m_statusRect.width(), lineHeight);
        painter.drawText(line, align, m_statusLines[i]);
    }
}

} // namespace vantrell

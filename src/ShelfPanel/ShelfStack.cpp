// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/ShelfStack.h"

#include "Panels/DesktopLink.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelMenu.h"
#include "Panels/PanelShape.h"
#include "ShelfPanel/FileDrag.h"
#include "ShelfPanel/ShelfAccessibility.h"
#include "ShelfPanel/ShelfText.h"
#include "Support/BlockingWork.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>

#include <xcb/xcb.h>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto progressInterval = 250ms;
constexpr int wheelStep = 120;

bool isIn(const ShelfCard &card, const std::vector<ShelfItem> &items) {
    return std::ranges::find(items, card.id(), &ShelfItem::id) != items.end();
}

QRect withShadow(const QRect &body) {
    return body.adjusted(-panelShadowReach, -panelShadowReach, panelShadowReach, panelShadowReach);
}

/// The window grows upwards: until it is painted anew the server keeps what it shows at its lower edge.
void keepLowerEdge(WId window) {
    xcb_connection_t *const server = DesktopLink::serverOfQt();
    const std::uint32_t gravity = XCB_GRAVITY_SOUTH_EAST;
    if (server)
        xcb_change_window_attributes(server, xcb_window_t(window), XCB_CW_BIT_GRAVITY, &gravity);
}

} // namespace

ShelfStack::ShelfStack(Host &host)
    : FloatingPanel({.radius = ShelfCard::cornerRadius, .isMovable = false, .drawsPanel = false}),
      m_host(host), m_keyboard(*this), m_older(new PanelButton(shelfText("Older captures"), this)),
      m_newer(new PanelButton(shelfText("Newer captures"), this)) {
    installShelfAccessibility();
    setAttribute(Qt::WA_AlwaysShowToolTips);
    // Desktops list windows by it, also in their choice of what is to be shared.
    setWindowTitle(shelfText("Recent captures"));
    setAccessibleName(windowTitle());
    m_progressTimer.setSingleShot(true);
    m_progressTimer.setInterval(progressInterval);
    QObject::connect(&m_progressTimer, &QTimer::timeout, this, [this] {
        if (m_hasProgress)
            showProgress();
    });
    m_motion.onPlaced = [this](ShelfCard &card, const CardMotion::Place &place) { placeCard(card, place); };
    m_motion.onMoved = [this] { update(); };
    m_motion.onSettled = [this] { settled(); };
    for (PanelButton *button : {m_older, m_newer}) {
        button->setHeight(ShelfLayout::scrollButtonHeight);
        button->setRadius(ShelfLayout::scrollButtonHeight / 2.0);
        button->setSymbol(button == m_older ? Symbol::chevronUp : Symbol::chevronDown);
        button->setFocusPolicy(Qt::NoFocus);
        button->hide();
        const int direction = button == m_older ? 1 : -1;
        QObject::connect(button, &QAbstractButton::clicked, this,
                         [this, direction] { scrollBy(direction * std::max(1, room() - 1)); });
    }
}

ShelfStack::~ShelfStack() {
    // Hiding moves the focus, and the cards tell of it: as long as there is somebody to tell.
    hide();
    m_motion.deleteCards();
    if (!m_reasons.empty())
        m_host.setAttended(false);
}

void ShelfStack::setItems(const std::vector<ShelfItem> &items) {
    const bool isSameCards = std::ranges::equal(
        m_motion.cards(), items, {}, [](const CardMotion::Entry &entry) { return entry.card->id(); },
        &ShelfItem::id);
    if (!isSameCards)
        matchCards(items);
    for (std::size_t i = 0; i < items.size(); ++i) {
        m_hasProgress = m_motion.cards()[i].card->setItem(items[i]) || m_hasProgress;
        requestThumbnail(*m_motion.cards()[i].card, items[i]);
    }
    if (!isSameCards)
        arrange();
    if (m_hasProgress && !m_progressTimer.isActive())
        showProgress();
}

void ShelfStack::matchCards(const std::vector<ShelfItem> &items) {
    const int focused = focusedCard();
    const bool losesFocus = focused >= 0 && !isIn(*m_motion.cards()[std::size_t(focused)].card, items);
    std::vector<CardMotion::Entry> matched;
    bool isNew = false;
    for (const ShelfItem &item : items) {
        const auto known = std::ranges::find(m_motion.cards(), item.id,
                                             [](const CardMotion::Entry &e) { return e.card->id(); });
        if (known != m_motion.cards().end()) {
            matched.push_back(*known);
            continue;
        }
        matched.push_back(CardMotion::newcomer(new ShelfCard(item, *this, this)));
        isNew = true;
    }
    for (const CardMotion::Entry &entry : m_motion.cards()) {
        if (!isIn(*entry.card, items)) {
            // What leaves is no longer to be met.
            if (entry.card->id() == m_menuCard)
                closeMenu();
            entry.card->setAttribute(Qt::WA_TransparentForMouseEvents);
        }
    }
    m_motion.replace(std::move(matched));
    // Who does not look elsewhere sees what has just been captured.
    if (isNew && m_reasons.empty())
        m_newerHidden = 0;
    if (losesFocus && !isEmpty())
        QTimer::singleShot(0, this, [this, focused] { focusCard(std::min(focused, count() - 1)); });
}

void ShelfStack::showProgress() {
    m_hasProgress = false;
    for (const CardMotion::Entry &entry : m_motion.cards())
        entry.card->showProgress();
    m_progressTimer.start();
}

void ShelfStack::requestThumbnail(ShelfCard &card, const ShelfItem &item) {
    const qint64 key = CardThumbnail::keyOf(item);
    if (std::exchange(card.thumbnailKey, key) == key)
        return;
    if (key == 0)
        card.setThumbnail({});
    else
        m_scope.start(this, &ShelfStack::loadThumbnail, card.id(), CardThumbnail::of(item));
}

Task<> ShelfStack::loadThumbnail(QUuid id, CardThumbnail source, std::stop_token stop) {
    const qint64 key = source.key;
    const QSize pixels = ShelfCard::thumbnailSize * std::max(2.0, devicePixelRatioF());
    const auto image =
        co_await runBlocking([source = std::move(source), pixels] { return source.scaledTo(pixels); }, stop);
    if (!image)
        co_return;
    for (const CardMotion::Entry &entry : m_motion.cards()) {
        if (entry.card->id() == id && entry.card->thumbnailKey == key)
            entry.card->setThumbnail(*image);
    }
}

void ShelfStack::setDisplay(QScreen *screen) {
    m_screen = screen;
    if (!screen)
        return;
    if (this->screen() != screen)
        setScreen(screen);
    if (!isEmpty())
        arrange();
}

ShelfLayout ShelfStack::shelfLayout() const {
    return {m_screen ? PanelShell::instance().room(*m_screen) : QRect(), count()};
}

int ShelfStack::room() const {
    return shelfLayout().room();
}

void ShelfStack::arrange() {
    const ShelfLayout layout = shelfLayout();
    const int shown = layout.room();
    m_newerHidden = std::clamp(m_newerHidden, 0, layout.mostHidden());
    for (int i = 0; i < count(); ++i) {
        CardMotion::Entry &entry = m_motion.cards()[std::size_t(i)];
        const int above = count() - 1 - i - m_newerHidden;
        const bool isShown = above >= 0 && above < shown;
        m_motion.aim(entry, {.up = double(std::clamp(above, -1, shown)) * ShelfLayout::pitch,
                             .opacity = isShown ? 1.0 : 0.0});
        if (isShown)
            entry.card->show();
    }
    m_motion.aimLeaving();
    fitWindow();
    arrangeScrollButtons();
    // A shaped window cannot be blended over what lies behind it.
    m_motion.start(isBlended() && !prefersReducedMotion() && isVisible());
}

void ShelfStack::settled() {
    if (isEmpty()) {
        m_host.emptied();
        return;
    }
    fitWindow();
    outlineChanged();
}

void ShelfStack::placeCard(ShelfCard &card, const CardMotion::Place &place) {
    const QRect panel = panelRect();
    const double top = panel.bottom() + 1 - ShelfCard::bodyHeight - place.up;
    card.move(panel.left() - ShelfCard::overhang + int(std::lround(place.aside)),
              int(std::lround(top)) - ShelfCard::overhang);
    card.setOpacity(place.opacity);
}

void ShelfStack::fitWindow() {
    if (!m_screen)
        return;
    const int margin = shadowMargin();
    setGeometry(shelfLayout().panel(m_motion.top()).adjusted(-margin, -margin, margin, margin));
}

void ShelfStack::arrangeScrollButtons() {
    const int older = std::max(0, shelfLayout().mostHidden() - m_newerHidden);
    const auto arrangeOne = [this](PanelButton &button, int hidden, const QString &words, int y) {
        button.setLabel(words.arg(hidden));
        button.setWords(words.arg(hidden));
        button.setVisible(hidden > 0);
        const QSize size = button.sizeHint();
        button.setGeometry(panelRect().center().x() - size.width() / 2, y, size.width(), size.height());
    };
    arrangeOne(*m_older, older, shelfText("%1 older"),
               panelRect().top() - ShelfLayout::scrollButtonGap - ShelfLayout::scrollButtonHeight);
    arrangeOne(*m_newer, m_newerHidden, shelfText("%1 newer"),
               panelRect().bottom() + 1 + ShelfLayout::scrollButtonGap);
}

QRect ShelfStack::bodyOf(const ShelfCard &card) const {
    return card.body().translated(card.pos());
}

void ShelfStack::outlineChanged() {
    if (internalWinId() == 0)
        return;
    const double scale = devicePixelRatioF();
    const auto inPixels = [scale](const QRect &rect) {
        return QRectF(QPointF(rect.topLeft()) * scale, QSizeF(rect.size()) * scale).toAlignedRect();
    };
    QRegion region;
    for (const CardMotion::Entry &entry : m_motion.cards()) {
        if (entry.to.opacity == 0)
            continue;
        const ShelfCard &card = *entry.card;
        region += PanelShape{size(), QRectF(bodyOf(card)), ShelfCard::cornerRadius, scale}.region();
        if (const QRect dismiss = card.dismissButtonRect(); !dismiss.isEmpty())
            region += QRegion(inPixels(dismiss.translated(card.pos())), QRegion::Ellipse);
    }
    for (const PanelButton *button : {m_older, m_newer}) {
        if (!button->isHidden())
            region +=
                PanelShape{size(), QRectF(button->geometry()), ShelfLayout::scrollButtonHeight / 2.0, scale}
                    .region();
    }
    // Of a window without cards there is nothing to meet, but an empty region means all of it.
    if (region.isEmpty())
        region = QRect(0, 0, 1, 1);
    PanelShell::instance().setShape(*this, isBlended() ? QRegion() : region, region);
}

bool ShelfStack::event(QEvent *event) {
    const bool isUsed = FloatingPanel::event(event);
    switch (event->type()) {
    case QEvent::WinIdChange:
        if (internalWinId() != 0)
            keepLowerEdge(internalWinId());
        break;
    case QEvent::Enter:
        attend(Reason::pointer, true);
        break;
    case QEvent::Leave:
        attend(Reason::pointer, false);
        break;
    case QEvent::WindowDeactivate:
        m_keyboard.forget();
        attend(Reason::keyboard, false);
        break;
    default:
        break;
    }
    return isUsed;
}

void ShelfStack::showEvent(QShowEvent *event) {
    FloatingPanel::showEvent(event);
    outlineChanged();
}

void ShelfStack::hideEvent(QHideEvent *event) {
    closeMenu();
    m_tip.reset();
    giveKeyboardBack();
    FloatingPanel::hideEvent(event);
}

void ShelfStack::resizeEvent(QResizeEvent *event) {
    FloatingPanel::resizeEvent(event);
    m_motion.placeAll();
    arrangeScrollButtons();
    update();
    outlineChanged();
}

void ShelfStack::appearanceChanged() {
    m_face.reset();
    outlineChanged();
}

void ShelfStack::paintEvent(QPaintEvent *event) {
    if (!m_face || m_face->scale() != devicePixelRatioF()) {
        m_face.emplace(theme(), devicePixelRatioF(), isBlended());
        // A scale of its own has a shape of its own.
        outlineChanged();
    }
    std::vector<const ShelfCard *> shown = m_motion.seen();
    std::erase_if(
        shown, [&](const ShelfCard *card) { return !event->region().intersects(withShadow(bodyOf(*card))); });
    QPainter painter(this);
    QColor ground = theme().panel;
    if (!isBlended()) {
        ground.setAlpha(255);
        // At a broken scale the shape may reach a pixel further than a card's ground.
        painter.fillRect(event->rect(), ground);
    }
    // All shadows lie below all cards. Between two cards they add up.
    const double strength = m_motion.hasSeveral() ? 0.75 : 1;
    for (const ShelfCard *card : shown) {
        painter.setOpacity(card->opacity() * strength);
        m_face->drawShadow(painter, bodyOf(*card).topLeft());
    }
    for (const ShelfCard *card : shown) {
        painter.setOpacity(card->opacity());
        m_face->drawGround(painter, bodyOf(*card).topLeft());
    }
    painter.setOpacity(1);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const PanelButton *button : {m_older, m_newer}) {
        if (!button->isHidden() && event->region().intersects(button->geometry()))
            painter.fillPath(roundedPath(QRectF(button->geometry()), ShelfLayout::scrollButtonHeight / 2.0),
                             ground);
    }
}

void ShelfStack::wheelEvent(QWheelEvent *event) {
    const int turn = event->angleDelta().y();
    if ((turn > 0) != (m_wheelTurn > 0))
        m_wheelTurn = 0;
    m_wheelTurn += turn;
    const int cards = m_wheelTurn / wheelStep;
    m_wheelTurn -= cards * wheelStep;
    if (cards != 0)
        scrollBy(cards);
    event->accept();
}

void ShelfStack::scrollBy(int cards) {
    const int before =
        std::exchange(m_newerHidden, std::clamp(m_newerHidden + cards, 0, shelfLayout().mostHidden()));
    if (m_newerHidden != before)
        arrange();
}

void ShelfStack::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        giveKeyboardBack();
    else if (const auto card = shelfLayout().cardForKey(event->key(), focusedCard()))
        focusCard(*card);
    else
        FloatingPanel::keyPressEvent(event);
}

int ShelfStack::focusedCard() const {
    const QWidget *focus = focusWidget();
    for (int i = 0; focus && i < count(); ++i) {
        const ShelfCard *card = m_motion.cards()[std::size_t(i)].card;
        if (card == focus || card->isAncestorOf(focus))
            return i;
    }
    return -1;
}

void ShelfStack::focusCard(int index) {
    if (index < 0 || index >= count())
        return;
    const int above = count() - 1 - index;
    if (above < m_newerHidden)
        scrollBy(above - m_newerHidden);
    else if (above >= m_newerHidden + room())
        scrollBy(above - room() + 1 - m_newerHidden);
    m_motion.cards()[std::size_t(index)].card->setFocus(Qt::OtherFocusReason);
}

void ShelfStack::takeKeyboard() {
    if (isEmpty() || !isVisible())
        return;
    m_keyboard.take();
    attend(Reason::keyboard, true);
    focusCard(count() - 1);
}

void ShelfStack::giveKeyboardBack() {
    if (!m_keyboard.isTaken())
        return;
    m_keyboard.giveBack();
    attend(Reason::keyboard, false);
}

void ShelfStack::act(const QUuid &id, ShelfCard::Action action) {
    // Dragging runs an event loop of its own: not inside a card's event.
    if (action == ShelfCard::Action::dragOut)
        QTimer::singleShot(0, this, [this, id] { dragOut(id); });
    else
        m_host.act(id, action);
}

void ShelfStack::dragOut(const QUuid &id) {
    const auto file = m_host.fileOf(id);
    const auto entry =
        std::ranges::find(m_motion.cards(), id, [](const CardMotion::Entry &e) { return e.card->id(); });
    if (!file || entry == m_motion.cards().end() || !(QGuiApplication::mouseButtons() & Qt::LeftButton))
        return;
    attend(Reason::drag, true);
    const QPointer<ShelfStack> self(this);
    dragFile(*file, entry->card->thumbnail(), ShelfCard::thumbnailSize);
    if (self)
        attend(Reason::drag, false);
}

QMenu *ShelfStack::makeProjectMenu(const QUuid &id) {
    QMenu *menu = m_host.makeProjectMenu(id);
    if (menu)
        followMenu(*menu, id);
    return menu;
}

void ShelfStack::showMenu(ShelfCard &card, const QPoint &globalPlace) {
    QMenu *menu = m_host.makeCardMenu(card.id());
    if (!menu)
        return;
    dressMenu(*menu, *this);
    followMenu(*menu, card.id());
    QObject::connect(menu, &QMenu::aboutToHide, menu, &QObject::deleteLater);
    PanelShell::instance().adopt(*menu, PanelShell::Role::menu, this);
    menu->popup(globalPlace);
}

void ShelfStack::followMenu(QMenu &menu, const QUuid &card) {
    m_menu = &menu;
    m_menuCard = card;
    attend(Reason::menu, true);
    QObject::connect(&menu, &QMenu::aboutToHide, this, [this] { attend(Reason::menu, false); });
}

void ShelfStack::showTip(const ShelfCard &card, const QStringList &paragraphs) {
    if (paragraphs.isEmpty()) {
        if (m_tip)
            m_tip->hide();
        return;
    }
    if (!m_tip)
        m_tip = std::make_unique<CardTip>();
    m_tip->showBeside(bodyOf(card).translated(pos()), paragraphs, theme().isLight);
}

void ShelfStack::closeMenu() {
    if (m_menu)
        m_menu->close();
}

void ShelfStack::pushAside(ShelfCard &card, double distance) {
    const auto entry = std::ranges::find(m_motion.cards(), &card, &CardMotion::Entry::card);
    if (entry == m_motion.cards().end())
        return;
    m_motion.hurry();
    // Opaque while it stays, fainter the nearer it is to going.
    const double opacity = isBlended() ? std::clamp(1.15 - distance / ShelfCard::bodyWidth, 0.2, 1.0) : 1;
    CardMotion::Place pushed = entry->to;
    pushed.aside = distance;
    pushed.opacity = opacity;
    m_motion.place(*entry, pushed);
    update();
    // A shape without a compositor goes where the card goes.
    if (!isBlended())
        outlineChanged();
}

void ShelfStack::letGo(ShelfCard &card, bool dismisses) {
    if (dismisses)
        m_host.act(card.id(), ShelfCard::Action::dismiss);
    else
        arrange();
}

void ShelfStack::attend(Reason reason, bool attended) {
    const bool before = !m_reasons.empty();
    if (attended)
        m_reasons.insert(reason);
    else
        m_reasons.erase(reason);
    if (!m_reasons.empty() != before)
        m_host.setAttended(!before);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/FloatingPanel.h"
#include "ShelfPanel/CardFace.h"
#include "ShelfPanel/CardMotion.h"
#include "ShelfPanel/CardThumbnail.h"
#include "ShelfPanel/CardTip.h"
#include "ShelfPanel/KeyboardLoan.h"
#include "ShelfPanel/ShelfCard.h"
#include "ShelfPanel/ShelfLayout.h"
#include "Support/TaskScope.h"

#include <QMenu>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <vector>

namespace vantrell {

class PanelButton;

/// The shelf's window: the cards one above the other, the newest at the bottom. It is as large as the cards,
/// and the pointer meets nothing of it but them. Where there are more cards than room, it scrolls by whole
/// cards. Main thread.
class ShelfStack final : public FloatingPanel, private ShelfCard::Owner {
public:
    /// Answers what the user does; outlives the stack. May not destroy it in any of these.
    class Host {
    public:
        virtual void act(const QUuid &id, ShelfCard::Action action) = 0;
        virtual QMenu *makeProjectMenu(const QUuid &id) = 0;
        virtual QMenu *makeCardMenu(const QUuid &id) = 0;
        virtual std::optional<std::filesystem::path> fileOf(const QUuid &id) const = 0;
        /// The user is at the shelf: by pointer, menu, keys, or dragging something out of it.
        virtual void setAttended(bool attended) = 0;
        /// The last card has gone from the screen.
        virtual void emptied() = 0;

    protected:
        ~Host() = default;
    };

    explicit ShelfStack(Host &host);
    ~ShelfStack() override;

    /// Shows what has changed: cards and their states at once, steps of uploads at most four times a second.
    void setItems(const std::vector<ShelfItem> &items);
    /// Lies on that screen.
    void setDisplay(QScreen *screen);
    bool isEmpty() const { return m_motion.isEmpty(); }
    /// Gives the keyboard to the newest card, until Escape or until the user turns to another window.
    void takeKeyboard();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void appearanceChanged() override;

private:
    /// Why the user is at the shelf.
    enum class Reason { pointer = 1, menu, drag, keyboard };

    void act(const QUuid &id, ShelfCard::Action action) override;
    QMenu *makeProjectMenu(const QUuid &id) override;
    void showMenu(ShelfCard &card, const QPoint &globalPlace) override;
    void pushAside(ShelfCard &card, double distance) override;
    void letGo(ShelfCard &card, bool dismisses) override;
    void showTip(const ShelfCard &card, const QStringList &paragraphs) override;
    void outlineChanged() override;

    void matchCards(const std::vector<ShelfItem> &items);
    void showProgress();
    void requestThumbnail(ShelfCard &card, const ShelfItem &item);
    Task<> loadThumbnail(QUuid id, CardThumbnail source, std::stop_token stop);

    int count() const { return int(m_motion.cards().size()); }
    ShelfLayout shelfLayout() const;
    /// So many cards are shown at most.
    int room() const;
    void arrange();
    void settled();
    void placeCard(ShelfCard &card, const CardMotion::Place &place);
    void fitWindow();
    void arrangeScrollButtons();
    QRect bodyOf(const ShelfCard &card) const;

    void scrollBy(int cards);
    void focusCard(int index);
    int focusedCard() const;
    void giveKeyboardBack();
    void dragOut(const QUuid &id);
    void attend(Reason reason, bool attended);
    void followMenu(QMenu &menu, const QUuid &card);
    void closeMenu();

    Host &m_host;
    CardMotion m_motion;
    /// So many of the newest cards lie below what is shown.
    int m_newerHidden = 0;
    int m_wheelTurn = 0;
    QPointer<QScreen> m_screen;
    std::set<Reason> m_reasons;
    KeyboardLoan m_keyboard;
    /// The menu that is open, and the card that it is of.
    QPointer<QMenu> m_menu;
    QUuid m_menuCard;
    std::optional<CardFace> m_face;
    /// Made when it is first needed.
    std::unique_ptr<CardTip> m_tip;
    QTimer m_progressTimer;
    bool m_hasProgress = false;
    PanelButton *m_older;
    PanelButton *m_newer;
    TaskScope m_scope;
};

} // namespace vantrell

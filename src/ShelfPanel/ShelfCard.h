// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Shelf/ShelfItem.h"

#include <QFont>
#include <QImage>
#include <QPointF>
#include <QStringList>
#include <QUuid>
#include <QWidget>

#include <optional>

class QMenu;

namespace vantrell {

class DismissButton;
class PanelButton;

/// One card: a capture's picture, its name, how it fares, and what can be done about it. The ground below it
/// is its owner's to draw. Main thread.
class ShelfCard final : public QWidget {
public:
    enum class Action { open = 1, retry, dismiss, dragOut };

    /// Who the card belongs to; outlives it.
    class Owner {
    public:
        virtual void act(const QUuid &id, Action action) = 0;
        /// The projects to choose from; whoever asks owns the menu.
        virtual QMenu *makeProjectMenu(const QUuid &id) = 0;
        virtual void showMenu(ShelfCard &card, const QPoint &globalPlace) = 0;
        /// The card is pushed so many points to the right of its place, and let go.
        virtual void pushAside(ShelfCard &card, double distance) = 0;
        virtual void letGo(ShelfCard &card, bool dismisses) = 0;
        /// The pointer rests on the card, which has no room for these; hides it when there are none.
        virtual void showTip(const ShelfCard &card, const QStringList &paragraphs) = 0;
        /// The dismiss button has come or gone.
        virtual void outlineChanged() = 0;

    protected:
        ~Owner() = default;
    };

    /// The card itself, in points. The widget is larger by `overhang` above and at the sides, where the
    /// dismiss button reaches over the corner.
    static constexpr int bodyWidth = 364;
    static constexpr int bodyHeight = 84;
    static constexpr double cornerRadius = 14;
    static constexpr int overhang = 8;
    static constexpr QSize thumbnailSize{104, 64};

    ShelfCard(const ShelfItem &item, Owner &owner, QWidget *parent);

    const QUuid &id() const { return m_id; }
    QRect body() const;
    /// The dismiss button's place while it can be seen; else empty.
    QRect dismissButtonRect() const;

    /// Shows what has changed. A mere step of an upload waits for `showProgress`: true when there is one.
    bool setItem(const ShelfItem &item);
    void showProgress();
    /// Null: a neutral symbol.
    void setThumbnail(const QImage &thumbnail);
    const QImage &thumbnail() const { return m_thumbnail; }
    /// Which thumbnail was last asked for (`CardThumbnail::key`).
    qint64 thumbnailKey = 0;

    void setOpacity(double opacity);
    double opacity() const { return m_opacity; }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Press {
        QPointF place;
        bool isPushing = false;
    };

    void arrange();
    void arrangeAction();
    void runAction();
    void updateDismissButton();
    QRect mirrored(const QRect &rect) const;
    double progress() const;
    int barEnd() const;
    void paintThumbnail(QPainter &painter) const;
    void paintBadge(QPainter &painter, const QString &text, bool isAtEnd) const;
    void paintTexts(QPainter &painter) const;

    const QUuid m_id;
    Owner &m_owner;
    ShelfItem m_item;
    /// An upload's progress that is not shown yet.
    std::optional<ShelfItem::Uploading> m_pending;
    bool m_isRecovered = false;
    QString m_title;
    QFont m_titleFont;
    QStringList m_statusLines;
    QFont m_statusFont;
    QStringList m_tip;
    QRect m_thumbnailRect;
    QRect m_titleRect;
    QRect m_statusRect;
    QRect m_barRect;
    QImage m_thumbnail;
    double m_opacity = 1;
    std::optional<Press> m_press;
    PanelButton *m_action;
    DismissButton *m_dismiss;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/Icons.h"
#include "Panels/Theme.h"

#include <QAbstractButton>

#include <functional>
#include <optional>

class QMenu;

namespace vantrell {

/// A control of a panel: a symbol, words or both, in the panel's colours. Its label is its accessible name
/// and its tip; the tip says more where `setHelp` gave it more to say. Main thread.
class PanelButton : public QAbstractButton {
public:
    enum class Kind {
        /// Quiet until it is pointed at.
        plain = 1,
        /// With a ground of its own.
        filled,
        /// The one thing to do next.
        accent,
        /// Recording: stop it or start it.
        recording,
    };

    /// `label` says what it is or does, in the user's language.
    explicit PanelButton(const QString &label, QWidget *parent = nullptr);

    void setLabel(const QString &label);
    void setHelp(const QString &help);
    void setKind(Kind kind);
    void setSymbol(std::optional<Symbol> symbol);
    /// Words on the button; a second, quieter line below them when it is not empty. Cut in the middle where
    /// they are wider than `setMostTextWidth` says.
    void setWords(const QString &words, const QString &secondLine = {});
    /// In points at the usual size of text.
    void setMostTextWidth(int points);
    /// The words are a running number.
    void setTabular(bool isTabular);
    /// What is written or drawn is a warning.
    void setWarning(bool warns);
    /// Points; the width at least as much. `growsWithText`: higher where the desktop's text is larger, so
    /// that two lines have room.
    void setHeight(int height, bool growsWithText = false);
    /// Half the height: a capsule.
    void setRadius(double radius);
    /// How full the bar at the lower edge is, 0...1; none shows no bar.
    void setLevel(std::optional<double> level);
    /// Makes the menu that a press, the down key or the accessible action opens. The button deletes it when
    /// it closes.
    void setMenuMaker(std::function<QMenu *()> maker);
    bool hasMenu() const { return bool(m_menuMaker); }
    bool isMenuOpen() const { return m_isMenuOpen; }
    std::optional<double> level() const { return m_level; }
    void openMenu();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Look {
        QColor ground;
        QColor ink;
        QColor quietInk;
    };
    Look look(const Theme &theme) const;
    QFont wordsFont() const;
    QFont secondFont() const;
    QString elided(const QString &text, const QFont &font) const;
    double mostTextWidth() const;
    double textWidth() const;
    void tellTip();

    Kind m_kind = Kind::plain;
    std::optional<Symbol> m_symbol;
    QString m_words;
    QString m_secondLine;
    QString m_help;
    int m_mostTextWidth = 150;
    int m_height = 44;
    bool m_growsWithText = false;
    double m_radius = 9;
    bool m_warns = false;
    bool m_isTabular = false;
    bool m_isMenuOpen = false;
    std::optional<double> m_level;
    std::function<QMenu *()> m_menuMaker;
};

} // namespace vantrell

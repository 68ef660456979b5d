// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/MenuBuilder.h"

#include "Panels/Sentence.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>

namespace vantrell {

namespace {

/// A name of any length and kind as one line of a menu, in which "&" is no mnemonic. Our own sentences are
/// shorter, in any language.
QString menuTitle(const std::string &title) {
    constexpr int longest = 90;
    QString text = inUsersLanguage(QString::fromStdString(title)).simplified();
    if (text.size() > longest)
        text = text.left(longest / 2) + QStringLiteral("…") + text.right(longest / 2 - 1);
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

/// Desktops that assign keys themselves tell them in words of their own.
void showKey(QAction &action, const std::string &key) {
    const QString text = QString::fromStdString(key);
    const QKeySequence sequence(text);
    if (!sequence.isEmpty() && sequence[0].key() != Qt::Key_unknown)
        action.setShortcut(sequence);
    else if (!text.isEmpty())
        action.setText(action.text() + QLatin1Char('\t') + text);
}

} // namespace

void fillMenu(QMenu &menu, const std::vector<MenuEntry> &entries,
              const std::function<void(const MenuEntry &)> &chosen) {
    menu.clear();
    // They are not cleared with it. Emptied first, for the tray's items go with the actions, not with the
    // menu; later, for one of them may be what is calling.
    for (QMenu *const submenu : menu.findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly)) {
        submenu->clear();
        submenu->deleteLater();
    }
    for (const MenuEntry &entry : entries) {
        if (entry.isSeparator()) {
            menu.addSeparator();
            continue;
        }
        if (!entry.submenu.empty()) {
            fillMenu(*menu.addMenu(menuTitle(entry.title)), entry.submenu, chosen);
            continue;
        }
        QAction *const action = menu.addAction(menuTitle(entry.title));
        action->setEnabled(entry.isEnabled && entry.action != MenuAction::none);
        action->setCheckable(entry.isCheckable);
        action->setChecked(entry.isChecked);
        showKey(*action, entry.key);
        QObject::connect(action, &QAction::triggered, &menu, [entry, chosen] { chosen(entry); });
    }
}

} // namespace vantrell

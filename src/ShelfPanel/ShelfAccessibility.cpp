// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/ShelfAccessibility.h"

#include "ShelfPanel/ShelfCard.h"
#include "ShelfPanel/ShelfStack.h"

#include <QAccessibleWidget>

namespace vantrell {

namespace {

class AccessiblePart final : public QAccessibleWidget {
public:
    AccessiblePart(QWidget *part, QAccessible::Role role) : QAccessibleWidget(part, role) {}
};

QAccessibleInterface *make(const QString &, QObject *object) {
    if (auto *stack = dynamic_cast<ShelfStack *>(object))
        return new AccessiblePart(stack, QAccessible::List);
    if (auto *card = dynamic_cast<ShelfCard *>(object))
        return new AccessiblePart(card, QAccessible::ListItem);
    return nullptr;
}

} // namespace

void installShelfAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    static_cast<void>(isInstalled);
}

} // namespace vantrell

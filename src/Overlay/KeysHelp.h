// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/ToolMode.h"

#include <QRectF>
#include <QString>

#include <vector>

class QPainter;

namespace vantrell {

/// The list of what the keys do with a tool. Points of its view. A value type.
struct KeysHelp {
    struct Row {
        QString keys;
        QString meaning;
        bool operator==(const Row &) const = default;
    };
    std::vector<Row> rows;
    QRectF frame;

    bool operator==(const KeysHelp &) const = default;

    /// As large as its rows need, at the origin.
    static KeysHelp of(ToolMode tool);
    void moveTo(const QPointF &topLeft) { frame.moveTopLeft(topLeft); }
    void draw(QPainter &painter) const;
};

} // namespace vantrell

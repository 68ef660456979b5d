// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

namespace vantrell {

/// The program's own symbols: 20 points, drawn as lines with round ends.
enum class Symbol {
    close = 1,
    area,
    window,
    screen,
    microphone,
    microphoneOff,
    camera,
    cameraOff,
    speaker,
    speakerOff,
    timer,
    more,
    pause,
    play,
    restart,
    trash,
    stop,
    record,
    still,
    check,
    chevronDown,
    chevronUp,
    retry,
    open,
    link,
    folder,
    user,
    update,
    warning,
    /// The program's own.
    mark,
    options,
    mirror,
    resize,
};

/// Tinted, `points` wide and high, for a screen of so many pixels a point; cached. Main thread.
QPixmap symbolPixmap(Symbol symbol, const QColor &color, double points, double scale);
/// For menus: sharp at each size and scale. Main thread.
QIcon symbolIcon(Symbol symbol, const QColor &color);

} // namespace vantrell

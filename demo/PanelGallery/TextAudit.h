// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace vantrell::gallery {

/// The texts that a window paints now, in pieces as they are painted, and what it tells those who cannot see
/// it.
QStringList textsOf(QWidget &window);

/// Of those texts the ones that are not translated, or cut, when the language is the pseudo-language. What
/// people and devices are called belongs to no language: `names`.
QStringList faultyTexts(const QStringList &texts, const QStringList &names);

} // namespace vantrell::gallery

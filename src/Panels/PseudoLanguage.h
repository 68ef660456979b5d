// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QTranslator>

#include <memory>

namespace vantrell {

/// A language for looking at panels and for tests: what the German catalogue knows is shown longer, accented
/// and between brackets, so that a text that is not translated and one that is cut both show. The latter
/// alone has an ellipsis.
class PseudoLanguage : public QTranslator {
public:
    PseudoLanguage();

    QString translate(const char *context, const char *source, const char *disambiguation,
                      int n) const override;
    bool isEmpty() const override { return false; }

private:
    const std::unique_ptr<QTranslator> m_known;
};

} // namespace vantrell

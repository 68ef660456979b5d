// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelFont.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(PanelFont, wordsWithNumbersKeepTheirOrderAmongWhatIsReadFromTheRight) {
    const auto drawn = [](Qt::LayoutDirection direction) {
        QImage picture(500, 40, QImage::Format_RGB32);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        painter.setLayoutDirection(direction);
        drawTabular(painter, picture.rect(), "Auto-stops at 20:00, (Super-Shift-9)", panelFont(labelSize));
        return picture;
    };
    EXPECT_EQ(drawn(Qt::RightToLeft), drawn(Qt::LeftToRight));
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/KeysHelp.h"
#include "Panels/PseudoLanguage.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(KeysHelp, speaksTheUsersLanguage) {
    PseudoLanguage pseudo;
    QCoreApplication::installTranslator(&pseudo);
    for (const ToolMode tool : {ToolMode::area, ToolMode::window, ToolMode::screen})
        for (const KeysHelp::Row &row : KeysHelp::of(tool).rows)
            EXPECT_TRUE(row.meaning.startsWith('[')) << row.meaning.toStdString();
}

} // namespace
} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Desktop/X11Session.h"

#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const vantrell::testing::X11Session session({.width = 1200, .height = 700, .windowManager = true});
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("VANTRELL_REDUCED_MOTION", "1");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const int failed = RUN_ALL_TESTS();
    // Windows that were to be deleted later are not leaked.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return failed;
}

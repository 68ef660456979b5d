// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "DemoScene.h"

#include <QGuiApplication>

int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    vantrell::DemoScene scene;
    scene.show();
    return application.exec();
}

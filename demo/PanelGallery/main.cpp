// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Backdrop.h"
#include "Panels/Languages.h"
#include "Panels/PanelFont.h"
#include "Panels/PseudoLanguage.h"
#include "Platform/X11/X11StillCapture.h"
#include "Scenes.h"
#include "Support/SystemClock.h"
#include "Support/TaskScope.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCursor>
#include <QFont>
#include <QTemporaryDir>

#include <cstring>
#include <optional>

using namespace vantrell;
using namespace vantrell::gallery;

int main(int argc, char **argv) {
    // Qt reads its scale before it reads anything else.
    for (int at = 1; at + 1 < argc; ++at) {
        if (std::strcmp(argv[at], "--scale") == 0)
            qputenv("QT_SCALE_FACTOR", argv[at + 1]);
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({"out", "Write a picture of each panel into this folder.", "folder", "panel-gallery"});
    parser.addOption({"scale", "Pixels for each point.", "scale", "1"});
    parser.addOption({"light", "On a light screen."});
    parser.addOption({"text", "The desktop's text, times as large as usual.", "factor"});
    parser.addOption({"rtl", "For those who read from the right."});
    parser.addOption(
        {"language", "In that language; \"pseudo\" shows what is not translated or cut.", "language"});
    parser.addOption({"audit", "Writes no pictures, and fails when a text is not translated or cut."});
    parser.addOption({"only", "Scenes whose names begin so.", "prefix"});
    parser.process(application);
    if (parser.isSet("text")) {
        QFont font = QApplication::font();
        font.setPixelSize(qRound(usualTextPixels * parser.value("text").toDouble()));
        QApplication::setFont(font);
    }
    if (parser.isSet("rtl"))
        QApplication::setLayoutDirection(Qt::RightToLeft);

    std::unique_ptr<QTranslator> language;
    const bool isAudit = parser.isSet("audit");
    if (isAudit || parser.value("language") == "pseudo")
        language = std::make_unique<PseudoLanguage>();
    else if (parser.isSet("language"))
        language = catalogueFor(QLocale(parser.value("language")));
    if (language)
        QCoreApplication::installTranslator(language.get());

    Backdrop backdrop(parser.isSet("light"));
    backdrop.show();
    // Also below what a window manager manages.
    backdrop.lower();
    QCursor::setPos(0, 0);
    const QTemporaryDir folder;
    Settings settings((folder.path() + "/settings.ini").toStdString());
    SystemClock clock;
    X11StillCapture stills;
    std::vector<Scene> scenes = otherScenes(settings, clock);
    for (const auto &more : {barScenes(stills, settings, clock), hudScenes(stills, settings, clock),
                             shelfScenes(stills, clock), overlayScenes()})
        scenes.insert(scenes.end(), more.begin(), more.end());
    std::erase_if(scenes,
                  [&parser](const Scene &scene) { return !scene.name.startsWith(parser.value("only")); });

    int faults = 0;
    TaskScope scope;
    scope.start(
        [](std::vector<Scene> shown, std::optional<QString> out, int *faulty,
           std::stop_token stop) -> Task<> {
            if (out)
                co_await grabScenes(std::move(shown), *out, stop);
            else
                co_await auditScenes(std::move(shown), faulty, stop);
            QCoreApplication::quit();
        },
        scenes, isAudit ? std::nullopt : std::optional(parser.value("out")), &faults);
    QApplication::exec();
    return faults > 0 ? 1 : 0;
}

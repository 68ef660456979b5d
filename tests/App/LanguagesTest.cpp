// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Languages.h"
#include "App/StatusMenu.h"
#include "Panels/PseudoLanguage.h"
#include "Panels/Sentence.h"
#include "TestSupport/Desktop/X11Session.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

#include <gmock/gmock.h>

namespace vantrell::testing {

namespace {

/// The application speaks it as long as the object lives.
class Speaking {
public:
    explicit Speaking(std::unique_ptr<QTranslator> language) : m_language(std::move(language)) {
        EXPECT_TRUE(m_language && QCoreApplication::installTranslator(m_language.get()));
    }
    ~Speaking() { QCoreApplication::removeTranslator(m_language.get()); }

private:
    std::unique_ptr<QTranslator> m_language;
};

TEST(Languages, speakWhatTheUserDoes) {
    EXPECT_EQ(catalogueFor(QLocale(QStringLiteral("en_US"))), nullptr);
    EXPECT_EQ(catalogueFor(QLocale::c()), nullptr);
    EXPECT_EQ(inUsersLanguage(std::string("Uploading 3 captures…")), "Uploading 3 captures…");
    const Speaking german(catalogueFor(QLocale(QStringLiteral("de_AT"))));
    EXPECT_EQ(inUsersLanguage(std::string("Uploading 1 capture…")), "1 Aufnahme wird hochgeladen …");
    EXPECT_EQ(inUsersLanguage(std::string("Uploading 3 captures…")), "3 Aufnahmen werden hochgeladen …");
    EXPECT_EQ(inUsersLanguage(std::string("Recording failed to save: Network error")),
              "Die Aufnahme ließ sich nicht speichern: Netzwerkfehler");
    // What somebody has called so is nobody's sentence.
    EXPECT_EQ(inUsersLanguage(std::string("Upload to: Äpfel & %1")), "Hochladen nach: Äpfel & %1");
    EXPECT_EQ(inUsersLanguage(std::string("My capture")), "My capture");
}

TEST(Languages, putInWhereEnglishPutsIn) {
    const auto german = catalogueFor(QLocale(QStringLiteral("de_DE")));
    for (const char *const english : shownSentences()) {
        const QString said = german->translate("Sentences", english, nullptr,
                                               QString::fromUtf8(english).contains("%n") ? 2 : -1);
        EXPECT_NE(said, QString()) << english;
        for (const char *const mark : {"%1", "%2", "%n"})
            EXPECT_EQ(said.contains(QLatin1String(mark)),
                      QString::fromUtf8(english).contains(QLatin1String(mark)))
                << english;
    }
}

void expectAllTranslated(const std::vector<MenuEntry> &entries) {
    for (const MenuEntry &entry : entries) {
        const bool isName = entry.action == MenuAction::selectProject;
        if (!entry.isSeparator() && !isName)
            EXPECT_EQ(inUsersLanguage(entry.title).front(), '[') << entry.title;
        expectAllTranslated(entry.submenu);
    }
}

TEST(Languages, knowEveryLineOfTheMenu) {
    const Speaking pseudo(std::make_unique<PseudoLanguage>());
    for (const auto kind :
         {PairingState::Kind::paired, PairingState::Kind::unpaired, PairingState::Kind::waitingForApproval})
        for (const bool isRich : {false, true}) {
            StatusMenuState state;
            state.pairing.kind = kind;
            state.hasScreenAccess = !isRich;
            state.uploadingCount = isRich ? 3 : 1;
            if (isRich) {
                state.takenHotKeys = {"Another program holds the keys of Capture Area"};
                state.availableUpdateVersion = "1.2";
                state.projects = {{"p", "Project"}};
                state.selectedProjectId = "p";
            }
            expectAllTranslated(statusMenu(state));
            expectAllTranslated(recordingMenu(state));
        }
}

TEST(Languages, showNoPanelWithATextThatIsNotTranslatedOrCut) {
    const X11Session session({.width = 1600, .height = 1000, .windowManager = true});
    QProcess gallery;
    QProcessEnvironment onScreen = QProcessEnvironment::systemEnvironment();
    onScreen.insert("QT_QPA_PLATFORM", "xcb");
    gallery.setProcessEnvironment(onScreen);
    gallery.start(PANEL_GALLERY, {"--audit"});
    ASSERT_TRUE(gallery.waitForFinished(200'000)) << gallery.errorString().toStdString();
    EXPECT_EQ(gallery.exitCode(), 0) << gallery.readAllStandardOutput().toStdString()
                                     << gallery.readAllStandardError().toStdString();
}

} // namespace
} // namespace vantrell::testing

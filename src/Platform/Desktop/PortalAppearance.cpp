// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/PortalColourScheme.h"

#include <QDBusArgument>
#include <QDBusVariant>

namespace vantrell {

namespace {

const QString settingsPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString schemeKey = QStringLiteral("color-scheme");
constexpr unsigned prefersLight = 2;

} // namespace

PortalColourScheme::PortalColourScheme(QDBusConnection session)
    : m_portal(std::move(session), QStringLiteral("org.freedesktop.portal.Desktop")) {
    m_portal.onSignal(settingsPath, settingsInterface, QStringLiteral("SettingChanged"),
                      [this](const QDBusMessage &signal) {
                          const QList<QVariant> arguments = signal.arguments();
                          if (arguments.value(0) == appearance && arguments.value(1) == schemeKey)
                              take(arguments.value(2));
                      });
    m_portal.onPresence([this](bool isPresent) {
        if (isPresent)
            ask();
    });
    ask();
}

void PortalColourScheme::ask() {
    m_portal.call({settingsPath, settingsInterface, QStringLiteral("Read"), {appearance, schemeKey}, true},
                  [this](const BusClient::Answer &answer) {
                      if (answer)
                          take(answer->arguments().value(0));
                  });
}

void PortalColourScheme::take(const QVariant &value) {
    // Read answers with a variant in a variant.
    QVariant inner = value;
    while (inner.canConvert<QDBusVariant>())
        inner = inner.value<QDBusVariant>().variant();
    set(inner.toUInt() == prefersLight);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/PortalAppearance.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <array>

namespace vantrell {

namespace {

const QString settingsPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

struct Setting {
    QString group;
    QString key;
    bool operator==(const Setting &) const = default;
};
const Setting colourScheme{QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme")};
/// The common setting is young; the other one is what GNOME and its relatives have had all along.
const Setting reducedMotion{QStringLiteral("org.freedesktop.appearance"), QStringLiteral("reduced-motion")};
const Setting animations{QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations")};

constexpr unsigned prefersLight = 2;
constexpr unsigned prefersLessMotion = 1;

} // namespace

PortalAppearance::PortalAppearance(QDBusConnection session, bool startsPortal)
    : m_portal(std::move(session), QStringLiteral("org.freedesktop.portal.Desktop")) {
    m_portal.onSignal(settingsPath, settingsInterface, QStringLiteral("SettingChanged"),
                      [this](const QDBusMessage &signal) {
                          const QList<QVariant> arguments = signal.arguments();
                          take(arguments.value(0).toString(), arguments.value(1).toString(),
                               arguments.value(2));
                      });
    m_portal.onPresence([this](bool isPresent) {
        if (isPresent)
            askAll(false);
    });
    askAll(startsPortal);
}

void PortalAppearance::askAll(bool startsPortal) {
    for (const Setting &setting : std::array{colourScheme, reducedMotion, animations})
        m_portal.call({settingsPath,
                       settingsInterface,
                       QStringLiteral("Read"),
                       {setting.group, setting.key},
                       startsPortal},
                      [this, setting](const BusClient::Answer &answer) {
                          if (answer)
                              take(setting.group, setting.key, answer->arguments().value(0));
                      });
}

void PortalAppearance::take(const QString &group, const QString &key, const QVariant &value) {
    // Read answers with a variant in a variant.
    QVariant inner = value;
    while (inner.canConvert<QDBusVariant>())
        inner = inner.value<QDBusVariant>().variant();
    Wishes wishes = this->wishes();
    const Setting setting{group, key};
    if (setting == colourScheme)
        wishes.isLight = inner.toUInt() == prefersLight;
    else if (setting == reducedMotion)
        m_hasLessMotion = inner.toUInt() == prefersLessMotion;
    else if (setting == animations)
        m_hasNoAnimations = !inner.toBool();
    wishes.reducesMotion = m_hasLessMotion || m_hasNoAnimations;
    set(wishes);
}

} // namespace vantrell

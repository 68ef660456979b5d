// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Wayland/PortalDouble.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QUuid>

#include <stdexcept>
#include <utility>

namespace vantrell::testing {

namespace {

const QString implementation = QStringLiteral("org.freedesktop.impl.portal.");
const QString ownName = QStringLiteral("org.freedesktop.impl.portal.desktop.double");
constexpr unsigned shared = 0;

/// "(ii)", as streams tell place and size.
struct Pair {
    int first = 0;
    int second = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Pair &pair) {
    argument.beginStructure();
    argument << pair.first << pair.second;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Pair &pair) {
    argument.beginStructure();
    argument >> pair.first >> pair.second;
    argument.endStructure();
    return argument;
}

/// "(suv)": who remembers, its version, what.
struct RestoreData {
    QString vendor = QStringLiteral("double");
    unsigned version = 1;
    QDBusVariant choice{QStringLiteral("the same again")};
};

QDBusArgument &operator<<(QDBusArgument &argument, const RestoreData &data) {
    argument.beginStructure();
    argument << data.vendor << data.version << data.choice;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, RestoreData &data) {
    argument.beginStructure();
    argument >> data.vendor >> data.version >> data.choice;
    argument.endStructure();
    return argument;
}

/// "(ua{sv})".
struct SharedStream {
    unsigned node = 0;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const SharedStream &stream) {
    argument.beginStructure();
    argument << stream.node << stream.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, SharedStream &stream) {
    argument.beginStructure();
    argument >> stream.node >> stream.properties;
    argument.endStructure();
    return argument;
}

/// "(sa{sv})".
struct HotKey {
    QString id;
    QVariantMap facts;
};

QDBusArgument &operator<<(QDBusArgument &argument, const HotKey &key) {
    argument.beginStructure();
    argument << key.id << key.facts;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, HotKey &key) {
    argument.beginStructure();
    argument >> key.id >> key.facts;
    argument.endStructure();
    return argument;
}

const QString hotKeyInterface = implementation + QStringLiteral("GlobalShortcuts");

} // namespace

PortalDouble::PortalDouble(PortalGround &ground, const Script &given)
    : script(given), m_ground(ground),
      m_bus(QDBusConnection::connectToBus(QString::fromStdString(ground.bus().address()),
                                          QUuid::createUuid().toString())) {
    qDBusRegisterMetaType<Pair>();
    qDBusRegisterMetaType<RestoreData>();
    qDBusRegisterMetaType<SharedStream>();
    qDBusRegisterMetaType<QList<SharedStream>>();
    qDBusRegisterMetaType<HotKey>();
    qDBusRegisterMetaType<QList<HotKey>>();
    m_bus.registerVirtualObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                                QDBusConnection::SubPath);
    if (!m_bus.registerService(ownName))
        throw std::runtime_error("the portal's double has no name");
    startPortal();
}

void PortalDouble::startPortal() {
    std::vector<std::string> parts{"ScreenCast"};
    if (script.hasHotKeys)
        parts.emplace_back("GlobalShortcuts");
    m_ground.startPortal("double", parts);
}

void PortalDouble::awake() {
    script.hangs = false;
    for (const QDBusMessage &message : std::exchange(m_held, {}))
        handleMessage(message, m_bus);
}

void PortalDouble::restart() {
    m_bus.unregisterService(ownName);
    m_hotKeySession.clear();
    m_hotKeys.clear();
    m_bus.registerService(ownName);
}

PortalDouble::~PortalDouble() {
    m_bus.unregisterObject(QStringLiteral("/org/freedesktop/portal/desktop"),
                           QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_bus.name());
}

QString PortalDouble::introspect(const QString &) const {
    return {};
}

QVariantMap PortalDouble::properties(const QString &interface) const {
    if (interface != implementation + QStringLiteral("ScreenCast"))
        return {{QStringLiteral("version"), 1u}};
    return {{QStringLiteral("AvailableSourceTypes"), script.sourceTypes},
            {QStringLiteral("AvailableCursorModes"), script.cursorModes},
            {QStringLiteral("version"), 4u}};
}

void PortalDouble::reply(const QDBusMessage &message, unsigned response, const QVariantMap &results) {
    m_bus.send(message.createReply(QVariantList{response, results}));
}

bool PortalDouble::handleMessage(const QDBusMessage &message, const QDBusConnection &) {
    if (script.hangs) {
        m_held.push_back(message);
        return true;
    }
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    if (member == QStringLiteral("GetAll")) {
        m_bus.send(message.createReply(properties(arguments.value(0).toString())));
    } else if (member == QStringLiteral("Get")) {
        const QVariant value = properties(arguments.value(0).toString()).value(arguments.value(1).toString());
        m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
    } else if (member == QStringLiteral("Close")) {
        m_sessions.removeAll(message.path());
        if (m_hotKeySession == message.path())
            m_hotKeySession.clear();
        // An open dialog goes with either.
        if (m_pending && (m_pending->arguments().value(0).value<QDBusObjectPath>().path() == message.path() ||
                          m_pending->arguments().value(1).value<QDBusObjectPath>().path() == message.path()))
            reply(*std::exchange(m_pending, std::nullopt), 2, {});
        m_bus.send(message.createReply());
    } else if (message.interface() == hotKeyInterface) {
        return handleHotKeys(message);
    } else if (member == QStringLiteral("CreateSession")) {
        ++m_opened;
        m_sessions.append(arguments.value(1).value<QDBusObjectPath>().path());
        reply(message, shared, {});
    } else if (member == QStringLiteral("SelectSources")) {
        m_selections.push_back(qdbus_cast<QVariantMap>(arguments.value(3)));
        reply(message, shared, {});
    } else if (member == QStringLiteral("Start")) {
        start(message);
    } else {
        return false;
    }
    return true;
}

void PortalDouble::start(const QDBusMessage &message) {
    const bool isRemembered =
        !m_selections.empty() && m_selections.back().contains(QStringLiteral("restore_data"));
    if (!isRemembered)
        ++m_dialogs;
    m_pending = message;
    if (!script.isSlow)
        answer();
}

void PortalDouble::answer() {
    const auto asked = std::exchange(m_pending, std::nullopt);
    if (!asked)
        return;
    QVariantMap results;
    if (script.response == shared) {
        SharedStream stream{script.node, {}};
        stream.properties[QStringLiteral("position")] =
            QVariant::fromValue(Pair{script.place.x, script.place.y});
        stream.properties[QStringLiteral("size")] =
            QVariant::fromValue(Pair{script.place.width, script.place.height});
        stream.properties[QStringLiteral("source_type")] = 1u;
        results[QStringLiteral("streams")] = QVariant::fromValue(QList<SharedStream>{stream});
        results[QStringLiteral("persist_mode")] = 2u;
        results[QStringLiteral("restore_data")] = QVariant::fromValue(RestoreData());
    }
    reply(*asked, script.response, results);
}

bool PortalDouble::handleHotKeys(const QDBusMessage &message) {
    const QString member = message.member();
    const QVariantList arguments = message.arguments();
    const auto bind = [this](const QDBusArgument &wishes) {
        for (const HotKey &wish : qdbus_cast<QList<HotKey>>(wishes))
            m_hotKeys[wish.id] = wish.facts.value(QStringLiteral("preferred_trigger")).toString();
    };
    if (member == QStringLiteral("CreateSession")) {
        const QString session = arguments.value(1).value<QDBusObjectPath>().path();
        if (session == m_hotKeySession) {
            // As KDE's does, when nobody has closed the first.
            reply(message, 2, {});
            return true;
        }
        m_hotKeySession = session;
        m_hotKeys.clear();
        const auto options = qdbus_cast<QVariantMap>(arguments.value(3));
        if (script.bindsAtOpening)
            bind(options.value(QStringLiteral("shortcuts")).value<QDBusArgument>());
        reply(message, shared, {});
    } else if (member == QStringLiteral("ListShortcuts")) {
        reply(message, shared, {{QStringLiteral("shortcuts"), boundHotKeys()}});
    } else if (member == QStringLiteral("BindShortcuts")) {
        ++m_bindings;
        if (script.bindResponse == shared && !script.bindsAtOpening)
            bind(arguments.value(2).value<QDBusArgument>());
        reply(message, script.bindResponse, {{QStringLiteral("shortcuts"), boundHotKeys()}});
    } else {
        return false;
    }
    return true;
}

QVariant PortalDouble::boundHotKeys() const {
    QList<HotKey> all;
    for (auto key = m_hotKeys.begin(); key != m_hotKeys.end(); ++key)
        all.append({key.key(), {{QStringLiteral("trigger_description"), key.value()}}});
    return QVariant::fromValue(all);
}

void PortalDouble::tellHotKeys(const QString &member, const QVariantList &arguments) {
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                     hotKeyInterface, member);
    signal << QVariant::fromValue(QDBusObjectPath(m_hotKeySession));
    for (const QVariant &argument : arguments)
        signal << argument;
    m_bus.send(signal);
}

bool PortalDouble::press(const QString &id) {
    if (!m_hotKeys.contains(id))
        return false;
    tellHotKeys(QStringLiteral("Activated"), {id, QVariant::fromValue(qulonglong(0)), QVariantMap()});
    return true;
}

void PortalDouble::assign(const QString &id, const QString &trigger) {
    m_hotKeys[id] = trigger;
    tellHotKeys(QStringLiteral("ShortcutsChanged"), {boundHotKeys()});
}

void PortalDouble::endSessions() {
    for (const QString &session : m_sessions)
        m_bus.send(QDBusMessage::createSignal(session, implementation + QStringLiteral("Session"),
                                              QStringLiteral("Closed")));
}

} // namespace vantrell::testing

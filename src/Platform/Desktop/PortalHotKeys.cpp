// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/PortalHotKeys.h"

#include "Support/Log.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

/// One shortcut as the portal tells and takes it.
struct PortalShortcut {
    QString id;
    QVariantMap facts;
};

static QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.facts;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.facts;
    argument.endStructure();
    return argument;
}

namespace {

using namespace std::chrono_literals;

const QString hotKeyPortal = QStringLiteral("GlobalShortcuts");
/// Some desktops know the program by it, and keep what the user has assigned under it.
const QString hotKeySession = QStringLiteral("vantrell_capture");
constexpr auto reconnectDelay = 3000ms;
constexpr int mostAttempts = 10;
/// The code of the error where the user has to bind keys himself.
constexpr int byHandCode = 1;

const char *digitOf(HotKeyBackend::Key key) {
    switch (key) {
    case HotKeyBackend::Key::digit7:
        return "7";
    case HotKeyBackend::Key::digit8:
        return "8";
    case HotKeyBackend::Key::digit9:
        return "9";
    }
    return "";
}

QList<PortalShortcut> shortcutsIn(const QVariant &value) {
    if (!value.canConvert<QDBusArgument>())
        return value.value<QList<PortalShortcut>>();
    return qdbus_cast<QList<PortalShortcut>>(value.value<QDBusArgument>());
}

/// Of the session's name there can be but one: rather than that the answer to a question that was given up
/// comes between a later one and its answer, a slow desktop is waited for.
PortalRequests::Request patient(const QString &member) {
    PortalRequests::Request request{hotKeyPortal, member, {}, {}, std::nullopt};
    request.isUrgent = false;
    return request;
}

/// Where the user finds the settings for keys.
const char *settingsOf(const std::string &desktop) {
    if (desktop == "GNOME")
        return "Settings, Keyboard, Custom Shortcuts";
    if (desktop == "KDE")
        return "System Settings, Shortcuts";
    return "the settings of your desktop";
}

} // namespace

PlatformError hotKeysByHand(const std::string &desktop) {
    return {
        "hotkeys", byHandCode,
        std::string("This desktop gives programs no hot keys. Bind keys to the commands "
                    "“vantrell-capture area”, “vantrell-capture window” and “vantrell-capture toggle” in ") +
            settingsOf(desktop)};
}

PortalHotKeys::PortalHotKeys(QDBusConnection session, Options options)
    : m_options(std::move(options)), m_portal(std::move(session)) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    m_connecting.setSingleShot(true);
    QObject::connect(&m_connecting, &QTimer::timeout, &m_connecting, [this] {
        m_scope.cancel();
        m_scope.start(this, &PortalHotKeys::connect);
    });
    m_portal.onGone([this] {
        if (m_session.isEmpty())
            return;
        // The desktop's own part still has it, and refuses a second of the same name.
        m_portal.closeSession(m_session);
        lost();
    });
    m_portal.onPartChanged(hotKeyPortal, [this] { partChanged(); });
    m_portal.onSignal(hotKeyPortal, QStringLiteral("Activated"),
                      [this](const QDBusMessage &signal) { activated(signal); });
    m_portal.onSignal(hotKeyPortal, QStringLiteral("ShortcutsChanged"), [this](const QDBusMessage &signal) {
        if (signal.arguments().value(0).value<QDBusObjectPath>().path() == m_session &&
            takeAssignments(signal.arguments().value(1)) && onChange)
            onChange();
    });
}

PortalHotKeys::~PortalHotKeys() {
    if (!m_session.isEmpty())
        m_portal.closeSession(m_session);
}

std::expected<void, PlatformError> PortalHotKeys::grab(Key key, std::function<void()> pressed) {
    m_combinations.insert_or_assign(key, Combination{std::move(pressed), std::nullopt});
    m_connecting.start(0);
    return {};
}

std::optional<std::string> PortalHotKeys::assigned(Key key) const {
    const auto found = m_combinations.find(key);
    return found == m_combinations.end() ? std::nullopt : found->second.assigned;
}

const PortalHotKeys::Shortcut *PortalHotKeys::shortcutWith(const QString &id) const {
    const auto found = std::ranges::find(m_options.shortcuts, id, &Shortcut::id);
    return found == m_options.shortcuts.end() ? nullptr : &*found;
}

QVariant PortalHotKeys::wishes() const {
    QList<PortalShortcut> wishes;
    for (const Shortcut &shortcut : m_options.shortcuts) {
        if (!m_combinations.contains(shortcut.key))
            continue;
        // KDE looks at what is written: there Shift with a digit is another character, and a combination
        // that names both is never met.
        const std::string shifted =
            m_options.desktop == "KDE" && m_options.shifted ? m_options.shifted(shortcut.key) : std::string();
        const std::string trigger =
            shifted.empty() ? std::string("LOGO+SHIFT+") + digitOf(shortcut.key) : "LOGO+" + shifted;
        wishes.append(
            {shortcut.id,
             {{"description", shortcut.purpose}, {"preferred_trigger", QString::fromStdString(trigger)}}});
    }
    return QVariant::fromValue(wishes);
}

Task<> PortalHotKeys::connect(std::stop_token stop) {
    ++m_attempts;
    const auto bound = co_await bind(stop);
    if (stop.stop_requested())
        co_return;
    if (bound) {
        m_problem.reset();
        m_attempts = 0;
    } else {
        fail(bound.error());
    }
    if (onChange)
        onChange();
}

Task<std::expected<void, PortalRequests::Failure>> PortalHotKeys::bind(std::stop_token stop) {
    if (const auto known = co_await m_portal.properties(hotKeyPortal, stop); !known)
        co_return std::unexpected(known.error());
    // KDE 5.27 takes the combinations here and nowhere else; others do not look at them.
    PortalRequests::Request opening = patient(QStringLiteral("CreateSession"));
    opening.options = {{"session_handle_token", hotKeySession}, {"shortcuts", wishes()}};
    const auto opened = co_await m_portal.ask(opening, stop);
    if (!opened)
        co_return std::unexpected(opened.error());
    m_session = m_portal.takeSession(*opened);
    m_portal.onSessionClosed(m_session, [this] { lost(); });

    // To bind what is bound already opens the desktop's settings on some.
    PortalRequests::Request listing = patient(QStringLiteral("ListShortcuts"));
    listing.arguments = {QVariant::fromValue(QDBusObjectPath(m_session))};
    const auto listed = co_await m_portal.ask(listing, stop);
    if (listed && takeAssignments(listed->results.value(QStringLiteral("shortcuts"))))
        co_return std::expected<void, PortalRequests::Failure>();

    PortalRequests::Request binding = patient(QStringLiteral("BindShortcuts"));
    binding.arguments = {QVariant::fromValue(QDBusObjectPath(m_session)), wishes(), QString()};
    const auto bound = co_await m_portal.ask(binding, stop);
    if (!bound)
        co_return std::unexpected(bound.error());
    takeAssignments(bound->results.value(QStringLiteral("shortcuts")));
    co_return std::expected<void, PortalRequests::Failure>();
}

/// True when it tells of all that is wanted.
bool PortalHotKeys::takeAssignments(const QVariant &shortcuts) {
    std::size_t known = 0;
    for (const PortalShortcut &told : shortcutsIn(shortcuts)) {
        const Shortcut *const shortcut = shortcutWith(told.id);
        const auto found = shortcut ? m_combinations.find(shortcut->key) : m_combinations.end();
        if (found == m_combinations.end())
            continue;
        ++known;
        found->second.assigned =
            told.facts.value(QStringLiteral("trigger_description")).toString().toStdString();
    }
    return known == m_combinations.size();
}

void PortalHotKeys::fail(const PortalRequests::Failure &failure) {
    const auto *error = std::get_if<PlatformError>(&failure);
    m_problem = hotKeysByHand(m_options.desktop);
    qCInfo(logApp, "no hot keys by the portal: %s", error ? error->message.c_str() : "the user said no");
    if (error &&
        (isPortalError(*error, PortalErrorCode::gone) || isPortalError(*error, PortalErrorCode::silent)))
        lost();
}

void PortalHotKeys::activated(const QDBusMessage &signal) {
    const QList<QVariant> arguments = signal.arguments();
    if (arguments.value(0).value<QDBusObjectPath>().path() != m_session)
        return;
    const Shortcut *const shortcut = shortcutWith(arguments.value(1).toString());
    const auto found = shortcut ? m_combinations.find(shortcut->key) : m_combinations.end();
    if (found == m_combinations.end())
        return;
    // A copy: it may destroy this object.
    const auto pressed = found->second.pressed;
    pressed();
}

void PortalHotKeys::partChanged() {
    if (!m_session.isEmpty())
        m_portal.closeSession(m_session);
    else if (m_combinations.empty() || m_scope.active() > 0)
        return;
    lost();
}

void PortalHotKeys::lost() {
    m_session.clear();
    if (m_attempts < mostAttempts)
        m_connecting.start(reconnectDelay);
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Bus/PortalPulse.h"

#include "Platform/Bus/PortalPart.h"
#include "Support/Sandbox.h"

#include <QDBusConnectionInterface>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace vantrell {

namespace {

constexpr std::chrono::seconds lookInterval(1);
/// Looks are counted and no time: where this program was held up itself, an answer may lie unread.
constexpr int mostSilences = 3;

/// It has started a program that has not ended. The parts of one thread show their choosers so, and do
/// nothing else until the user has chosen. True where nobody can tell.
bool isServedByProgram(unsigned pid) {
    std::error_code error;
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    bool isTold = false;
    for (const auto &task : std::filesystem::directory_iterator(tasks, error)) {
        std::ifstream children(task.path() / "children");
        isTold = isTold || children.is_open();
        if (int child = 0; children >> child)
            return true;
    }
    return !isTold;
}

} // namespace

PortalPulse::Part::Part(const QDBusConnection &bus, QString service)
    : name(std::move(service)), client(bus, name) {}

void PortalPulse::Part::ask() {
    owesAnswer = true;
    silences = 0;
    client.call(
        {QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")},
        // That it went away is an answer, too.
        [this](const BusClient::Answer &) { owesAnswer = false; }, std::chrono::hours(24));
}

bool PortalPulse::Part::isSilent() const {
    return silences >= mostSilences;
}

PortalPulse::PortalPulse(QDBusConnection bus, QString portal, std::function<void()> hung)
    : m_portal(std::move(portal)), m_hung(std::move(hung)),
      m_bus(std::move(bus), QStringLiteral("org.freedesktop.DBus")) {
    if (isSandboxed())
        return;
    QObject::connect(&m_looking, &QTimer::timeout, &m_looking, [this] { look(); });
    m_bus.call({QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
                QStringLiteral("ListNames")},
               [this](const BusClient::Answer &names) {
                   if (names)
                       take(names->arguments().value(0).toStringList());
               });
}

PortalPulse::~PortalPulse() = default;

void PortalPulse::take(const QStringList &names) {
    for (const QString &name : names)
        if (name == portalService || name.startsWith(portalPartPrefix))
            m_parts.emplace_back(m_bus.bus(), name).ask();
    if (!m_parts.empty())
        m_looking.start(lookInterval);
}

void PortalPulse::look() {
    const QDBusConnectionInterface *const bus = m_bus.bus().interface();
    for (Part &part : m_parts) {
        if (!part.owesAnswer)
            part.ask();
        else if (bus && part.name != portalService && isServedByProgram(bus->servicePid(part.name)))
            part.silences = 0;
        else
            ++part.silences;
    }
    if (!isHung())
        return;
    m_looking.stop();
    m_hung();
}

bool PortalPulse::isHung() const {
    // As a rule, and what follows reads from disk.
    if (std::ranges::none_of(m_parts, &Part::isSilent))
        return false;
    if (std::ranges::any_of(m_parts,
                            [](const Part &part) { return part.name == portalService && part.isSilent(); }))
        return true;
    // Which of several parts serves us only the portals know.
    bool isServed = false;
    for (const Part &part : m_parts) {
        if (!servesPortal(part.name, m_portal))
            continue;
        if (!part.isSilent())
            return false;
        isServed = true;
    }
    return isServed;
}

} // namespace vantrell

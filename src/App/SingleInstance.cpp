// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/SingleInstance.h"

#include "Capture/CaptureStorage.h"
#include "Session/ApplicationBus.h"
#include "Support/Log.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDBusVariant>

#include <utility>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto quitPoll = 100ms;
constexpr int quitPolls = 30;
constexpr int answerPatienceMs = 3000;

QString busName() {
    return QString::fromLatin1(applicationBus::name);
}

QDBusMessage callOf(const QString &interface, const QString &method, const QVariantList &arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(busName(), QString::fromLatin1(applicationBus::path),
                                                       interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

} // namespace

SingleInstance::SingleInstance(QDBusConnection bus, std::string executable, Clock &clock)
    : m_bus(std::move(bus)), m_executable(std::move(executable)), m_clock(clock) {}

bool SingleInstance::claimByFile() {
    auto lock = FileLock::acquire(CaptureStorage::directory().parent_path() / "application");
    // A disk without locks keeps nobody from recording.
    if (!lock)
        return !lock.error().isHeldElsewhere;
    m_lock.emplace(std::move(*lock));
    return true;
}

Task<bool> SingleInstance::isSameCopy(std::stop_token) const {
    const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
    const QDBusMessage question =
        callOf(properties, QStringLiteral("GetAll"), {QString::fromLatin1(applicationBus::interface)});
    const QDBusReply<QVariantMap> answer = co_await m_bus.asyncCall(question, answerPatienceMs);
    co_return answer.isValid() &&
        answer.value().value(QStringLiteral("Executable")).toString().toStdString() ==
            m_executable &&answer.value().value(QStringLiteral("Version")).toString() ==
            QLatin1String(VANTRELL_VERSION);
}

Task<> SingleInstance::tell(QString method, QVariantList arguments, QString interface,
                            std::stop_token stop) const {
    const QDBusMessage call = callOf(interface, method, arguments);
    // One that has only just been started answers that it is starting: a moment later it does as it is told.
    for (int attempt = 0; attempt < quitPolls; ++attempt) {
        const QDBusMessage answer = co_await m_bus.asyncCall(call, answerPatienceMs);
        if (answer.errorName() != QLatin1String(applicationBus::starting) ||
            !co_await m_clock.sleep(quitPoll, stop))
            co_return;
    }
}

Task<SingleInstance::Claim> SingleInstance::claim(std::stop_token stop) {
    if (!m_bus.isConnected())
        co_return claimByFile() ? Claim::granted : Claim::yielded;
    QDBusConnectionInterface *const bus = m_bus.interface();
    const auto isGranted = [&] {
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
            bus->registerService(busName(), QDBusConnectionInterface::DontQueueService,
                                 QDBusConnectionInterface::DontAllowReplacement);
        return reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
    };
    if (isGranted())
        co_return Claim::granted;
    if (!co_await isSameCopy(stop)) {
        qCInfo(logApp, "another instance detected; asking it to terminate");
        co_await tell(QStringLiteral("Quit"), {}, QString::fromLatin1(applicationBus::interface), stop);
        for (int poll = 0; poll < quitPolls; ++poll) {
            if (isGranted())
                co_return Claim::granted;
            if (!co_await m_clock.sleep(quitPoll, stop))
                break;
        }
        qCInfo(logApp, "existing instance kept running; yielding");
    }
    co_await tell(QStringLiteral("Activate"), {QVariantMap()},
                  QString::fromLatin1(applicationBus::standardInterface), stop);
    co_return Claim::yielded;
}

std::string runningExecutable() {
    if (const QByteArray image = qgetenv("APPIMAGE"); !image.isEmpty())
        return image.toStdString();
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown).string();
}

} // namespace vantrell

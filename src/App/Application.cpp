// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Application.h"

#include "App/DesktopLoader.h"
#include "App/InstallLocation.h"
#include "App/PlatformLoader.h"
#include "Panels/Alert.h"
#include "Session/ApplicationBus.h"
#include "Support/Log.h"

#include <QApplication>
#include <QDBusConnection>

#include <cstdio>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto journalPoll = 200ms;
// A command asks for the end of what it has handed over at once.
constexpr auto endsKept = 5min;

int failStart(const std::string &sentence) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return 1;
}

} // namespace

Application::Application(std::optional<std::string> environmentKey, Clock &clock)
    : m_environmentKey(std::move(environmentKey)), m_clock(clock) {
    QApplication::setQuitOnLastWindowClosed(false);
}

Application::~Application() {
    // The object answers no more before what it serves goes.
    m_bus.reset();
}

Task<int> Application::run(std::stop_token stop) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    m_bus = std::make_unique<BusObject>(bus, runningExecutable());
    bus.registerVirtualObject(QString::fromLatin1(applicationBus::path), m_bus.get());
    m_instance = std::make_unique<SingleInstance>(bus, runningExecutable(), m_clock);
    if (co_await m_instance->claim(stop) != SingleInstance::Claim::granted) {
        // Without a bus the other one cannot be told to show itself.
        if (!bus.isConnected())
            co_return failStart("Vantrell Capture is running already");
        co_return 0;
    }

    m_settings = std::make_unique<CaptureSettings>();
    m_desktop = loadDesktopServices();
    InstallLocation location(InstallLocation::Options::fromEnvironment(m_desktop.screenAccess->systemName()));
    if (co_await location.offerMoveIfNeeded(vantrell::ask, stop))
        co_return 0;
    m_platform = loadPlatform(m_clock);
    auto session = ServiceSession::create(m_environmentKey);
    if (!session)
        co_return failStart(session.error());
    m_session = std::move(*session);
    co_await openUploads(stop);
    if (!m_uploads || m_isAskedToEnd)
        co_return 0;
    m_ui = std::make_unique<PanelInterface>(
        PanelInterface::Services{m_platform, m_desktop, *m_settings, m_uploads->shelf(), m_clock});
    m_delegate = std::make_unique<AppDelegate>(AppDelegate::Services{
        m_platform, m_desktop, *m_ui, *m_settings, *m_session, *m_uploads, m_clock, location.needsMove()});
    m_delegate->onTerminate = [this] { m_ended.resolve(true); };
    ShelfPanel &shelf = m_ui->shelfPanel();
    shelf.projects = [this] { return m_delegate->account().projects(); };
    shelf.onProjectChosen = [this](const QUuid &id, const std::string &project) {
        if (const ShelfItem *const item = m_uploads->shelf().find(id))
            m_delegate->handover().retryWith(*item, project);
    };
    shelf.pageOf = [this](const ShelfItem &item) { return m_delegate->editorPage(item); };
    m_bus->serve(*m_delegate, m_platform, *m_ui);
    m_delegate->completeLaunch();
    m_bus->answerEarlyCalls();
    m_crashNotice = std::make_unique<CrashNotice>(*m_settings, *m_desktop.files);
    m_scope.start(m_crashNotice.get(), &CrashNotice::tellIfNew, Ask(vantrell::ask));
    co_await m_ended.wait(stop);
    co_await m_uploads->written(stop);
    co_return 0;
}

Task<> Application::openUploads(std::stop_token stop) {
    bool isTold = false;
    for (;;) {
        auto uploads = UploadRun::create(*m_session, m_clock);
        if (uploads) {
            m_uploads = std::move(*uploads);
            m_uploads->forgetEndsAfter(endsKept);
            co_return;
        }
        // A command is uploading; it hands its uploads over when it sees this application.
        if (!std::exchange(isTold, true))
            qCInfo(logApp, "waiting for the upload journal: %s", uploads.error().c_str());
        if (!co_await m_clock.sleep(journalPoll, stop) || m_isAskedToEnd)
            co_return;
    }
}

void Application::terminate() {
    m_isAskedToEnd = true;
    if (m_delegate)
        m_delegate->terminate();
}

} // namespace vantrell

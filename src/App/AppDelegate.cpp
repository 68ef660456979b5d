// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/AppDelegate.h"

#include "Analytics/Analytics.h"
#include "App/SingleInstance.h"
#include "Panels/Sentence.h"
#include "Session/CapturePruning.h"
#include "Support/BlockingWork.h"
#include "Support/DetachedProgram.h"
#include "Support/FilePath.h"
#include "Support/Log.h"

#include <QOperatingSystemVersion>
#include <QSysInfo>

#include <algorithm>

namespace vantrell {

namespace {

std::string osVersion() {
    // "12" on Debian, "22.04" on Ubuntu; a rolling release has none.
    return QSysInfo::productVersion().toStdString();
}

const char *titleOf(HotKeys::Action action) {
    switch (action) {
    case HotKeys::Action::captureArea:
        return "Capture Area";
    case HotKeys::Action::captureWindow:
        return "Capture Window";
    case HotKeys::Action::toggleRecording:
        return "Start Recording…";
    }
    return "";
}

bool isUploading(const ShelfItem &item) {
    return std::holds_alternative<ShelfItem::Uploading>(item.status);
}

Ask askThrough(UserInterface &ui) {
    return [&ui](std::string message, std::string informative, std::vector<std::string> buttons,
                 std::stop_token stop) {
        return ui.ask(std::move(message), std::move(informative), std::move(buttons), stop);
    };
}

/// What is on its way already, as the program found it.
std::set<std::filesystem::path> filesIn(const UploadJournal &journal) {
    std::set<std::filesystem::path> files;
    for (const UploadJournalEntry &entry : journal.entries())
        files.insert(entry.masterFile());
    return files;
}

} // namespace

AppDelegate::AppDelegate(Services services)
    : m_services(services), m_account(services.session, services.settings, services.clock),
      m_handover({services.uploads, m_account, services.settings, services.clock}),
      m_recording({services.platform, *services.desktop.session, services.ui, services.settings, m_account,
                   m_handover, services.uploads.shelf(), services.clock}),
      m_waitingNote(*services.desktop.notifications, services.clock, [this] { m_recording.cancelStart(); }),
      m_hotKeys(*services.desktop.hotKeys),
      m_screenPermission(*services.desktop.screenAccess, services.settings.store(), services.clock,
                         askThrough(services.ui), {[this] { return startAnew(runningExecutable()); }, {}}),
      m_updater(updaterOptions(), services.session.http(), services.clock, askThrough(services.ui)) {}

AppDelegate::~AppDelegate() {
    Analytics::shared().stop();
    m_services.uploads.onEnd = nullptr;
}

Updater::Options AppDelegate::updaterOptions() {
    Updater::Options options = Updater::Options::builtIn();
    options.isBusy = [this] {
        return m_recording.isRecording() || m_recording.isStartingRecording() ||
               m_recording.isFinalizingRecording();
    };
    options.relaunch = [this](const std::filesystem::path &program) { return startAnew(program); };
    return options;
}

bool AppDelegate::startAnew(const std::filesystem::path &program) {
    if (!startDetached(program.string()))
        return false;
    // What is being recorded is saved first; and an alert that waits for its answer would refuse an ordinary
    // end.
    terminate();
    return true;
}

void AppDelegate::completeLaunch() {
    UploadRun &uploads = m_services.uploads;
    uploads.journal().reconcileAgainstDisk();
    const std::set<std::filesystem::path> pending = filesIn(uploads.journal());
    m_scope.start(
        [](AppDelegate *, std::stop_token stop) -> Task<> {
            co_await runBlocking([] { pruneCaptures({}); }, stop);
        },
        this);
    m_updater.start();
    refreshStatus();
    wire();
    installRecordingLifecycleObservers();
    // Without the key, which the keyring has yet to give out, the first of them would fail at once.
    uploads.manager().hold();
    uploads.manager().restoreFromJournal();
    m_scope.start(
        [](AppDelegate *self, std::stop_token stop) -> Task<> {
            co_await self->m_account.pairing().certain(stop);
            if (!stop.stop_requested())
                self->m_services.uploads.manager().release();
        },
        this);
    m_handover.offerRecovered(pending);
    rebuildMenu();
    m_account.fetchProjectList(true);
    m_account.refreshLimits();
    if (m_services.desktop.screenAccess->isGranted())
        showCaptureUI(std::nullopt);
    else
        m_permissionScope.start(&m_screenPermission, &ScreenPermission::primeScreenPermission,
                                m_services.needsMove);
    Analytics::shared().start(m_services.session.api());
    Analytics::shared().track("cap.app_launched", {{"version", VANTRELL_VERSION}, {"os", osVersion()}});
    qCInfo(logApp, "launched");
}

void AppDelegate::wire() {
    UserInterface &ui = m_services.ui;
    ui.onMenu = [this](const MenuEntry &entry) { menuAction(entry); };
    ui.onToolWanted = [this](ToolMode tool) { showCaptureUI(tool); };
    ui.onStatusClick = [this] { stopRecording(); };
    ui.onStatusOpen = [this] { showCaptureUI(std::nullopt); };
    ui.onTrayChange = [this] {
        noteWithoutTray();
        m_observers.notify();
    };
    ui.panelMenu = [this] { return statusMenu(menuState()); };

    ShelfStore &shelf = m_services.uploads.shelf();
    shelf.onRetry = [this](const ShelfItem &item) { m_handover.retry(item); };
    shelf.onOpen = [this](const ShelfItem &item) { openInVantrell(item); };
    shelf.onItemDone = [this](const ShelfItem &item) {
        if (m_services.settings.openAfterUpload())
            openInVantrell(item);
    };
    shelf.onVisibilityChange = [this](bool visible) { m_services.ui.showShelf(visible); };
    m_services.uploads.manager().onProjectGone = [this](const std::string &projectId) {
        m_account.handleProjectGone(projectId);
    };
    m_recording.onChange = [this] { recordingChanged(); };
    m_recording.stopKeys = [this] { return m_hotKeys.inForce(HotKeys::Action::toggleRecording); };
    m_recording.onStartCancelled = [this] { showCaptureUI(std::nullopt); };
    m_updater.onUpdateFound = [this](const std::string &version) { setAvailableUpdate(version); };
    m_updater.onSessionFinished = [this] { setAvailableUpdate(std::nullopt); };
    m_updater.onChange = [this] { rebuildMenu(); };

    m_observations.push_back(shelf.observe([this] { shelfChanged(); }));
    m_observations.push_back(m_account.observe([this] {
        m_services.uploads.setVideoByteCap(m_account.maxVideoUploadBytes());
        publishToBar();
        rebuildMenu();
    }));
    m_observations.push_back(m_services.settings.observe([this] {
        publishToBar();
        rebuildMenu();
    }));
    m_hotKeys.onChange([this] { rebuildMenu(); });
    m_hotKeys.install([this](HotKeys::Action action) {
        switch (action) {
        case HotKeys::Action::captureArea:
            return showCaptureUI(ToolMode::area);
        case HotKeys::Action::captureWindow:
            return showCaptureUI(ToolMode::window);
        case HotKeys::Action::toggleRecording:
            return toggleRecording();
        }
    });
}

void AppDelegate::installRecordingLifecycleObservers() {
    m_services.desktop.session->start([this](SessionMonitor::Event event) { sessionEvent(event); });
}

void AppDelegate::sessionEvent(SessionMonitor::Event event) {
    using Event = SessionMonitor::Event;
    if (event == Event::willSleep || event == Event::sessionResigned || event == Event::willShutDown) {
        m_recording.cancelStart();
        if (m_recording.isRecording()) {
            qCInfo(logCapture, "sleep/session resign: stopping recording");
            m_recording.stopRecording();
        }
    }
}

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate() {
    stopRecording();
    if (!m_recording.isFinalizingRecording())
        return TerminateReply::now;
    m_pendingTerminateReply = true;
    return TerminateReply::later;
}

void AppDelegate::terminate() {
    if (applicationShouldTerminate() == TerminateReply::now && onTerminate)
        onTerminate();
}

void AppDelegate::replyToTerminate() {
    if (m_recording.isRecording() || m_recording.isFinalizingRecording())
        return;
    if (std::exchange(m_pendingTerminateReply, false) && onTerminate)
        onTerminate();
}

void AppDelegate::recordingChanged() {
    if (m_recording.isRecording())
        m_services.ui.hideCaptureBar();
    rebuildMenu();
    noteWithoutTray();
    m_waitingNote.follow(m_recording.isAskingDesktop());
    replyToTerminate();
}

void AppDelegate::toggleRecording() {
    if (m_recording.isRecording())
        m_recording.stopRecording();
    else
        showCaptureUI(ToolMode::area);
}

void AppDelegate::startRecording(SelectionOutcome outcome) {
    leaveSelection();
    m_recording.startRecording(std::move(outcome), false);
}

void AppDelegate::stopRecording() {
    m_recording.cancelStart();
    m_recording.stopRecording();
}

void AppDelegate::requestPermission() {
    // One question at a time, and the newest lies in front.
    m_permissionScope.cancel();
    m_permissionScope.start(&m_screenPermission, &ScreenPermission::menuRequestPermission);
}

void AppDelegate::showCaptureUI(std::optional<ToolMode> tool) {
    // Who starts the application again looks for what stops it.
    if (m_recording.isRecording() && !tool)
        noteWithoutTray(true);
    if (m_recording.isRecording() || m_recording.isStartingRecording())
        return;
    if (tool && !m_services.desktop.screenAccess->isGranted()) {
        requestPermission();
        return;
    }
    if (m_captureBarState && tool) {
        m_captureBarState->tool = *tool;
    } else if (!m_captureBarState) {
        m_captureBarState = makeBarState(tool.value_or(ToolMode::area));
    }
    if (tool)
        armOverlay(*tool);
    m_services.ui.showCaptureBar(m_captureBarState);
}

void AppDelegate::armOverlay(ToolMode tool) {
    if (m_services.ui.isSelecting())
        m_services.ui.setSelectionTool(tool);
    else
        m_services.ui.beginSelection(
            tool, [this](SelectionOutcome outcome, ToolMode used) { picked(std::move(outcome), used); });
}

void AppDelegate::picked(SelectionOutcome outcome, ToolMode tool) {
    if (m_captureBarState)
        m_captureBarState->tool = tool;
    if (outcome.isCancelled())
        return;
    m_services.ui.hideCaptureBar();
    m_captureBarState.reset();
    const bool record = std::visit(
        [](const auto &picked) {
            if constexpr (requires { picked.record; })
                return picked.record;
            else
                return false;
        },
        outcome.picked);
    if (record)
        m_recording.startRecording(std::move(outcome), false);
    else
        m_recording.finishScreenshot(std::move(outcome));
}

std::shared_ptr<ToolBarState> AppDelegate::makeBarState(ToolMode tool) {
    const auto state = std::make_shared<ToolBarState>();
    CaptureSettings &settings = m_services.settings;
    state->tool = tool;
    state->onToolChange = [this](ToolMode chosen) { showCaptureUI(chosen); };
    state->onInstallUpdate = [this] { m_updater.checkForUpdates(); };
    state->onDeferUpdate = [this] { m_updateDeferred = true; };
    state->onMicChange = [&settings](bool enabled, std::optional<std::string> device) {
        settings.setMic(enabled, device);
    };
    state->onCameraChange = [&settings](bool enabled, std::optional<std::string> device) {
        settings.setCamera(enabled, device);
    };
    state->onSystemAudioChange = [&settings](bool enabled) { settings.setSystemAudioEnabled(enabled); };
    state->onCountdownChange = [&settings](int seconds) { settings.setCountdownSeconds(seconds); };
    state->onOpenAfterUploadChange = [&settings](bool opens) { settings.setOpenAfterUpload(opens); };
    state->onSeparateCursorChange = [&settings](bool separate) { settings.setSeparateCursor(separate); };
    state->onAutoCameraChange = [&settings](bool automatic) { settings.setAutoCamera(automatic); };
    state->onSendsUsageChange = [&settings](bool sends) {
        settings.setUsageEventsOff(!sends);
        Analytics::shared().setOff(!sends);
    };
    state->onProjectChange = [this](std::optional<std::string> id) {
        m_services.settings.setSelectedProjectId(id);
        rebuildMenu();
    };
    state->onConnect = [this] { menuAction({.action = MenuAction::pair}); };
    state->onClose = [this] {
        if (m_services.ui.isSelecting())
            return leaveSelection();
        m_services.ui.hideCaptureBar();
        // Not at once: the bar that calls this still uses it.
        m_scope.start(
            [](std::shared_ptr<ToolBarState>, Clock *clock, std::stop_token stop) -> Task<> {
                co_await clock->sleep(std::chrono::milliseconds(0), stop);
            },
            std::exchange(m_captureBarState, nullptr), &m_services.clock);
    };
    m_captureBarState = state;
    publishToBar();
    return state;
}

void AppDelegate::publishToBar() {
    if (!m_captureBarState)
        return;
    ToolBarState &state = *m_captureBarState;
    const CaptureSettings &settings = m_services.settings;
    state.micEnabled = settings.micEnabled();
    state.micDeviceId = settings.micDeviceId();
    state.cameraEnabled = settings.cameraEnabled();
    state.cameraDeviceId = settings.cameraDeviceId();
    state.systemAudioEnabled = settings.systemAudioEnabled();
    state.countdownSeconds = settings.countdownSeconds();
    state.openAfterUpload = settings.openAfterUpload();
    state.separateCursor = settings.separateCursor();
    state.autoCamera = settings.autoCamera();
    state.sendsUsage = !Analytics::shared().isOff();
    state.usageForbidden = Analytics::isForbidden();
    state.projects = m_account.projects();
    state.selectedProjectId = settings.selectedProjectId();
    state.isConnected = m_account.isPaired();
    state.availableUpdateVersion = m_availableUpdateVersion;
    state.updateDeferred = m_updateDeferred;
}

StatusMenuState AppDelegate::menuState() const {
    StatusMenuState state;
    state.uploadingCount = m_uploadingCount;
    state.hasScreenAccess = m_services.desktop.screenAccess->isGranted();
    state.isRecording = m_recording.isRecording();
    state.micEnabled = m_services.settings.micEnabled();
    state.pairing = m_account.pairingState();
    state.projects = m_account.projects();
    state.selectedProjectId = m_services.settings.selectedProjectId();
    state.availableUpdateVersion = m_availableUpdateVersion;
    state.canCheckForUpdates = m_updater.canCheckForUpdates();
    state.launchesAtLogin = m_services.desktop.loginItem->isEnabled();
    using Action = HotKeys::Action;
    const std::optional<PlatformError> noKeys = m_hotKeys.problem();
    for (const auto &[action, key] : {std::pair(Action::captureArea, &state.keys.area),
                                      std::pair(Action::captureWindow, &state.keys.window),
                                      std::pair(Action::toggleRecording, &state.keys.toggle)})
        *key = noKeys ? std::string() : m_hotKeys.assigned(action).value_or(*key);
    if (noKeys)
        state.takenHotKeys.emplace_back("Hot keys are bound in the desktop's settings");
    for (const auto &[action, error] : m_hotKeys.failedHotKeys())
        state.takenHotKeys.push_back(std::string("Another program holds the keys of ") + titleOf(action));
    return state;
}

void AppDelegate::rebuildMenu() {
    refreshStatus();
    m_observers.notify();
}

void AppDelegate::refreshStatus() {
    using Icon = UserInterface::StatusIcon;
    const StatusMenuState state = menuState();
    if (state.isRecording)
        m_services.ui.setStatus({Icon::recording, "Vantrell Capture, recording", recordingMenu(state)});
    else if (m_uploadingCount >= 1)
        m_services.ui.setStatus({Icon::uploading, "Vantrell Capture, uploading", statusMenu(state)});
    else
        m_services.ui.setStatus({Icon::logo, "Vantrell Capture", statusMenu(state)});
}

void AppDelegate::menuAction(const MenuEntry &entry) {
    CaptureSettings &settings = m_services.settings;
    switch (entry.action) {
    case MenuAction::none:
        break;
    case MenuAction::captureArea:
        return showCaptureUI(ToolMode::area);
    case MenuAction::captureWindow:
        return showCaptureUI(ToolMode::window);
    case MenuAction::captureScreen:
        return showCaptureUI(ToolMode::screen);
    case MenuAction::toggleRecording:
        return toggleRecording();
    case MenuAction::toggleMic:
        settings.setMicEnabled(!settings.micEnabled());
        publishToBar();
        break;
    case MenuAction::requestPermission:
        requestPermission();
        break;
    case MenuAction::selectProject:
        settings.setSelectedProjectId(entry.payload.empty() ? std::nullopt : std::optional(entry.payload));
        publishToBar();
        break;
    case MenuAction::refreshProjects:
        m_account.fetchProjectList(true);
        m_account.refreshLimits();
        break;
    case MenuAction::pair:
        leaveSelection();
        m_scope.start(this, &AppDelegate::pair);
        break;
    case MenuAction::reopenApproval:
        leaveSelection();
        openPage(m_account.pairingState().approvalURL);
        break;
    case MenuAction::cancelPairing:
    case MenuAction::unpair:
        m_account.unpair();
        break;
    case MenuAction::openVantrell:
        leaveSelection();
        openPage(m_services.session.url().text());
        break;
    case MenuAction::checkForUpdates:
        m_updater.checkForUpdates();
        break;
    case MenuAction::toggleLaunchAtLogin: {
        LoginItem &item = *m_services.desktop.loginItem;
        if (const auto toggled = item.setEnabled(!item.isEnabled()); !toggled)
            qCCritical(logApp, "launch at login toggle failed: %s", toggled.error().description().c_str());
        break;
    }
    case MenuAction::quit:
        return terminate();
    }
    rebuildMenu();
}

Task<> AppDelegate::pair(std::stop_token stop) {
    const auto page = co_await m_account.pairing().begin(stop);
    if (stop.stop_requested())
        co_return;
    if (page)
        openPage(*page);
    else
        co_await m_services.ui.ask("Could not connect to Vantrell", page.error().description(), {"OK"}, stop);
    rebuildMenu();
}

void AppDelegate::leaveSelection() {
    if (m_services.ui.isSelecting())
        m_services.ui.finishSelection({});
}

void AppDelegate::openPage(const std::string &url) {
    if (!url.empty() && !m_services.desktop.files->openPage(url))
        qCCritical(logApp, "no program opens pages");
}

std::string AppDelegate::editorPage(const ShelfItem &item) const {
    const auto *done = std::get_if<ShelfItem::Done>(&item.status);
    return done ? m_services.session.url().appending("editor/" + done->projectId) : std::string();
}

void AppDelegate::openInVantrell(const ShelfItem &item) {
    openPage(editorPage(item));
}

void AppDelegate::shelfChanged() {
    const std::vector<ShelfItem> &items = m_services.uploads.shelf().items();
    const int uploading = int(std::ranges::count_if(items, isUploading));
    if (uploading != m_uploadingCount) {
        m_uploadingCount = uploading;
        rebuildMenu();
    }
    noteFailedUploads();
}

void AppDelegate::noteFailedUploads() {
    for (const ShelfItem &item : m_services.uploads.shelf().items()) {
        const auto *failed = std::get_if<ShelfItem::Failed>(&item.status);
        if (!failed) {
            m_toldFailures.erase(item.id);
            continue;
        }
        // A card that can be seen says it itself.
        if (!m_toldFailures.insert(item.id).second || m_services.ui.isShelfVisible())
            continue;
        const QUuid id = item.id;
        m_services.desktop.notifications->show(
            {.title = inUsersLanguage(item.title()),
             .body = inUsersLanguage(failed->message),
             .actions = {{"retry", inUsersLanguage(std::string("Retry"))}}},
            [this, id](const std::string &) { m_services.uploads.shelf().retry(id); });
    }
}

void AppDelegate::noteWithoutTray(bool isAskedFor) {
    Notifier &notifier = *m_services.desktop.notifications;
    const bool isRecording = m_recording.isRecording();
    const bool isSeen = m_services.ui.isHUDVisible();
    const bool isWanted = isRecording && (!isSeen || !m_services.ui.trayHost());
    const bool isPaused = m_recording.isPaused();
    if (std::exchange(m_notedPause, isPaused) != isPaused || !isWanted || isAskedFor) {
        if (const auto shown = std::exchange(m_recordingNotification, 0))
            notifier.withdraw(shown);
    }
    if (!isWanted || m_recordingNotification)
        return;
    // What comes up over the windows would be in the picture that the panels keep out of. GNOME's list has no
    // buttons: there a click has to do.
    m_recordingNotification =
        notifier.show({.title = inUsersLanguage(std::string("Vantrell Capture, recording")),
                       .body = inUsersLanguage(std::string("Click here to stop")),
                       .actions = {{"default", inUsersLanguage(std::string("Stop Recording"))},
                                   {"stop", inUsersLanguage(std::string("Stop Recording"))},
                                   {"pause", inUsersLanguage(std::string(isPaused ? "Resume" : "Pause"))}},
                       .stays = true,
                       .isQuiet = !isSeen && !isAskedFor},
                      [this](const std::string &key) {
                          if (key == "pause")
                              m_recording.togglePause();
                          else
                              m_recording.stopRecording();
                      });
}

void AppDelegate::setAvailableUpdate(std::optional<std::string> version) {
    if (version == m_availableUpdateVersion)
        return;
    m_availableUpdateVersion = std::move(version);
    if (m_availableUpdateVersion)
        m_updateDeferred = false;
    publishToBar();
    rebuildMenu();
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/CaptureHandover.h"
#include "App/HotKeys.h"
#include "App/RecordingFlow.h"
#include "App/ScreenPermission.h"
#include "App/ServiceAccount.h"
#include "App/StatusMenu.h"
#include "App/Updater.h"
#include "App/UserInterface.h"
#include "App/WaitingNote.h"
#include "Platform/DesktopServices.h"
#include "Platform/Platform.h"
#include "Session/CaptureSettings.h"
#include "Session/ServiceSession.h"
#include "Session/UploadRun.h"
#include "Support/Clock.h"
#include "Support/TaskScope.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// The application's one controller: owns what lives as long as the process and is the only place where it is
/// wired together. Main thread.
class AppDelegate {
public:
    /// All outlive the controller.
    struct Services {
        Platform &platform;

        DesktopServices &desktop;
        UserInterface &ui;
        CaptureSettings &settings;
        ServiceSession &session;
        UploadRun &uploads;
        Clock &clock;
        /// The program lies where it goes away; a permission for that place would be lost.
        bool needsMove = false;
    };
    enum class TerminateReply { now = 1, later };

    explicit AppDelegate(Services services);
    ~AppDelegate();
    AppDelegate(const AppDelegate &) = delete;
    AppDelegate &operator=(const AppDelegate &) = delete;

    /// Everything after the process is the only one and stays where it is.
    void completeLaunch();
    /// Asked for again while it runs: shows the capture bar.
    void applicationShouldHandleReopen() { showCaptureUI(std::nullopt); }
    /// With `later` a recording is saved first, and `onTerminate` called when it is safe.
    TerminateReply applicationShouldTerminate();
    /// The process may end now.
    std::function<void()> onTerminate;

    /// The capture bar with that tool armed; without one it is the bar alone. Ignored while recording.
    void showCaptureUI(std::optional<ToolMode> tool);
    /// Starts to record that, as if it had been picked.
    void startRecording(SelectionOutcome outcome);
    /// What the hot key and the menu do: stops, or shows the area tool.
    void toggleRecording();
    void togglePause() { m_recording.togglePause(); }
    /// A start that is under way ends too.
    void stopRecording();
    void terminate();

    RecordingFlow &recording() { return m_recording; }
    ServiceAccount &account() { return m_account; }
    CaptureHandover &handover() { return m_handover; }
    const HotKeys &hotKeys() const { return m_hotKeys; }
    UploadRun &uploads() { return m_services.uploads; }
    int uploadingCount() const { return m_uploadingCount; }
    /// The address of a finished capture's page.
    std::string editorPage(const ShelfItem &item) const;

    /// Told of every change that `status` of the command line would show.
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

private:
    Updater::Options updaterOptions();
    void wire();
    void installRecordingLifecycleObservers();
    void sessionEvent(SessionMonitor::Event event);
    void menuAction(const MenuEntry &entry);
    void rebuildMenu();
    void refreshStatus();
    StatusMenuState menuState() const;
    std::shared_ptr<ToolBarState> makeBarState(ToolMode tool);
    void publishToBar();
    void armOverlay(ToolMode tool);
    void picked(SelectionOutcome outcome, ToolMode tool);
    void shelfChanged();
    void recordingChanged();
    void replyToTerminate();
    void noteWithoutTray(bool isAskedFor = false);
    void noteFailedUploads();
    void openInVantrell(const ShelfItem &item);
    void requestPermission();
    /// Ends this process for one of that program; false when it does not start.
    bool startAnew(const std::filesystem::path &program);
    /// What opens next, a browser or the desktop's question for a password, would lie below the overlay.
    void leaveSelection();
    void openPage(const std::string &url);
    Task<> pair(std::stop_token stop);
    void setAvailableUpdate(std::optional<std::string> version);

    const Services m_services;
    Observers m_observers;
    ServiceAccount m_account;
    CaptureHandover m_handover;
    RecordingFlow m_recording;
    WaitingNote m_waitingNote;
    HotKeys m_hotKeys;
    ScreenPermission m_screenPermission;
    Updater m_updater;
    std::shared_ptr<ToolBarState> m_captureBarState;
    std::optional<std::string> m_availableUpdateVersion;
    bool m_updateDeferred = false;
    int m_uploadingCount = 0;
    bool m_pendingTerminateReply = false;
    /// Cards whose failure was told already.
    std::set<QUuid> m_toldFailures;
    Notifier::Id m_recordingNotification = 0;
    /// It was shown as of a paused recording.
    bool m_notedPause = false;
    std::vector<Observation> m_observations;
    TaskScope m_permissionScope;
    TaskScope m_scope;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TargetProject.h"
#include "Overlay/ToolMode.h"
#include "Support/Published.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What the capture bar shows and changes, while it is shown. Lasting values are the settings': the callbacks
/// write each change there. Main thread.
class ToolBarState {
public:
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

private:
    Observers m_observers;

public:
    Published<ToolMode> tool{m_observers, ToolMode::area};
    Published<bool> micEnabled{m_observers};
    Published<std::optional<std::string>> micDeviceId{m_observers};
    Published<bool> cameraEnabled{m_observers};
    Published<std::optional<std::string>> cameraDeviceId{m_observers};
    Published<bool> systemAudioEnabled{m_observers};
    /// 0, 3 or 5; 0 is no countdown.
    Published<int> countdownSeconds{m_observers};
    Published<bool> openAfterUpload{m_observers};
    Published<bool> separateCursor{m_observers};
    Published<bool> autoCamera{m_observers};
    /// Usage events go to the service.
    Published<bool> sendsUsage{m_observers};
    /// The environment forbids them, whatever the user says here.
    Published<bool> usageForbidden{m_observers};
    Published<std::vector<TargetProject>> projects{m_observers};
    Published<std::optional<std::string>> selectedProjectId{m_observers};
    /// The account is connected. When it is not, the bar offers to connect instead of projects.
    Published<bool> isConnected{m_observers};
    /// The screen behind the bar is light.
    Published<bool> onLightBackdrop{m_observers};
    Published<std::optional<std::string>> availableUpdateVersion{m_observers};
    Published<bool> updateDeferred{m_observers};

    // Called by the bar after it has changed the property. Unset ones are skipped.

    std::function<void(ToolMode)> onToolChange;
    std::function<void()> onInstallUpdate;
    std::function<void()> onDeferUpdate;
    std::function<void(bool, std::optional<std::string>)> onMicChange;
    std::function<void(bool, std::optional<std::string>)> onCameraChange;
    std::function<void(bool)> onSystemAudioChange;
    std::function<void(int)> onCountdownChange;
    std::function<void(bool)> onOpenAfterUploadChange;
    std::function<void(bool)> onSeparateCursorChange;
    std::function<void(bool)> onAutoCameraChange;
    std::function<void(bool)> onSendsUsageChange;
    std::function<void(std::optional<std::string>)> onProjectChange;
    std::function<void()> onConnect;
    std::function<void()> onClose;
};

} // namespace vantrell

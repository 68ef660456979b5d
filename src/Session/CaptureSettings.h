// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"
#include "Support/Settings.h"
#include "Support/TaskScope.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

class QFileSystemWatcher;

namespace vantrell {

/// The options that the user has set, as they lie in the settings file. A change by another process, a
/// command or an editor, is seen at once. Main thread.
class CaptureSettings {
public:
    /// A file that cannot be read is kept beside as "settings.ini.unreadable", and the defaults rule.
    explicit CaptureSettings(const std::filesystem::path &file = Settings::defaultFile());
    ~CaptureSettings();
    CaptureSettings(const CaptureSettings &) = delete;
    CaptureSettings &operator=(const CaptureSettings &) = delete;

    /// Where everything else that is remembered lies.
    Settings &store() { return m_settings; }

    /// Reads now what was written a moment ago, of which no word has come yet.
    void reload() { m_settings.reload(); }
    /// Told when the file has changed, whoever did it.
    [[nodiscard]] Observation observe(std::function<void()> changed) {
        return m_observers.observe(std::move(changed));
    }

    bool micEnabled() const { return m_settings.boolean("micEnabled"); }
    /// Absent: the default device.
    std::optional<std::string> micDeviceId() const { return text("micDeviceId"); }
    bool cameraEnabled() const { return m_settings.boolean("cameraEnabled"); }
    std::optional<std::string> cameraDeviceId() const { return text("cameraDeviceId"); }
    bool systemAudioEnabled() const { return m_settings.boolean("systemAudioEnabled"); }
    /// 0: no countdown. At most a minute, whatever is stored.
    int countdownSeconds() const;
    bool openAfterUpload() const { return m_settings.boolean("openAfterUpload"); }
    bool separateCursor() const { return m_settings.boolean("separateCursor"); }
    bool autoCamera() const { return m_settings.boolean("autoCamera"); }
    std::optional<std::string> selectedProjectId() const { return text("selectedProjectId"); }
    bool usageEventsOff() const { return m_settings.boolean("usageEventsOff"); }
    bool screenPermissionPrimed() const { return m_settings.boolean("screenPermissionPrimed"); }

    void setMic(bool enabled, const std::optional<std::string> &deviceId);
    void setCamera(bool enabled, const std::optional<std::string> &deviceId);
    void setMicEnabled(bool enabled) { m_settings.setBoolean("micEnabled", enabled); }
    void setSystemAudioEnabled(bool enabled) { m_settings.setBoolean("systemAudioEnabled", enabled); }
    void setCountdownSeconds(int seconds) { m_settings.setNumber("countdownSeconds", seconds); }
    void setOpenAfterUpload(bool opens) { m_settings.setBoolean("openAfterUpload", opens); }
    void setSeparateCursor(bool separate) { m_settings.setBoolean("separateCursor", separate); }
    void setAutoCamera(bool automatic) { m_settings.setBoolean("autoCamera", automatic); }
    void setUsageEventsOff(bool off) { m_settings.setBoolean("usageEventsOff", off); }
    /// None removes the choice.
    void setSelectedProjectId(const std::optional<std::string> &id) {
        m_settings.setString("selectedProjectId", id);
    }
    void setScreenPermissionPrimed() { m_settings.setBoolean("screenPermissionPrimed", true); }

private:
    /// An empty text is none: an editor may leave one.
    std::optional<std::string> text(const std::string &key) const;
    void watch();
    void fileChanged();

    const std::filesystem::path m_file;
    Settings m_settings;
    Observers m_observers;
    std::unique_ptr<QFileSystemWatcher> m_watcher;
};

} // namespace vantrell

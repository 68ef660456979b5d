// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureSettings.h"

#include "Support/Log.h"

#include <QFileSystemWatcher>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr int longestCountdown = 60;

/// Returns the file, out of whose way an unreadable one was moved.
std::filesystem::path madeReadable(const std::filesystem::path &file) {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    if (Settings::isReadable(file))
        return file;
    std::filesystem::path kept = file;
    kept += ".unreadable";
    std::filesystem::rename(file, kept, ignored);
    qCCritical(logApp, "the settings cannot be read; they are kept as settings.ini.unreadable");
    return file;
}

} // namespace

CaptureSettings::CaptureSettings(const std::filesystem::path &file)
    : m_file(madeReadable(file)), m_settings(m_file), m_watcher(std::make_unique<QFileSystemWatcher>()) {
    m_settings.registerDefault("separateCursor", true);
    m_settings.registerDefault("autoCamera", true);
    // The folder too: whoever saves by renaming takes the watched file away.
    m_watcher->addPath(QString::fromStdString(m_file.parent_path().string()));
    watch();
    const auto changed = [this](const QString &) { fileChanged(); };
    QObject::connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, m_watcher.get(), changed);
    QObject::connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, m_watcher.get(), changed);
}

CaptureSettings::~CaptureSettings() = default;

int CaptureSettings::countdownSeconds() const {
    const double stored = m_settings.number("countdownSeconds").value_or(0);
    return std::isfinite(stored) ? int(std::clamp(stored, 0.0, double(longestCountdown))) : 0;
}

void CaptureSettings::setMic(bool enabled, const std::optional<std::string> &deviceId) {
    m_settings.setBoolean("micEnabled", enabled);
    m_settings.setString("micDeviceId", deviceId);
}

void CaptureSettings::setCamera(bool enabled, const std::optional<std::string> &deviceId) {
    m_settings.setBoolean("cameraEnabled", enabled);
    m_settings.setString("cameraDeviceId", deviceId);
}

std::optional<std::string> CaptureSettings::text(const std::string &key) const {
    auto stored = m_settings.string(key);
    return stored && stored->empty() ? std::nullopt : std::move(stored);
}

void CaptureSettings::watch() {
    const QString file = QString::fromStdString(m_file.string());
    std::error_code unknown;
    if (!m_watcher->files().contains(file) && std::filesystem::exists(m_file, unknown))
        m_watcher->addPath(file);
}

void CaptureSettings::fileChanged() {
    watch();
    m_settings.reload();
    m_observers.notify();
}

} // namespace vantrell

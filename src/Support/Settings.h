// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <optional>
#include <string>

class QSettings;
class QVariant;

#include <memory>

namespace vantrell {

/// The persisted settings: flat keys in one file. Main thread. Values are written through at once.
class Settings {
public:
    /// Opens (or later creates) the file.
    explicit Settings(const std::filesystem::path &file);
    ~Settings();
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;

    /// The user's own file in the desktop's configuration folder.
    static std::filesystem::path defaultFile();

    /// There is no such file yet, or it is one of settings.
    static bool isReadable(const std::filesystem::path &file);

    /// Takes over what others have written to the file.
    void reload();

    /// What a key reads as while it is not stored. Booleans without one read false.
    void registerDefault(const std::string &key, bool value);

    bool boolean(const std::string &key) const;
    std::optional<double> number(const std::string &key) const;
    std::optional<std::string> string(const std::string &key) const;

    void setBoolean(const std::string &key, bool value);
    void setNumber(const std::string &key, double value);
    /// None removes the key.
    void setString(const std::string &key, const std::optional<std::string> &value);
    void remove(const std::string &key);

private:
    void store(const std::string &key, const QVariant &value);

    std::unique_ptr<QSettings> m_settings;
    struct Defaults;
    std::unique_ptr<Defaults> m_defaults;
};

} // namespace vantrell

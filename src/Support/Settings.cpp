// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/Settings.h"

#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QStringDecoder>

#include <map>

namespace vantrell {

struct Settings::Defaults {
    std::map<std::string, bool> booleans;
};

Settings::Settings(const std::filesystem::path &file)
    : m_settings(std::make_unique<QSettings>(QString::fromStdString(file.string()), QSettings::IniFormat)),
      m_defaults(std::make_unique<Defaults>()) {}

Settings::~Settings() = default;

std::filesystem::path Settings::defaultFile() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return std::filesystem::path(folder.toStdString()) / "VantrellCapture" / "settings.ini";
}

bool Settings::isReadable(const std::filesystem::path &file) {
    QFile text(QString::fromStdString(file.string()));
    if (text.open(QFile::ReadOnly)) {
        // The library takes whatever bytes there are for keys and values.
        const QByteArray bytes = text.readAll();
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = decoder(bytes);
        if (decoder.hasError() || bytes.contains('\0'))
            return false;
    }
    const QSettings settings(text.fileName(), QSettings::IniFormat);
    return settings.status() == QSettings::NoError;
}

void Settings::reload() {
    m_settings->sync();
}

void Settings::registerDefault(const std::string &key, bool value) {
    m_defaults->booleans[key] = value;
}

bool Settings::boolean(const std::string &key) const {
    const QVariant stored = m_settings->value(QString::fromStdString(key));
    if (stored.isValid())
        return stored.toBool();
    const auto found = m_defaults->booleans.find(key);
    return found != m_defaults->booleans.end() && found->second;
}

std::optional<double> Settings::number(const std::string &key) const {
    bool isNumber = false;
    const double value = m_settings->value(QString::fromStdString(key)).toDouble(&isNumber);
    return isNumber ? std::optional(value) : std::nullopt;
}

std::optional<std::string> Settings::string(const std::string &key) const {
    const QVariant stored = m_settings->value(QString::fromStdString(key));
    return stored.isValid() ? std::optional(stored.toString().toStdString()) : std::nullopt;
}

void Settings::setBoolean(const std::string &key, bool value) {
    store(key, value);
}
void Settings::setNumber(const std::string &key, double value) {
    store(key, value);
}

void Settings::setString(const std::string &key, const std::optional<std::string> &value) {
    if (value)
        store(key, QString::fromStdString(*value));
    else
        remove(key);
}

void Settings::remove(const std::string &key) {
    m_settings->remove(QString::fromStdString(key));
    m_settings->sync();
}

void Settings::store(const std::string &key, const QVariant &value) {
    m_settings->setValue(QString::fromStdString(key), value);
    m_settings->sync();
}

} // namespace vantrell

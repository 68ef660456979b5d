// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/DesktopEntries.h"

#include "Platform/DesktopEntryFile.h"

#include <QLocale>
#include <QStandardPaths>
#include <QString>

#include <algorithm>
#include <cctype>

namespace vantrell {

namespace {

struct DesktopEntry {
    std::optional<std::string> name;
    std::string windowClass;
};

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

/// How well "Name" or "Name[de]" suits a user of `locale` ("de_DE"): nothing when not at all.
std::optional<int> nameRank(const std::string &key, const std::string &locale) {
    if (key == "Name")
        return 0;
    if (!key.starts_with("Name[") || !key.ends_with(']'))
        return std::nullopt;
    const std::string language = key.substr(5, key.size() - 6);
    if (language == locale)
        return 2;
    if (language == locale.substr(0, locale.find('_')))
        return 1;
    return std::nullopt;
}

std::optional<DesktopEntry> readDesktopEntry(const std::filesystem::path &file) {
    const auto keys = readDesktopEntryFile(file);
    if (!keys)
        return std::nullopt;
    static const std::string locale = QLocale().name().toStdString();
    DesktopEntry entry;
    int bestRank = -1;
    for (const auto &[key, value] : *keys) {
        if (key == "StartupWMClass") {
            entry.windowClass = value;
        } else if (const auto rank = nameRank(key, locale); rank && *rank > bestRank && !value.empty()) {
            bestRank = *rank;
            entry.name = value;
        }
    }
    return entry;
}

} // namespace

DesktopEntries::DesktopEntries() {
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        m_folders.push_back(std::filesystem::path(folder.toStdString()) / "applications");
}

std::optional<std::string> DesktopEntries::nameOf(const std::string &id) {
    // An id is a file's name: one with a slash could lead anywhere.
    if (id.empty() || id.find('/') != std::string::npos)
        return std::nullopt;
    const auto known = m_known.find(id);
    if (known != m_known.end())
        return known->second;
    return m_known[id] = find(id);
}

std::optional<std::string> DesktopEntries::find(const std::string &id) {
    for (const std::string &name : {id, lowered(id)}) {
        for (const std::filesystem::path &folder : m_folders) {
            if (const auto entry = readDesktopEntry(folder / (name + ".desktop")); entry && entry->name)
                return entry->name;
        }
    }
    const auto &names = namesByClass();
    const auto found = names.find(lowered(id));
    return found == names.end() ? std::nullopt : std::optional(found->second);
}

const std::map<std::string, std::string> &DesktopEntries::namesByClass() {
    if (m_namesByClass)
        return *m_namesByClass;
    m_namesByClass.emplace();
    for (const std::filesystem::path &folder : m_folders) {
        std::error_code error;
        for (auto it = std::filesystem::directory_iterator(folder, error);
             !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
            if (it->path().extension() != ".desktop")
                continue;
            const auto entry = readDesktopEntry(it->path());
            if (entry && entry->name && !entry->windowClass.empty())
                m_namesByClass->emplace(lowered(entry->windowClass), *entry->name);
        }
    }
    return *m_namesByClass;
}

} // namespace vantrell

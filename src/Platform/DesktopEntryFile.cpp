// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/DesktopEntryFile.h"

#include "Platform/ApplicationIdentity.h"

#include <QString>

#include <fstream>
#include <string_view>

namespace vantrell {

namespace {

/// A path as one word of an entry's command line: quoted, and escaped once for the quotes and once more as
/// any value is. The line knows fields behind a per cent sign.
std::string execWord(const std::filesystem::path &path) {
    std::string word;
    for (const char c : path.string()) {
        if (c == '"' || c == '`' || c == '$')
            word += "\\\\";
        else if (c == '\\')
            word += "\\\\\\";
        else if (c == '%')
            word += '%';
        word += c;
    }
    return '"' + word + '"';
}

/// A path as a value that is no command line.
std::string plainValue(const std::filesystem::path &path) {
    std::string value;
    for (const char c : path.string()) {
        if (c == '\\')
            value += '\\';
        value += c;
    }
    return value;
}

} // namespace

std::optional<std::map<std::string, std::string>> readDesktopEntryFile(const std::filesystem::path &file,
                                                                       const std::string &group) {
    std::ifstream stream(file);
    if (!stream)
        return std::nullopt;
    std::map<std::string, std::string> keys;
    bool isInGroup = false;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with('[')) {
            isInGroup = line.starts_with('[' + group + ']');
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!isInGroup || equals == std::string::npos || equals == 0)
            continue;
        const std::string key = line.substr(0, line.find_last_not_of(' ', equals - 1) + 1);
        keys[key] = QString::fromStdString(line.substr(equals + 1)).trimmed().toStdString();
    }
    return keys;
}

std::string ownDesktopEntry(const std::filesystem::path &program, const std::string &arguments,
                            const std::map<std::string, std::string> &furtherKeys) {
    std::string text = std::string("[Desktop Entry]\nType=Application\nName=") + applicationName +
                       "\nComment=Record the screen and share it\nIcon=" + applicationId +
                       "\nTryExec=" + plainValue(program) + "\nExec=" + execWord(program);
    if (!arguments.empty())
        text += ' ' + arguments;
    text += '\n';
    for (const auto &[key, value] : furtherKeys)
        text += key + '=' + value + '\n';
    return text;
}

} // namespace vantrell

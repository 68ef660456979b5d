// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/VersionText.h"

#include <QSysInfo>

#include <nlohmann/json.hpp>

namespace vantrell {

namespace {

constexpr const char *build = VANTRELL_BUILD_ID;
constexpr const char *compiler = __VERSION__;

std::string processor() {
    return QSysInfo::buildCpuArchitecture().toStdString();
}

} // namespace

const char *programAndBuild() {
    return "vantrell-capture " VANTRELL_VERSION ", build " VANTRELL_BUILD_ID;
}

std::string versionText(const std::vector<LibraryVersion> &libraries) {
    std::string text = std::string("vantrell-capture " VANTRELL_VERSION "\nBuild: ") + build + ", " +
                       processor() + ", " + compiler;
    for (const LibraryVersion &library : libraries)
        text += '\n' + library.name + ": " + library.version;
    return text;
}

nlohmann::json versionJson(const std::vector<LibraryVersion> &libraries) {
    nlohmann::json versions = nlohmann::json::object();
    for (const LibraryVersion &library : libraries)
        versions[library.name] = library.version;
    return {{"version", VANTRELL_VERSION},
            {"build", build},
            {"architecture", processor()},
            {"compiler", compiler},
            {"libraries", versions}};
}

} // namespace vantrell

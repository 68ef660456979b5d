// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Wayland/PortalGround.h"

#include "TestSupport/RunTask.h"

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace vantrell::testing {

namespace {

constexpr const char *portalName = "org.freedesktop.portal.Desktop";
constexpr const char *permissionsName = "org.freedesktop.impl.portal.PermissionStore";

} // namespace

PortalGround::PortalGround()
    : m_runtime("XDG_RUNTIME_DIR", m_folder.path()), m_remote("PIPEWIRE_REMOTE", "pipewire-0"),
      m_settings("XDG_CONFIG_HOME", (m_folder / "config").string()),
      m_descriptions("XDG_DESKTOP_PORTAL_DIR", (m_folder / "portals").string()) {
    std::filesystem::permissions(m_folder.path(), std::filesystem::perms::owner_all);
    std::filesystem::create_directories(m_folder / "config");
    startPipeWire();
    m_permissions = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/libexec/xdg-permission-store"}, environment());
    require([this] { return m_bus.isOwned(permissionsName); }, "no permission store");
}

PortalGround::~PortalGround() = default;

ChildProcess::Environment PortalGround::environment() const {
    const std::string path = m_folder.path();
    return {{"HOME", path},
            {"XDG_RUNTIME_DIR", path},
            {"XDG_STATE_HOME", path + "/state"},
            {"XDG_DATA_HOME", path + "/data"},
            {"XDG_CACHE_HOME", path + "/cache"},
            {"XDG_CONFIG_HOME", path + "/config"},
            {"XDG_SESSION_TYPE", "wayland"},
            {"DBUS_SESSION_BUS_ADDRESS", m_bus.address()},
            {"DISPLAY", ""}};
}

void PortalGround::require(const std::function<bool()> &condition, const char *complaint) const {
    if (!eventually(condition, std::chrono::seconds(30)))
        throw std::runtime_error(complaint);
}

void PortalGround::startPipeWire() {
    m_pipeWire.push_back(std::make_unique<ChildProcess>(std::vector<std::string>{"pipewire"}, environment()));
    require([this] { return std::filesystem::exists(m_folder / "pipewire-0"); }, "no pipewire");
    m_pipeWire.push_back(
        std::make_unique<ChildProcess>(std::vector<std::string>{"wireplumber"}, environment()));
}

void PortalGround::freezePipeWire() {
    for (const auto &program : m_pipeWire)
        program->signal(SIGSTOP);
}

void PortalGround::killPipeWire() {
    for (const auto &program : m_pipeWire)
        program->signal(SIGKILL);
    m_pipeWire.clear();
    std::filesystem::remove(m_folder / "pipewire-0");
}

void PortalGround::startPortal(const std::string &backend, const std::vector<std::string> &interfaces) {
    const std::filesystem::path folder = m_folder / "portals";
    std::filesystem::create_directories(folder);
    std::string all;
    for (const std::string &interface : interfaces)
        all += "org.freedesktop.impl.portal." + interface + ";";
    std::ofstream(folder / (backend + ".portal"))
        << "[portal]\nDBusName=org.freedesktop.impl.portal.desktop." << backend << "\nInterfaces=" << all
        << "\nUseIn=" << backend << "\n";
    auto variables = environment();
    variables.emplace_back("XDG_CURRENT_DESKTOP", backend);
    m_portal = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/libexec/xdg-desktop-portal", "-v"}, variables);
    require([this] { return m_bus.isOwned(portalName); }, "no portal");
}

void PortalGround::killPortal() {
    m_portal->signal(SIGKILL);
    m_portal.reset();
    require([this] { return !m_bus.isOwned(portalName); }, "the portal stays");
}

} // namespace vantrell::testing

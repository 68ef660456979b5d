// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/PipeWireCameraRegistry.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>
#include <utility>

namespace vantrell {

namespace {

std::string property(const spa_dict &properties, const char *key) {
    const char *value = spa_dict_lookup(&properties, key);
    return value ? value : "";
}

/// {"name":"..."}
std::string nameOf(const char *json) {
    const auto parsed = nlohmann::json::parse(json ? json : "", nullptr, false);
    const auto name = parsed.is_object() ? parsed.find("name") : parsed.end();
    return name != parsed.end() && name->is_string() ? name->get<std::string>() : std::string();
}

} // namespace

/// What a node's device tells only to those who ask.
struct PipeWireCameraRegistry::Device {
    PipeWireProxyPtr<pw_device> proxy;
    PipeWireListener listener;
    std::string serial;
    /// The device files behind it: two entries with the same are one camera.
    std::string files;

    void take(const spa_dict &properties) {
        // Cameras of one kind carry the same text where the maker gave them no number.
        serial = property(properties, PW_KEY_DEVICE_SERIAL);
        files = property(properties, "device.devids");
    }
};

PipeWireCameraRegistry::PipeWireCameraRegistry(PipeWireConnection &connection, std::function<void()> changed)
    : m_connection(connection), m_changed(std::move(changed)),
      m_registry(pw_core_get_registry(connection.core(), PW_VERSION_REGISTRY, 0)) {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS,
        .global =
            [](void *self, std::uint32_t id, std::uint32_t, const char *type, std::uint32_t,
               const spa_dict *properties) {
                if (properties)
                    static_cast<PipeWireCameraRegistry *>(self)->added(id, type, *properties);
            },
        .global_remove = [](void *self,
                            std::uint32_t id) { static_cast<PipeWireCameraRegistry *>(self)->removed(id); },
    };
    pw_registry_add_listener(m_registry.get(), m_listener.hook(), &events, this);
    settle();
}

PipeWireCameraRegistry::~PipeWireCameraRegistry() = default;

void PipeWireCameraRegistry::settle() {
    // First comes what there is, then what we asked about that.
    m_connection.whenAnswered([this] { m_connection.whenAnswered([this] { m_changed(); }); });
}

void PipeWireCameraRegistry::added(std::uint32_t id, const std::string &type, const spa_dict &properties) {
    if (type == PW_TYPE_INTERFACE_Metadata && property(properties, PW_KEY_METADATA_NAME) == "default")
        return watchDefault(id);
    const std::string kind = property(properties, PW_KEY_MEDIA_CLASS);
    if (type == PW_TYPE_INTERFACE_Device && kind == "Video/Device")
        return watchDevice(id);
    // Screen casts are video sources too.
    if (type != PW_TYPE_INTERFACE_Node || kind != "Video/Source" ||
        property(properties, PW_KEY_MEDIA_ROLE) != "Camera")
        return;
    m_nodes[id] = {.serial = property(properties, PW_KEY_OBJECT_SERIAL),
                   .name = property(properties, PW_KEY_NODE_NAME),
                   .description = property(properties, PW_KEY_NODE_DESCRIPTION),
                   .deviceId = property(properties, PW_KEY_DEVICE_ID),
                   .path = property(properties, PW_KEY_OBJECT_PATH),
                   .priority = std::atoi(property(properties, PW_KEY_PRIORITY_SESSION).c_str())};
    settle();
}

void PipeWireCameraRegistry::removed(std::uint32_t id) {
    if (m_metadata && id == m_metadataId) {
        m_metadataListener.leave();
        m_metadata.reset();
        m_defaultName.clear();
    }
    m_devices.erase(id);
    if (m_nodes.erase(id) > 0)
        m_changed();
}

void PipeWireCameraRegistry::watchDefault(std::uint32_t id) {
    m_metadataListener.leave();
    m_metadataId = id;
    m_metadata.reset(static_cast<pw_metadata *>(
        pw_registry_bind(m_registry.get(), id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0)));
    if (!m_metadata)
        return;
    static const pw_metadata_events events{
        .version = PW_VERSION_METADATA_EVENTS,
        .property =
            [](void *self, std::uint32_t, const char *key, const char *, const char *value) {
                auto *registry = static_cast<PipeWireCameraRegistry *>(self);
                if (!key || std::string_view(key) == "default.video.source") {
                    if (registry->m_defaultName != nameOf(value)) {
                        registry->m_defaultName = nameOf(value);
                        registry->settle();
                    }
                }
                return 0;
            },
    };
    pw_metadata_add_listener(m_metadata.get(), m_metadataListener.hook(), &events, this);
}

void PipeWireCameraRegistry::watchDevice(std::uint32_t id) {
    auto device = std::make_unique<Device>();
    device->proxy.reset(static_cast<pw_device *>(
        pw_registry_bind(m_registry.get(), id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE, 0)));
    if (!device->proxy)
        return;
    static const pw_device_events events{
        .version = PW_VERSION_DEVICE_EVENTS,
        .info =
            [](void *self, const pw_device_info *info) {
                if (info && info->props)
                    static_cast<Device *>(self)->take(*info->props);
            },
    };
    pw_device_add_listener(device->proxy.get(), device->listener.hook(), &events, device.get());
    m_devices[id] = std::move(device);
}

PipeWireCameraRegistry::Found PipeWireCameraRegistry::describe(std::uint32_t nodeId, const Node &node) const {
    const auto device = m_devices.find(std::uint32_t(std::strtoul(node.deviceId.c_str(), nullptr, 10)));
    const bool hasSerial =
        !node.deviceId.empty() && device != m_devices.end() && !device->second->serial.empty();
    return {.camera = {.id = hasSerial ? device->second->serial : node.name,
                       .name = node.description.empty() ? node.name : node.description},
            .serial = node.serial,
            .nodeId = nodeId};
}

std::vector<PipeWireCameraRegistry::Found> PipeWireCameraRegistry::cameras() const {
    std::vector<std::pair<std::uint32_t, const Node *>> nodes;
    for (const auto &[id, node] : m_nodes)
        nodes.emplace_back(id, &node);
    const auto rank = [this](const auto &each) {
        const auto &[id, node] = each;
        // Among equals the one that has been there longest.
        return std::tuple(node->name != m_defaultName, -node->priority, id);
    };
    std::ranges::sort(nodes, {}, rank);
    std::vector<Found> found;
    std::set<std::string> files;
    for (const auto &[id, node] : nodes) {
        const auto device = m_devices.find(std::uint32_t(std::strtoul(node->deviceId.c_str(), nullptr, 10)));
        // Two drivers may offer one camera.
        if (!node->deviceId.empty() && device != m_devices.end() && !device->second->files.empty() &&
            !files.insert(device->second->files).second)
            continue;
        found.push_back(describe(id, *node));
    }
    for (Found &each : found) {
        each.camera.isDefault = &each == found.data();
        // Two of a kind without numbers: the later one is told by its place.
        const bool isLater = std::ranges::any_of(found, [&](const Found &other) {
            return other.camera.id == each.camera.id &&
                   std::pair(other.serial.size(), other.serial) < std::pair(each.serial.size(), each.serial);
        });
        if (isLater)
            each.camera.id = m_nodes.at(each.nodeId).name;
    }
    return found;
}

} // namespace vantrell

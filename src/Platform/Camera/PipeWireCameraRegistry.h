// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Camera.h"
#include "Platform/PipeWire/PipeWireConnection.h"

#include <pipewire/extensions/metadata.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantrell {

/// The cameras of a PipeWire server, as they come and go. Loop's thread; the connection outlives it, by no
/// longer than the lock is held.
class PipeWireCameraRegistry {
public:
    struct Found {
        Camera camera;
        /// The node's `object.serial`, which is never used again.
        std::string serial;
        /// The node's id while it is there.
        std::uint32_t nodeId = 0;
    };

    /// `changed` is called when all that is there is known, and after each change.
    PipeWireCameraRegistry(PipeWireConnection &connection, std::function<void()> changed);
    ~PipeWireCameraRegistry();

    /// The default one first, each device once.
    std::vector<Found> cameras() const;

    pw_registry *registry() const { return m_registry.get(); }

private:
    struct Node {
        std::string serial, name, description, deviceId, path;
        int priority = 0;
    };
    struct Device;

    void added(std::uint32_t id, const std::string &type, const spa_dict &properties);
    void removed(std::uint32_t id);
    void settle();
    void watchDefault(std::uint32_t id);
    void watchDevice(std::uint32_t id);
    Found describe(std::uint32_t nodeId, const Node &node) const;

    PipeWireConnection &m_connection;
    const std::function<void()> m_changed;
    PipeWireProxyPtr<pw_registry> m_registry;
    PipeWireListener m_listener;
    std::map<std::uint32_t, Node> m_nodes;
    std::map<std::uint32_t, std::unique_ptr<Device>> m_devices;
    std::uint32_t m_metadataId = 0;
    PipeWireProxyPtr<pw_metadata> m_metadata;
    PipeWireListener m_metadataListener;
    std::string m_defaultName;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraControl.h"

namespace vantrell {

CameraControl::CameraControl(CameraBackend &cameras, QWidget *parent)
    : DeviceControl({tr("Camera"), tr("No camera"), Symbol::camera, Symbol::cameraOff}, parent),
      m_cameras(cameras) {}

void CameraControl::change(ToolBarState &state, bool isOn, std::optional<std::string> deviceId) {
    state.cameraEnabled = isOn;
    state.cameraDeviceId = deviceId;
    // A desktop that asks its user does so now and not in the middle of a recording.
    m_asking.cancel();
    if (isOn)
        m_asking.start(this, &CameraControl::ask);
    if (state.onCameraChange)
        state.onCameraChange(isOn, deviceId);
}

Task<> CameraControl::ask(std::stop_token stop) {
    co_await m_cameras.requestAccess(stop);
    if (!stop.stop_requested())
        list();
}

Task<std::vector<DeviceControl::Device>> CameraControl::connected(std::stop_token stop) {
    std::vector<Device> devices;
    const auto found = co_await m_cameras.cameras(stop);
    for (const Camera &camera : found.value_or(std::vector<Camera>()))
        devices.push_back({camera.id, camera.name, camera.isDefault});
    co_return devices;
}

void CameraControl::follow(const ToolBarState *state) {
    if (!state) {
        m_asking.cancel();
        m_observation.reset();
    } else if (!m_observation) {
        m_observation = m_cameras.observeCameras([this] { list(); });
    }
}

} // namespace vantrell

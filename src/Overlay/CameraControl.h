// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/DeviceControl.h"
#include "Platform/CameraBackend.h"

namespace vantrell {

/// The capture bar's camera. Follows cameras that come and go while it is active; switches none on. Main
/// thread.
class CameraControl final : public DeviceControl {
    Q_DECLARE_TR_FUNCTIONS(CaptureBar)

public:
    /// The backend outlives it.
    CameraControl(CameraBackend &cameras, QWidget *parent);
    ~CameraControl() override { shutDown(); }

protected:
    bool isOn(const ToolBarState &state) const override { return state.cameraEnabled; }
    std::optional<std::string> chosen(const ToolBarState &state) const override {
        return state.cameraDeviceId;
    }
    void change(ToolBarState &state, bool isOn, std::optional<std::string> deviceId) override;
    Task<std::vector<Device>> connected(std::stop_token stop) override;
    void follow(const ToolBarState *state) override;

private:
    Task<> ask(std::stop_token stop);

    CameraBackend &m_cameras;
    Observation m_observation;
    TaskScope m_asking;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CameraSource.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A camera of the PipeWire server that this process finds (SoundSession has one), plugged in as long as it
/// lives. Shows numbered pictures while somebody looks. Main thread.
class VirtualCamera {
public:
    struct Mode {
        CameraFormat format = CameraFormat::yuyv;
        PixelSize size{640, 480};
        int framesPerSecond = 30;
        bool operator==(const Mode &) const = default;
    };
    struct Options {
        /// The server's name of it; what stays the same when it is plugged in again.
        std::string name = "vcam";
        std::string description = "Virtual camera";
        std::vector<Mode> modes = {Mode{}};
        /// Sends time stamps; without, buffers say nothing about time or stride, as some senders do.
        bool tellsTime = true;
        /// The number that a picture at that host time carries; in order of sending where it is not set.
        /// Called in the camera's thread.
        std::function<std::uint32_t(double hostTime)> numberAt;
        /// Whether the picture with that number is a white one. Called in the camera's thread.
        std::function<bool(std::uint32_t number)> isFlash;
        /// Other pictures instead: the bytes of one in the mode. Called in the camera's thread.
        std::function<std::span<const std::uint8_t>(const Mode &mode, std::uint32_t number)> paint;
        /// Spoils a picture's bytes or its time stamp (nanoseconds). Called in the camera's thread.
        std::function<void(std::uint32_t number, std::vector<std::uint8_t> &bytes)> spoil;
        std::function<std::int64_t(std::uint32_t number, std::int64_t nanoseconds)> falsifyTime;
    };

    explicit VirtualCamera(Options options);
    VirtualCamera() : VirtualCamera(Options()) {}
    ~VirtualCamera();
    VirtualCamera(const VirtualCamera &) = delete;
    VirtualCamera &operator=(const VirtualCamera &) = delete;

    void unplug();
    void plug();
    /// Sends nothing for a while, as a camera whose driver hangs.
    void hang();
    void goOn();
    /// Offers only this from now on, also in the middle.
    void changeMode(Mode mode);

    /// Somebody takes pictures.
    bool isWatched() const;
    /// What was agreed on with whoever watches or watched last.
    Mode mode() const;
    /// Pictures sent so far.
    int sent() const;
    /// When the picture with that number was taken; 0 when it was not sent.
    double hostTimeOf(std::uint32_t number) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace vantrell::testing

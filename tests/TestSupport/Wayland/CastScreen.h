// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireConnection.h"
#include "Platform/PipeWire/PipeWireLoop.h"
#include "Support/Geometry.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

namespace vantrell::testing {

/// A screen cast as a compositor sends it: pictures only when something changes, with a number in frame code
/// on a coloured ground, and whatever metadata is asked of it. Main thread.
class CastScreen {
public:
    struct Options {
        PixelSize buffer{640, 480};
        /// The picture's place in the buffer; absent: all of it. Around it lies red.
        std::optional<PixelRect> crop;
        /// SPA_VIDEO_FORMAT_...
        std::uint32_t format = 8;
        bool tellsTime = true;
        bool tellsDamage = false;
    };

    static constexpr std::uint32_t ground = 0x306090;
    /// Where the number stands in the picture.
    static constexpr int numberX = 32;
    static constexpr int numberY = 48;

    /// On the PipeWire server at `PIPEWIRE_REMOTE`.
    explicit CastScreen(const Options &options);
    CastScreen() : CastScreen(Options()) {}
    ~CastScreen();
    CastScreen(const CastScreen &) = delete;
    CastScreen &operator=(const CastScreen &) = delete;

    /// PipeWire's number of the stream.
    std::uint32_t node() const;
    /// Somebody takes pictures.
    bool isWatched() const;

    void show(std::uint32_t number);
    /// The pointer alone: a buffer without a picture. A black square of 16 pixels, its tip in the middle.
    void movePointer(int x, int y);
    void hidePointer();
    /// Other pictures from now on.
    void resize(const Options &options);
    /// The node goes away.
    void close();

    /// Host time stamped on the picture with that number; 0 when it was not sent.
    double sentAt(std::uint32_t number) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace vantrell::testing

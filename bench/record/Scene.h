// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vantrell::bench {

/// A picture in BGRX.
struct Picture {
    explicit Picture(PixelSize pixels)
        : size(pixels), own(std::size_t(pixels.width) * std::size_t(pixels.height)), data(own) {}
    /// In memory of somebody else's.
    Picture(PixelSize pixels, std::uint32_t *memory)
        : size(pixels), data(memory, std::size_t(pixels.width) * std::size_t(pixels.height)) {}
    Picture(Picture &&) = default;
    Picture &operator=(Picture &&) = default;
    std::uint32_t *row(int y) { return data.data() + std::ptrdiff_t(y) * size.width; }
    const std::uint32_t *row(int y) const { return data.data() + std::ptrdiff_t(y) * size.width; }
    void fill(const PixelRect &rect, std::uint32_t colour);
    PixelSize size;
    std::vector<std::uint32_t> own;
    std::span<std::uint32_t> data;
};

/// Something that happens on a screen: frame n is the same whenever it is drawn, so that a recording can be
/// compared with what was really shown. Every frame but the pointer scene's carries its number as squares at
/// `codePlace`.
class Scene {
public:
    virtual ~Scene() = default;

    /// The names that `make` knows: "still", "typing", "video", "scroll", "motion", "pointer".
    static std::vector<std::string> names();
    static std::unique_ptr<Scene> make(const std::string &name, PixelSize screen);

    /// Frames a second.
    virtual double rate() const = 0;
    /// What is there before the first frame.
    virtual void background(Picture &picture) = 0;
    /// Draws frame n (from 1) over frame n - 1 and returns what it changed.
    virtual std::vector<PixelRect> draw(int n, Picture &picture) = 0;
    /// Where the pointer is in frame n; the pointer stays out of the way unless the scene is about it.
    /// What a scene that moves as a whole shows a part of, if it does, and frame n's place in it. The display
    /// moves it itself, as desktops do, and only the number is drawn.
    virtual const Picture *wall() const { return nullptr; }
    virtual PixelRect wallPart(int) const { return {}; }
    /// Draws frame n's number; what changed.
    static PixelRect drawNumber(int n, Picture &picture);
    virtual bool movesPointer() const { return false; }

    static constexpr int codeX = 16;
    static constexpr int codeY = 16;
};

/// The pointer's path in the pointer scene: the hot spot in frame n.
Point pointerAt(int n, PixelSize screen);

} // namespace vantrell::bench

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/PipeWire/PipeWirePointers.h"
#include "Support/Geometry.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vantrell {

/// What the pictures of a cast are made of.
struct CastFormat {
    PixelSize size;
    PixelFormat pixels = PixelFormat::bgrx;
    /// Buffers in the graphics card's memory were agreed upon.
    bool hasModifier = false;

    bool operator==(const CastFormat &) const = default;

    /// None for what we did not offer.
    static std::optional<CastFormat> parse(const spa_pod &pod);
};

/// What is offered to a compositor: 32-bit pixels of any size. Owns the memory of what it lists.
class CastFormatOffer {
public:
    /// With `dmaBuf` also buffers of the graphics card whose pixels lie in rows, after the others.
    explicit CastFormatOffer(bool dmaBuf);

    std::vector<const spa_pod *> pods() const;

private:
    std::vector<std::vector<std::uint64_t>> m_memory;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderChoice.h"
#include "Media/Sound/SoundStage.h"
#include "Platform/CaptureBackend.h"
#include "Platform/X11/X11Connection.h"
#include "Platform/X11/X11WindowCatalog.h"

#include <memory>

namespace vantrell {

/// The screen of an X11 session. Main thread.
class X11CaptureBackend final : public CaptureBackend {
public:
    /// Fails when no X server answers. `makeSound` may be empty: then recordings are silent.
    static std::expected<std::unique_ptr<X11CaptureBackend>, PlatformError>
    create(SoundStageFactory makeSound, EncoderPreference encoder = EncoderPreference::automatic);

    std::expected<std::vector<Display>, PlatformError> displays() override;
    std::expected<std::vector<WindowDescription>, PlatformError> windows() override;
    std::unique_ptr<CaptureStream> makeStream(CaptureStreamConfiguration configuration,
                                              CaptureStreamEvents events) override;

    /// Where a window is now, in the desktop's pixels; none when it is gone.
    std::optional<PixelRect> windowBounds(std::uint32_t window) const { return m_catalog.bounds(window); }

private:
    X11CaptureBackend(std::unique_ptr<X11Connection> connection, SoundStageFactory makeSound,
                      EncoderPreference encoder);

    std::unique_ptr<X11Connection> m_connection;
    X11WindowCatalog m_catalog;
    std::shared_ptr<EncoderChoice> m_encoders;
    SoundStageFactory m_makeSound;
};

} // namespace vantrell

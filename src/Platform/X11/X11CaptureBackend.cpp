// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11CaptureBackend.h"

#include "Media/Stream/StagedCaptureStream.h"
#include "Platform/X11/X11AreaSource.h"
#include "Platform/X11/X11Displays.h"
#include "Platform/X11/X11WindowSource.h"

#include <utility>

namespace vantrell {

X11CaptureBackend::X11CaptureBackend(std::unique_ptr<X11Connection> connection, SoundStageFactory makeSound,
                                     EncoderPreference encoder)
    : m_connection(std::move(connection)), m_catalog(*m_connection),
      m_encoders(std::make_shared<EncoderChoice>(encoder, hardwareEncoders())),
      m_makeSound(std::move(makeSound)) {}

std::expected<std::unique_ptr<X11CaptureBackend>, PlatformError>
X11CaptureBackend::create(SoundStageFactory makeSound, EncoderPreference encoder) {
    auto connection = X11Connection::open();
    if (!connection)
        return std::unexpected(connection.error());
    return std::unique_ptr<X11CaptureBackend>(
        new X11CaptureBackend(std::move(*connection), std::move(makeSound), encoder));
}

std::expected<std::vector<Display>, PlatformError> X11CaptureBackend::displays() {
    return listX11Displays(*m_connection);
}

std::expected<std::vector<WindowDescription>, PlatformError> X11CaptureBackend::windows() {
    const auto all = displays();
    if (!all)
        return std::unexpected(all.error());
    return m_catalog.windows(*all);
}

std::unique_ptr<CaptureStream> X11CaptureBackend::makeStream(CaptureStreamConfiguration configuration,
                                                             CaptureStreamEvents events) {
    std::unique_ptr<FrameSource> source;
    if (configuration.window)
        source = std::make_unique<X11WindowSource>(*configuration.window, configuration.output,
                                                   configuration.showsCursor);
    else
        source = std::make_unique<X11AreaSource>(configuration.source, configuration.showsCursor);
    return std::make_unique<StagedCaptureStream>(std::move(configuration), std::move(events),
                                                 std::move(source), m_encoders, m_makeSound);
}

} // namespace vantrell

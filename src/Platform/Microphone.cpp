// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Microphone.h"

#include "Platform/AudioError.h"

#include <algorithm>

namespace vantrell {

std::expected<void, PlatformError> requireMicrophone(const std::vector<Microphone> &connected,
                                                     const std::optional<std::string> &id) {
    if (connected.empty() && !id)
        return std::unexpected(audioError(AudioErrorCode::noMicrophone));
    if (id && std::ranges::find(connected, *id, &Microphone::id) == connected.end())
        return std::unexpected(noSuchMicrophone(*id));
    return {};
}

} // namespace vantrell

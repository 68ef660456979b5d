// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

namespace vantrell {

/// The codes of a PlatformError whose domain is `audioErrorDomain`.
enum class AudioErrorCode {
    /// Nobody answers for sound on this desktop. A recording goes on without sound.
    noSoundServer = 1,
    /// The microphone that was asked for is not there.
    noSuchMicrophone,
    /// There is no microphone at all.
    noMicrophone,
    /// The server is there and refuses or does not answer in time.
    serverFailed,
};

inline constexpr const char *audioErrorDomain = "audio";

/// With the sentence that the user reads.
PlatformError audioError(AudioErrorCode code);
/// The same for a microphone that was asked for by its id.
PlatformError noSuchMicrophone(const std::string &id);

bool isAudioError(const PlatformError &error, AudioErrorCode code);

} // namespace vantrell

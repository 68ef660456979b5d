// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/AudioError.h"

namespace vantrell {

namespace {

const char *sentence(AudioErrorCode code) {
    switch (code) {
    case AudioErrorCode::noSoundServer:
        return "No sound server is running on this desktop";
    case AudioErrorCode::noSuchMicrophone:
        return "The chosen microphone is not connected";
    case AudioErrorCode::noMicrophone:
        return "No microphone is connected";
    case AudioErrorCode::serverFailed:
        break;
    }
    return "The sound server does not answer";
}

} // namespace

PlatformError audioError(AudioErrorCode code) {
    return PlatformError{audioErrorDomain, int(code), sentence(code)};
}

PlatformError noSuchMicrophone(const std::string &id) {
    return PlatformError{audioErrorDomain, int(AudioErrorCode::noSuchMicrophone),
                         "There is no microphone \"" + id + "\""};
}

bool isAudioError(const PlatformError &error, AudioErrorCode code) {
    return error.domain == audioErrorDomain && error.code == int(code);
}

} // namespace vantrell

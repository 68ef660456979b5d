// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseMicrophoneList.h"

#include "Platform/Audio/PulsePointers.h"
#include "Platform/AudioError.h"
#include "Support/ScopeExit.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

namespace vantrell {

namespace {

using Deadline = std::chrono::steady_clock::time_point;
constexpr std::chrono::seconds listTime{5};

/// Collects the answers; the list is complete when both have come.
struct Listing {
    std::vector<Microphone> microphones;
    std::string defaultName;
    bool hasDefault = false;
    bool hasList = false;
};

void takeDefault(pa_context *, const pa_server_info *info, void *out) {
    auto *listing = static_cast<Listing *>(out);
    listing->hasDefault = true;
    if (info && info->default_source_name)
        listing->defaultName = info->default_source_name;
}

void takeMicrophone(pa_context *, const pa_source_info *info, int end, void *out) {
    auto *listing = static_cast<Listing *>(out);
    if (end != 0)
        listing->hasList = true;
    else if (info->monitor_of_sink == PA_INVALID_INDEX)
        listing->microphones.push_back({.id = info->name, .name = info->description, .isDefault = false});
}

/// One step of the loop; false when the time is over.
bool iterate(pa_mainloop *loop, Deadline deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 && pa_mainloop_prepare(loop, int(left.count())) >= 0 &&
           pa_mainloop_poll(loop) >= 0 && pa_mainloop_dispatch(loop) >= 0;
}

} // namespace

std::expected<std::vector<Microphone>, PlatformError> listPulseMicrophones() {
    const Deadline deadline = std::chrono::steady_clock::now() + listTime;
    pa_mainloop *loop = pa_mainloop_new();
    const ScopeExit freeLoop([loop] { pa_mainloop_free(loop); });
    const PulseContextPtr context(pa_context_new(pa_mainloop_get_api(loop), "Vantrell Capture"));
    pa_context_connect(context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    while (pa_context_get_state(context.get()) != PA_CONTEXT_READY) {
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context.get())))
            return std::unexpected(audioError(AudioErrorCode::noSoundServer));
        if (!iterate(loop, deadline))
            return std::unexpected(audioError(AudioErrorCode::serverFailed));
    }

    Listing listing;
    const PulseOperationPtr askDefault(pa_context_get_server_info(context.get(), takeDefault, &listing));
    const PulseOperationPtr askList(pa_context_get_source_info_list(context.get(), takeMicrophone, &listing));
    while (!listing.hasDefault || !listing.hasList)
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context.get())) || !iterate(loop, deadline))
            return std::unexpected(audioError(AudioErrorCode::serverFailed));
    for (Microphone &microphone : listing.microphones)
        microphone.isDefault = microphone.id == listing.defaultName;
    const auto first = std::ranges::find_if(listing.microphones, &Microphone::isDefault);
    if (first != listing.microphones.end())
        std::rotate(listing.microphones.begin(), first, first + 1);
    return std::move(listing.microphones);
}

} // namespace vantrell

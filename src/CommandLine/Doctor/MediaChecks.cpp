// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/Checks.h"
#include "CommandLine/Doctor/Probe.h"
#include "Media/Encoding/EncoderChoice.h"
#include "Media/Encoding/EncoderTrial.h"
#include "Media/Encoding/X264Encoder.h"

namespace vantrell {

namespace {

constexpr PixelSize trialPicture{640, 360};

/// "2 microphones".
std::string counted(std::size_t count, const std::string &thing) {
    return (count == 0 ? "no" : std::to_string(count)) + ' ' + thing + (count == 1 ? "" : "s");
}

struct Trial {
    std::string name;
    /// Empty: it passed.
    std::string failure;
};

template <typename Encoder>
Trial tried(const std::string &name, std::expected<std::unique_ptr<Encoder>, PlatformError> encoder) {
    if (!encoder)
        return {name, encoder.error().description()};
    const auto result = tryEncoder(**encoder, trialPicture);
    return {name, result ? std::string() : result.error().description()};
}

/// The software encoder first, then the graphics cards'.
std::vector<Trial> tryAll() {
    std::vector<Trial> trials{tried("x264", X264Encoder::create(trialPicture))};
    for (const LibavEncoder::Codec &codec : hardwareEncoders())
        trials.push_back(tried(codec.name + (codec.device.empty() ? "" : " on " + codec.device),
                               LibavEncoder::create(codec, trialPicture)));
    return trials;
}

} // namespace

Task<Findings> checkSound(const Surroundings &around, std::stop_token stop) {
    if (!around.platform)
        co_return Findings{};
    const auto microphones = co_await around.platform->audio->microphones(stop);
    const std::string start =
        "Start PipeWire with pipewire-pulse, or PulseAudio: without one recordings are silent";
    if (!microphones)
        co_return Findings{problemFinding("Sound", microphones.error().description(), start)};
    if (microphones->empty())
        co_return Findings{adviceFinding("Sound", "the sound server answers, no microphone is connected",
                                         "Connect one, or switch it on in the desktop's sound settings")};
    co_return Findings{okFinding("Sound", counted(microphones->size(), "microphone"))};
}

Task<Findings> checkCameras(const Surroundings &around, std::stop_token stop) {
    if (!around.platform || !around.platform->cameras)
        co_return Findings{};
    const auto cameras = co_await around.platform->cameras->cameras(stop);
    if (!cameras)
        co_return Findings{adviceFinding("Cameras", cameras.error().description(),
                                         "Start PipeWire with wireplumber, or check that your user may open "
                                         "/dev/video0 (group video)")};
    co_return Findings{
        okFinding("Cameras", cameras->empty() ? "none is connected" : counted(cameras->size(), "camera"))};
}

Task<Findings> checkEncoders(const Surroundings &, std::stop_token stop) {
    const auto trials = co_await Probe::run(tryAll, stop);
    if (!trials)
        co_return Findings{problemFinding("Encoders", "a trial did not come to its end",
                                          "A graphics driver hangs: set VANTRELL_ENCODER=software")};
    Findings findings;
    for (const Trial &trial : *trials) {
        const bool isSoftware = &trial == &trials->front();
        if (trial.failure.empty())
            findings.push_back(okFinding("Encoders", trial.name + " works"));
        else if (isSoftware)
            findings.push_back(problemFinding("Encoders", trial.name + " does not work: " + trial.failure,
                                              "Reinstall libx264: no recording can be made"));
        else
            findings.push_back(adviceFinding("Encoders", trial.name + " does not work: " + trial.failure,
                                             "The processor does it instead; for the card install its driver "
                                             "(va-driver-all)"));
    }
    co_return findings;
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/EncoderChoice.h"

#include "Media/Encoding/BandEncoder.h"
#include "Media/Encoding/EncoderTrial.h"
#include "Media/Encoding/SlicedX264.h"
#include "Media/Encoding/X264CameraEncoder.h"
#include "Media/Encoding/X264Encoder.h"
#include "Support/Log.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

namespace vantrell {

namespace {

/// As fine as the software encoder's pictures at equal size.
const std::string quantizer = "21";
/// A camera's noise needs no such care.
const std::string cameraQuantizer = "26";

/// Smaller pictures cost no more than a band.
constexpr int fewestBlocksForBands = 256;

std::vector<std::string> renderNodes() {
    std::vector<std::string> nodes;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/dev/dri", error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename().string().starts_with("renderD"))
            nodes.push_back(entry->path());
    std::ranges::sort(nodes);
    return nodes;
}

} // namespace

EncoderPreference encoderPreference(std::string_view text) {
    if (text == "software")
        return EncoderPreference::software;
    return text == "hardware" ? EncoderPreference::hardware : EncoderPreference::automatic;
}

std::vector<LibavEncoder::Codec> hardwareEncoders() {
    std::vector<LibavEncoder::Codec> encoders;
    std::error_code error;
    if (std::filesystem::exists("/dev/nvidiactl", error))
        encoders.push_back({.name = "h264_nvenc",
                            .options = {{"preset", "p3"},
                                        {"tune", "ll"},
                                        {"rc", "constqp"},
                                        {"qp", quantizer},
                                        {"delay", "0"},
                                        {"zerolatency", "1"},
                                        {"forced-idr", "1"}}});
    for (const std::string &node : renderNodes())
        encoders.push_back({.name = "h264_vaapi",
                            .memory = AV_HWDEVICE_TYPE_VAAPI,
                            .device = node,
                            .options = {{"rc_mode", "CQP"}, {"qp", quantizer}, {"async_depth", "1"}}});
    return encoders;
}

std::expected<std::unique_ptr<VideoEncoder>, PlatformError>
EncoderChoice::create(PixelSize picture, PictureContent content, ColourMatrix matrix) {
    const bool isCamera = content != PictureContent::screen;
    const bool wantsHardware =
        m_preference == EncoderPreference::hardware ||
        (m_preference == EncoderPreference::automatic && (isCamera || SlicedX264::isLarge(picture)));
    if (wantsHardware && m_hardwareWorks) {
        if (auto encoder = createHardware(picture, content, matrix))
            return encoder;
        m_hardwareWorks = false;
    }
    if (isCamera)
        return X264CameraEncoder::create(picture, content, matrix);
    return createSoftware(picture);
}

std::expected<std::unique_ptr<VideoEncoder>, PlatformError> EncoderChoice::createSoftware(PixelSize picture) {
    const BlockMap blocks(picture);
    if (blocks.columns() * blocks.rows() < fewestBlocksForBands)
        return X264Encoder::create(picture);
    // The encoder may outlive the choice.
    return BandEncoder::create(
        picture, {.mayUseBands = [trials = m_bandTrials, picture] { return trials->result(picture); }});
}

std::unique_ptr<VideoEncoder> EncoderChoice::createHardware(PixelSize picture, PictureContent content,
                                                            ColourMatrix matrix) {
    for (LibavEncoder::Codec codec : m_hardware) {
        for (auto &[name, value] : codec.options)
            if (name == "qp" && content != PictureContent::screen)
                value = cameraQuantizer;
        auto encoder = LibavEncoder::create(codec, picture, matrix);
        const auto tried = encoder ? tryEncoder(**encoder, picture)
                                   : std::expected<void, PlatformError>(std::unexpect, encoder.error());
        if (tried) {
            qCInfo(logCapture, "encoding with %s", codec.name.c_str());
            return std::move(*encoder);
        }
        qCInfo(logCapture, "not encoding with %s: %s", codec.name.c_str(), tried.error().message.c_str());
    }
    return nullptr;
}

} // namespace vantrell

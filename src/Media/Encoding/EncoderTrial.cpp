// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/EncoderTrial.h"

#include "Media/Encoding/TrialDecoder.h"
#include "Platform/ScreenError.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace vantrell {

namespace {

constexpr int trialFrames = 3;
/// Decibels, of the worst plane: below it letters blur. A working encoder is far above it here.
constexpr double worstPeakToNoise = 32;

PlatformError unfit(std::string why) {
    return screenError(ScreenErrorCode::encoderFailed, std::move(why));
}

/// A few lines of letters over a slowly changing ground; each number's picture differs from the one before.
void drawTrialPicture(Nv12Frame &frame, int number) {
    const auto [width, height] = frame.picture();
    for (int y = 0; y < height; ++y) {
        std::uint8_t *const row = frame.luma() + y * frame.stride();
        const bool hasLetters = y / 12 % 8 == 1;
        for (int x = 0; x < width; ++x) {
            const bool isInk = hasLetters && (x * 7 + y / 3 * 13 + number * 5) % 11 < 3;
            row[x] = std::uint8_t(isInk ? 40 : 120 + (x + 2 * y + number * 8) / 16 % 100);
        }
    }
    for (int y = 0; y < (height + 1) / 2; ++y) {
        std::uint8_t *const row = frame.chroma() + y * frame.stride();
        for (int x = 0; x < (width + 1) / 2; ++x) {
            row[2 * x] = std::uint8_t(96 + x / 8 % 64);
            row[2 * x + 1] = std::uint8_t(96 + y / 8 % 64);
        }
    }
}

double squaredDifference(const std::uint8_t *one, std::ptrdiff_t oneStride, const std::uint8_t *other,
                         std::ptrdiff_t otherStride, int width, int height, int otherStep) {
    double sum = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double difference =
                one[y * oneStride + x] - other[y * otherStride + std::ptrdiff_t(x) * otherStep];
            sum += difference * difference;
        }
    return sum / (double(width) * height);
}

double peakToNoise(double squaredDifference) {
    constexpr double peak = 255;
    return 10 * std::log10(peak * peak / std::max(squaredDifference, 1e-3));
}

/// The worst of the three planes.
double likeness(const AVFrame &decoded, const Nv12Frame &drawn) {
    const auto [width, height] = drawn.picture();
    double worst = squaredDifference(decoded.data[0], decoded.linesize[0], drawn.luma(), drawn.stride(),
                                     width, height, 1);
    for (int plane = 0; plane < 2; ++plane)
        worst = std::max(worst,
                         squaredDifference(decoded.data[1 + plane], decoded.linesize[1 + plane],
                                           drawn.chroma() + plane, drawn.stride(), width / 2, height / 2, 2));
    return peakToNoise(worst);
}

} // namespace

std::expected<void, PlatformError> tryEncoder(VideoEncoder &encoder, PixelSize picture) {
    Nv12Frame drawn(picture);
    BlockMap everything(picture);
    everything.markAll();
    TrialDecoder decoder;
    for (int number = 0; number < trialFrames; ++number) {
        drawTrialPicture(drawn, number);
        const bool wantsKey = number == 0 || number == trialFrames - 1;
        const auto encoded =
            encoder.encode(drawn, everything, std::int64_t(number) * VideoEncoder::timeScale / 60, wantsKey);
        if (!encoded)
            return std::unexpected(encoded.error());
        if (wantsKey && !encoded->isKeyFrame)
            return std::unexpected(unfit("The video encoder makes no key frames when asked"));
        if (number == 0) {
            if (encoder.codecConfiguration().empty())
                return std::unexpected(unfit("The video encoder does not describe its stream"));
            if (const auto opened = decoder.open(encoder.codecConfiguration()); !opened)
                return opened;
        }
        const auto decoded = decoder.decode(encoded->data);
        if (!decoded)
            return std::unexpected(decoded.error());
        const AVFrame &frame = **decoded;
        if (PixelSize{frame.width, frame.height} != encoder.encodedSize() ||
            frame.format != AV_PIX_FMT_YUV420P)
            return std::unexpected(unfit("The video encoder changes the picture's shape"));
        if (likeness(frame, drawn) < worstPeakToNoise)
            return std::unexpected(unfit("The video encoder spoils the picture"));
    }
    return {};
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandTrial.h"

#include "Media/Encoding/BandEncoder.h"
#include "Media/Encoding/TrialDecoder.h"
#include "Media/Encoding/TrialScreen.h"
#include "Platform/ScreenError.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vantrell {

namespace {

constexpr int trialPictures = 46;
/// From this one on a page is scrolled.
constexpr int pageOpens = 40;
constexpr int keyInterval = 16;
constexpr std::uint32_t trialSeed = 7;
constexpr int mostRows = 11;

PlatformError bandsUnfit(std::string why) {
    return screenError(ScreenErrorCode::encoderFailed, std::move(why));
}

/// Bands and strips in the middle and at every edge, in every direction, up to where they may refer to.
void moveSomewhere(TrialScreen &screen, int number) {
    const auto [width, height] = screen.frame().picture();
    const int distance = 2 + number * 6 % 18;
    const int right = number % 4 < 2 ? distance : -distance;
    const int down = number % 2 == 0 ? distance : -distance;
    const int middle = height / 2 / blockEdge * blockEdge;
    // So few blocks are not looked at as a page that is scrolled.
    const int band = std::min(width, ScrollFinder::fewestChanged / 2 * blockEdge - 2 * blockEdge);
    switch (number % 5) {
    case 0:
        return screen.moveUnder({0, middle - blockEdge, band, 2 * blockEdge}, 0, down);
    case 1:
        return screen.moveUnder({width / 2, middle, 6 * blockEdge, blockEdge}, right, 0);
    case 2:
        return screen.moveUnder({width / 3, middle, 6 * blockEdge, blockEdge}, 0, down);
    case 3:
        return screen.moveUnder({0, 0, band, 2 * blockEdge}, right, down);
    default:
        return screen.moveUnder({width - 6 * blockEdge, height - 2 * blockEdge, 6 * blockEdge, 2 * blockEdge},
                                right, down);
    }
}

} // namespace

bool equalsDecoded(const ReconstructedPicture &picture, const AVFrame &decoded) {
    if (decoded.format != AV_PIX_FMT_YUV420P || picture.isNull())
        return false;
    for (int y = 0; y < decoded.height; ++y) {
        if (std::memcmp(picture.luma + y * picture.lumaStride, decoded.data[0] + y * decoded.linesize[0],
                        std::size_t(decoded.width)) != 0)
            return false;
    }
    for (int y = 0; y < decoded.height / 2; ++y) {
        const std::uint8_t *own = picture.chroma + y * picture.chromaStride;
        const std::uint8_t *blue = decoded.data[1] + y * decoded.linesize[1];
        const std::uint8_t *red = decoded.data[2] + y * decoded.linesize[2];
        for (int x = 0; x < decoded.width / 2; ++x) {
            if (own[std::ptrdiff_t(2) * x] != blue[x] || own[std::ptrdiff_t(2) * x + 1] != red[x])
                return false;
        }
    }
    return true;
}

std::expected<void, PlatformError> BandTrial::run(const std::atomic<bool> &isStopping) const {
    const int most = mostRows * blockEdge;
    const PixelSize size{picture.width, picture.height <= most
                                            ? picture.height
                                            : most - blockEdge + picture.height % blockEdge};
    const auto encoder = BandEncoder::create(size, {.mayUseBands = [] { return true; },
                                                    .preparation = SmallEncoders::Preparation::atOnce,
                                                    .isLarge = isLarge,
                                                    .makeSmall = makeSmall});
    if (!encoder)
        return std::unexpected(encoder.error());
    TrialDecoder decoder;
    if (const auto opened = decoder.open((*encoder)->codecConfiguration()); !opened)
        return opened;
    TrialScreen screen(size, trialSeed);
    for (int i = 0; i < trialPictures; ++i) {
        if (isStopping)
            return std::unexpected(bandsUnfit("The trial was not finished"));
        if (i == pageOpens)
            screen.openPage();
        else if (i > pageOpens)
            screen.scrollPage(i % 2 == 0 ? i : pageOpens - i);
        else if (i % 2 == 1)
            moveSomewhere(screen, i / 2);
        else if (i > 0)
            screen.step();
        const auto encoded =
            (*encoder)->encode(screen.frame(), screen.changed(),
                               std::int64_t(i) * VideoEncoder::timeScale / 60, i % keyInterval == 0);
        if (!encoded)
            return std::unexpected(encoded.error());
        const auto decoded = decoder.decode(encoded->data);
        if (!decoded)
            return std::unexpected(decoded.error());
        if (!equalsDecoded((*encoder)->reconstruction(), **decoded))
            return std::unexpected(bandsUnfit("Bands do not fit together"));
    }
    if ((*encoder)->picturesInBands() == 0)
        return std::unexpected(bandsUnfit("Nothing was encoded in bands"));
    return {};
}

} // namespace vantrell

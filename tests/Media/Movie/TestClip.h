// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/EncodedSample.h"
#include "Media/Movie/MovieWriter.h"
#include "Media/Movie/TrackFormat.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace vantrell::testing {

/// Seconds of one tick of a picture track.
inline constexpr double videoTick = 1.0 / 90000;

/// An encoded sample that owns its bytes.
struct OwnedSample {
    std::vector<std::uint8_t> data;
    std::int64_t pts = 0;
    std::int64_t dts = 0;
    bool isKey = false;

    EncodedSample view() const { return {data, pts, dts, isKey}; }
};

struct PictureOptions {
    PixelSize size{64, 64};
    int count = 60;
    /// 90 kHz ticks between pictures.
    int spacing = 1500;
    int keyInterval = 30;
    int bFrames = 0;
    /// Luma of the whole picture, so that a decoder can tell pictures apart.
    std::function<int(int picture)> luma = [](int picture) { return 40 + picture % 100; };
};

struct Pictures {
    VideoTrackFormat format;
    std::vector<OwnedSample> samples;
};

struct Sound {
    AudioTrackFormat format;
    std::vector<OwnedSample> samples;
};

/// Really encoded H.264.
Pictures encodePictures(const PictureOptions &options = {});

/// Really encoded AAC of `seconds`; `wave` gives the amplitude at a time.
Sound encodeSound(double seconds, const std::function<float(double)> &wave, int channels = 1,
                  int sampleRate = 48000);
Sound encodeTone(double seconds, double frequency = 440);

/// A finished movie: the pictures, the sounds (in order), all of it `seconds` long.
void writeMovie(const std::filesystem::path &path, const Pictures &pictures, const std::vector<Sound> &sounds,
                double seconds);

/// Appends all samples; gtest failure when one is refused.
void appendAll(MovieWriter &writer, TrackId track, const std::vector<OwnedSample> &samples);

} // namespace vantrell::testing

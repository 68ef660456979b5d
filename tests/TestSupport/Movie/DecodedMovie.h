// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A movie as another program's demuxer and decoders see it: the independent witness of what was written.
struct DecodedMovie {
    struct Picture {
        double seconds = 0;
        double endSeconds = 0;
        int width = 0;
        int height = 0;
        /// Of the pixel in the middle.
        int luma = 0;
    };
    struct Stream {
        bool isVideo = false;
        std::string name;
        double startSeconds = 0;
        double durationSeconds = 0;
        std::vector<Picture> pictures;
        /// First channel.
        int sampleRate = 0;
        /// Time of each sample of `samples`, by its frame's time stamp.
        std::vector<double> sampleTimes;
        std::vector<float> samples;

        /// Largest amplitude between two times; 0 when nothing is there.
        float peak(double fromSeconds, double toSeconds) const;
    };

    /// Why it could not be read; empty when all was decoded without a complaint.
    std::string error;
    double durationSeconds = 0;
    std::vector<Stream> streams;
};

DecodedMovie decodeMovie(const std::filesystem::path &path);

} // namespace vantrell::testing

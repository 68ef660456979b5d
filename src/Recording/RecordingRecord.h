// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Recording/RawEvent.h"
#include "Recording/RecordingOptions.h"
#include "Support/Clock.h"
#include "Support/JsonReader.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

/// What is known of a recording that is under way or was cut off.
struct RecordingRecord {
    struct Segment {
        /// A name in the captures folder.
        std::filesystem::path file;
        std::optional<double> anchorHostTime;
    };

    RecordingOptions options;
    Clock::WallTime startedAt;
    std::vector<Segment> segments;
    std::vector<RawEvent> events;
    /// Where the whole recording's movie was put, once there is one, and where it was to be moved since:
    /// names in the captures folder and absolute paths. It is in one of them, or on its way between the last
    /// two.
    std::vector<std::filesystem::path> movies;

    /// The same of the camera's layer, if there is one.
    std::vector<Segment> cameraSegments;
    std::vector<std::filesystem::path> cameraMovies;
    /// Of the camera's whole movie, once there is one.
    std::optional<double> cameraAnchor;
    /// What somebody has taken over already: it is not offered again.
    bool isScreenTaken = false;
    bool isCameraTaken = false;
};

/// The movies that a recording may consist of.
enum class RecordingLayer { screen = 1, camera };

/// The record as lines of JSON that are written as things happen, so that a file that breaks off anywhere
/// still says everything up to there.
namespace recordingLines {

std::string beginning(const RecordingOptions &options, Clock::WallTime startedAt);
std::string segment(const std::filesystem::path &file);
/// Of the segment named last.
std::string anchor(double hostTime);
std::string event(const RawEvent &event);
/// In the captures folder.
std::string movie(const std::filesystem::path &file);
/// Anywhere.
std::string movedMovie(const std::filesystem::path &file);
std::string cameraSegment(const std::filesystem::path &file);
std::string cameraAnchor(const std::filesystem::path &file, double hostTime);
/// Anywhere. The anchor is known to the journal when the movie is merely moved.
std::string cameraMovie(const std::filesystem::path &file, std::optional<double> anchorHostTime);
std::string taken(RecordingLayer layer);

/// Reads such lines; what does not end in a line break is left out, and so is everything behind a line that
/// cannot be read. The error: there is no beginning.
std::expected<RecordingRecord, JsonError> read(std::string_view text);

} // namespace recordingLines

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingRecord.h"

#include "Support/FilePath.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace vantrell::recordingLines {

namespace {

using nlohmann::json;

constexpr std::int64_t formatVersion = 1;
constexpr std::string_view screenLayer = "screen";
constexpr std::string_view cameraLayer = "camera";

std::string line(const json &object) {
    // A title that is no UTF-8 must not keep a recording from being written down.
    return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

json fromRect(const Rect &rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

json fromPixels(const PixelRect &rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

template <typename Read>
auto nested(JsonReader &outer, const char *key, Read read) {
    JsonReader inner(outer.object(key), outer.pathTo(key));
    auto value = read(inner);
    outer.adopt(inner);
    return value;
}

Rect toRect(JsonReader &in) {
    return {in.number("x"), in.number("y"), in.number("width"), in.number("height")};
}

PixelRect toPixels(JsonReader &in) {
    return {int(in.integer("x")), int(in.integer("y")), int(in.integer("width")), int(in.integer("height"))};
}

json fromDisplay(const Display &display) {
    return {{"id", display.id},
            {"name", display.name},
            {"frame", fromRect(display.frame)},
            {"pixels", fromPixels(display.pixels)},
            {"scale", display.scale},
            {"isPrimary", display.isPrimary}};
}

Display toDisplay(JsonReader &in) {
    Display display;
    display.id = in.string("id");
    display.name = in.string("name");
    display.frame = nested(in, "frame", toRect);
    display.pixels = nested(in, "pixels", toPixels);
    display.scale = in.number("scale");
    display.isPrimary = in.boolean("isPrimary");
    return display;
}

json fromWindow(const WindowDescription &window) {
    json object{{"id", window.id}, {"frame", fromRect(window.frame)}, {"pixels", fromPixels(window.pixels)}};
    if (window.applicationId)
        object["applicationId"] = *window.applicationId;
    if (window.applicationName)
        object["applicationName"] = *window.applicationName;
    if (window.title)
        object["title"] = *window.title;
    return object;
}

WindowDescription toWindow(JsonReader &in) {
    WindowDescription window;
    window.id = std::uint32_t(in.integer("id"));
    window.applicationId = in.optionalString("applicationId");
    window.applicationName = in.optionalString("applicationName");
    window.title = in.optionalString("title");
    window.frame = nested(in, "frame", toRect);
    window.pixels = nested(in, "pixels", toPixels);
    return window;
}

CaptureTarget toTarget(JsonReader &in) {
    CaptureTarget target;
    target.display = nested(in, "display", toDisplay);
    target.rect = nested(in, "rect", toRect);
    target.scale = in.number("scale");
    target.source = nested(in, "source", toPixels);
    if (in.optionalObject("window"))
        target.window = nested(in, "window", toWindow);
    return target;
}

std::optional<JsonError> readBeginning(const json &object, RecordingRecord &record) {
    JsonReader in(object);
    if (in.integer("version") != formatVersion && !in.error())
        in.fail("version", "unknown");
    record.startedAt = Clock::WallTime(std::chrono::milliseconds(in.integer("startedAtMs")));
    record.options.target = nested(in, "target", toTarget);
    record.options.separateCursor = in.boolean("separateCursor");
    record.options.autoCamera = in.boolean("autoCamera");
    record.options.fps = in.number("fps");
    record.options.recordingId = in.optionalString("recordingId");
    return in.error();
}

RawEvent toEvent(JsonReader &in) {
    const auto kind = inputEventKind(in.string("kind"));
    if (!kind)
        in.fail("kind", "unknown");
    RawEvent event{
        in.number("hostTime"), kind.value_or(InputEvent::Kind::move), {in.number("x"), in.number("y")}, {}};
    if (in.optionalObject("area"))
        event.captureRect = nested(in, "area", toRect);
    return event;
}

void readCameraSegment(JsonReader &in, const json &object, RecordingRecord &record) {
    const std::filesystem::path file = pathFromText(in.string("camera"));
    if (!object.contains("anchor")) {
        record.cameraSegments.push_back({file, {}});
        return;
    }
    for (RecordingRecord::Segment &segment : record.cameraSegments)
        if (segment.file == file)
            segment.anchorHostTime = in.number("anchor");
}

void readTaken(JsonReader &in, RecordingRecord &record) {
    const std::string layer = in.string("taken");
    record.isScreenTaken = record.isScreenTaken || layer == screenLayer;
    record.isCameraTaken = record.isCameraTaken || layer == cameraLayer;
}

/// False when the line is none of ours.
bool readLine(const json &object, RecordingRecord &record) {
    JsonReader in(object);
    if (object.contains("camera"))
        readCameraSegment(in, object, record);
    else if (object.contains("cameraMovie")) {
        record.cameraMovies.emplace_back(pathFromText(in.string("cameraMovie")));
        if (const auto anchor = in.optionalNumber("anchor"))
            record.cameraAnchor = anchor;
    } else if (object.contains("taken"))
        readTaken(in, record);
    else if (object.contains("segment"))
        record.segments.push_back({in.string("segment"), {}});
    else if (object.contains("anchor") && !record.segments.empty())
        record.segments.back().anchorHostTime = in.number("anchor");
    else if (object.contains("event"))
        record.events.push_back(nested(in, "event", toEvent));
    else if (object.contains("movie"))
        record.movies.emplace_back(pathFromText(in.string("movie")));
    else
        return false;
    return !in.error();
}

} // namespace

std::string beginning(const RecordingOptions &options, Clock::WallTime startedAt) {
    const CaptureTarget &target = options.target;
    json described{{"display", fromDisplay(target.display)},
                   {"rect", fromRect(target.rect)},
                   {"scale", target.scale},
                   {"source", fromPixels(target.source)}};
    if (target.window)
        described["window"] = fromWindow(*target.window);
    const auto sinceEpoch =
        std::chrono::duration_cast<std::chrono::milliseconds>(startedAt.time_since_epoch());
    json object{{"version", formatVersion},         {"startedAtMs", std::int64_t(sinceEpoch.count())},
                {"target", std::move(described)},   {"separateCursor", options.separateCursor},
                {"autoCamera", options.autoCamera}, {"fps", options.fps}};
    if (options.recordingId)
        object["recordingId"] = *options.recordingId;
    return line(object);
}

std::string segment(const std::filesystem::path &file) {
    return line({{"segment", file.filename().string()}});
}

std::string anchor(double hostTime) {
    return line({{"anchor", hostTime}});
}

std::string event(const RawEvent &event) {
    json object{{"hostTime", event.hostTime},
                {"kind", spelling(event.kind)},
                {"x", event.location.x},
                {"y", event.location.y}};
    if (event.captureRect)
        object["area"] = fromRect(*event.captureRect);
    return line({{"event", std::move(object)}});
}

std::string movie(const std::filesystem::path &file) {
    return line({{"movie", file.filename().string()}});
}

std::string movedMovie(const std::filesystem::path &file) {
    return line({{"movie", textOfPath(file)}});
}

std::string cameraSegment(const std::filesystem::path &file) {
    return line({{"camera", textOfPath(file.filename())}});
}

std::string cameraAnchor(const std::filesystem::path &file, double hostTime) {
    return line({{"camera", textOfPath(file.filename())}, {"anchor", hostTime}});
}

std::string cameraMovie(const std::filesystem::path &file, std::optional<double> anchorHostTime) {
    json object{{"cameraMovie", textOfPath(file)}};
    if (anchorHostTime)
        object["anchor"] = *anchorHostTime;
    return line(object);
}

std::string taken(RecordingLayer layer) {
    return line({{"taken", layer == RecordingLayer::screen ? screenLayer : cameraLayer}});
}

std::expected<RecordingRecord, JsonError> read(std::string_view text) {
    RecordingRecord record;
    for (bool isFirst = true;; isFirst = false) {
        const std::size_t end = text.find('\n');
        const auto object = end == std::string_view::npos ? std::unexpected(JsonError{"no beginning"})
                                                          : parseJson(text.substr(0, end));
        if (isFirst) {
            if (!object)
                return std::unexpected(object.error());
            if (auto error = readBeginning(*object, record))
                return std::unexpected(std::move(*error));
        } else if (!object || !object->is_object() || !readLine(*object, record)) {
            return record;
        }
        text.remove_prefix(end + 1);
    }
}

} // namespace vantrell::recordingLines

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"

#include "Support/Spellings.h"

#include <QDateTime>

#include <cmath>
#include <limits>

namespace vantrell {

namespace {

using nlohmann::json;

constexpr Spellings<CaptureKind, 4> sources{{{
    {CaptureKind::display, "display"},
    {CaptureKind::area, "region"},
    {CaptureKind::window, "window"},
    {CaptureKind::camera, "camera"},
}}};

/// Whole numbers are written without a fraction.
json number(double value) {
    if (std::nearbyint(value) == value && std::abs(value) < 9e15)
        return json(std::int64_t(value));
    return json(value);
}

template <typename T>
void putOptional(json &object, const char *key, const std::optional<T> &value) {
    if (value)
        object[key] = *value;
}

json toJson(const Size &size) {
    return json{{"width", number(size.width)}, {"height", number(size.height)}};
}

json toJson(const Rect &rect) {
    return json{{"x", number(rect.x)},
                {"y", number(rect.y)},
                {"width", number(rect.width)},
                {"height", number(rect.height)}};
}

json toJson(const WindowInfo &window) {
    json object{{"frame", toJson(window.frame)}, {"hasAlpha", window.hasAlpha}};
    putOptional(object, "appBundleId", window.appBundleId);
    putOptional(object, "appName", window.appName);
    putOptional(object, "title", window.title);
    return object;
}

json toJson(const RecordingInfo &recording) {
    json events = json::array();
    for (const InputEvent &event : recording.events)
        events.push_back(json{{"t", number(event.t)},
                              {"kind", spelling(event.kind)},
                              {"x", number(event.x)},
                              {"y", number(event.y)}});
    json object{{"fps", number(recording.fps)},
                {"durationMs", number(recording.durationMs)},
                {"events", std::move(events)}};
    putOptional(object, "anchorHostTime", recording.anchorHostTime);
    putOptional(object, "cursorInVideo", recording.cursorInVideo);
    putOptional(object, "autoCamera", recording.autoCamera);
    putOptional(object, "recordingId", recording.recordingId);
    return object;
}

Size readSize(JsonReader &parent, const char *key) {
    JsonReader reader(parent.object(key), parent.pathTo(key));
    const Size size{reader.number("width"), reader.number("height")};
    parent.adopt(reader);
    return size;
}

PixelSize readPixelSize(JsonReader &reader, const char *key) {
    const Size size = readSize(reader, key);
    const auto pixels = [](double value) {
        return value >= 0 && value <= std::numeric_limits<int>::max() && std::trunc(value) == value;
    };
    if (pixels(size.width) && pixels(size.height))
        return {int(size.width), int(size.height)};
    reader.fail(key, "is no size in pixels");
    return {};
}

Rect readRect(JsonReader &parent, const char *key) {
    JsonReader reader(parent.object(key), parent.pathTo(key));
    const Rect rect{reader.number("x"), reader.number("y"), reader.number("width"), reader.number("height")};
    parent.adopt(reader);
    return rect;
}

WindowInfo readWindow(JsonReader &parent, const json &object) {
    JsonReader reader(object, parent.pathTo("window"));
    WindowInfo window;
    window.appBundleId = reader.optionalString("appBundleId");
    window.appName = reader.optionalString("appName");
    window.title = reader.optionalString("title");
    window.frame = readRect(reader, "frame");
    window.hasAlpha = reader.boolean("hasAlpha");
    parent.adopt(reader);
    return window;
}

RecordingInfo readRecording(JsonReader &parent, const json &object) {
    JsonReader reader(object, parent.pathTo("recording"));
    RecordingInfo recording;
    recording.fps = reader.number("fps");
    recording.durationMs = reader.number("durationMs");
    for (const json &element : reader.array("events")) {
        JsonReader event(element, reader.pathTo("events"));
        const auto kind = inputEventKind(event.string("kind"));
        if (!kind)
            event.fail("kind", "unknown");
        recording.events.push_back(
            {event.number("t"), kind.value_or(InputEvent::Kind::move), event.number("x"), event.number("y")});
        reader.adopt(event);
    }
    recording.anchorHostTime = reader.optionalNumber("anchorHostTime");
    recording.cursorInVideo = reader.optionalBoolean("cursorInVideo");
    recording.autoCamera = reader.optionalBoolean("autoCamera");
    recording.recordingId = reader.optionalString("recordingId");
    parent.adopt(reader);
    return recording;
}

} // namespace

std::string CaptureMetadata::jsonData() const {
    json object{
        {"version", version},
        {"type", type},
        {"capturedAt", capturedAt},
        {"source", sources.of(source)},
        {"display", {{"size", toJson(display.size)}, {"scaleFactor", number(display.scaleFactor)}}},
        {"pixelSize", {{"width", pixelSize.width}, {"height", pixelSize.height}}},
    };
    if (window)
        object["window"] = toJson(*window);
    if (region)
        object["region"] = toJson(*region);
    if (recording)
        object["recording"] = toJson(*recording);
    // A window title is whatever its application made of it: broken UTF-8 must not lose the document.
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::expected<CaptureMetadata, JsonError> CaptureMetadata::fromJson(std::string_view text) {
    const auto document = parseJson(text);
    if (!document)
        return std::unexpected(document.error());
    JsonReader reader(*document);
    CaptureMetadata metadata;
    metadata.version = reader.integer("version");
    metadata.type = reader.string("type");
    metadata.capturedAt = reader.string("capturedAt");
    const auto source = sources.find(reader.string("source"));
    if (!source)
        reader.fail("source", "unknown");
    metadata.source = source.value_or(CaptureKind::display);
    JsonReader display(reader.object("display"), "display");
    metadata.display = {readSize(display, "size"), display.number("scaleFactor")};
    reader.adopt(display);
    metadata.pixelSize = readPixelSize(reader, "pixelSize");
    if (const json *window = reader.optionalObject("window"))
        metadata.window = readWindow(reader, *window);
    if (reader.optionalObject("region"))
        metadata.region = readRect(reader, "region");
    if (const json *recording = reader.optionalObject("recording"))
        metadata.recording = readRecording(reader, *recording);
    if (reader.error())
        return std::unexpected(*reader.error());
    return metadata;
}

std::string iso8601(std::chrono::system_clock::time_point time) {
    const qint64 seconds = std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString("yyyy-MM-ddTHH:mm:ssZ").toStdString();
}

} // namespace vantrell

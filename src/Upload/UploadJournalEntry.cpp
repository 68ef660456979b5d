// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadJournalEntry.h"

#include "Capture/CaptureMetadata.h"
#include "Support/FilePath.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vantrell {

namespace {

using Phase = UploadJournalEntry::Phase;

constexpr std::array<std::pair<Phase, const char *>, 4> phaseNames{{
    {Phase::queued, "queued"},
    {Phase::uploading, "uploading"},
    {Phase::confirming, "confirming"},
    {Phase::failed, "failed"},
}};

const char *nameOf(Phase phase) {
    return std::ranges::find(phaseNames, phase, &std::pair<Phase, const char *>::first)->second;
}

Phase readPhase(JsonReader &reader) {
    const std::string text = reader.string("phase");
    for (const auto &[phase, name] : phaseNames) {
        if (text == name)
            return phase;
    }
    reader.fail("phase", "has an unknown value");
    return Phase::queued;
}

/// True when `text` looks like `shape`, in which "d" stands for a digit and "x" for a hexadecimal one.
bool hasShape(std::string_view text, std::string_view shape) {
    return std::ranges::equal(text, shape, [](char c, char wanted) {
        const bool isDigit = c >= '0' && c <= '9';
        if (wanted == 'd')
            return isDigit;
        if (wanted == 'x')
            return isDigit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        return c == wanted;
    });
}

QUuid readUuid(JsonReader &reader, const char *key) {
    const std::string text = reader.string(key);
    if (!hasShape(text, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx")) {
        reader.fail(key, "is no UUID");
        return {};
    }
    return QUuid::fromString(QLatin1StringView(text.data(), qsizetype(text.size())));
}

std::chrono::sys_seconds readDate(JsonReader &reader, const char *key) {
    using namespace std::chrono;
    const std::string text = reader.string(key);
    if (hasShape(text, "dddd-dd-ddTdd:dd:ddZ")) {
        const auto number = [&text](size_t from, size_t digits) {
            int value = 0;
            for (size_t i = from; i < from + digits; ++i)
                value = value * 10 + (text[i] - '0');
            return value;
        };
        const year_month_day date(year(number(0, 4)), month(unsigned(number(5, 2))),
                                  day(unsigned(number(8, 2))));
        const int h = number(11, 2);
        const int m = number(14, 2);
        const int s = number(17, 2);
        if (date.ok() && h < 24 && m < 60 && s < 60)
            return sys_days(date) + hours(h) + minutes(m) + seconds(s);
    }
    reader.fail(key, "is no date like 2026-03-05T14:07:09Z");
    return {};
}

} // namespace

void UploadJournalEntry::reset() {
    assetId.reset();
    tusLocation.reset();
    phase = Phase::queued;
}

nlohmann::json UploadJournalEntry::encode() const {
    nlohmann::json object{
        {"captureId", captureId.toString(QUuid::WithoutBraces).toUpper().toStdString()},
        {"createdAt", iso8601(createdAt)},
        {"kind", kind},
        {"masterPath", textOfPath(masterPath)},
        {"mime", mime},
        {"phase", nameOf(phase)},
        {"projectId", projectId},
    };
    const auto put = [&object](const char *key, const auto &value) {
        if (value)
            object[key] = *value;
    };
    put("name", name);
    put("durationMs", durationMs);
    put("thumbPath", thumbPath.transform(textOfPath));
    put("metaPath", metaPath.transform(textOfPath));
    put("assetId", assetId);
    put("tusLocation", tusLocation);
    put("failureReason", failureReason);
    put("projectGone", projectGone);
    return object;
}

UploadJournalEntry UploadJournalEntry::decode(JsonReader &reader) {
    return {
        .captureId = readUuid(reader, "captureId"),
        .projectId = reader.string("projectId"),
        .kind = reader.string("kind"),
        .mime = reader.string("mime"),
        .name = reader.optionalString("name"),
        .durationMs = reader.optionalInteger("durationMs"),
        .masterPath = pathFromText(reader.string("masterPath")),
        .thumbPath = reader.optionalString("thumbPath").transform(pathFromText),
        .metaPath = reader.optionalString("metaPath").transform(pathFromText),
        .assetId = reader.optionalString("assetId"),
        .tusLocation = reader.optionalString("tusLocation"),
        .phase = readPhase(reader),
        .failureReason = reader.optionalString("failureReason"),
        .projectGone = reader.optionalBoolean("projectGone"),
        .createdAt = readDate(reader, "createdAt"),
    };
}

} // namespace vantrell

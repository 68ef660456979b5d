// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingRecovery.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieJoin.h"
#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/MovieRecovery.h"
#include "Recording/CameraLayer.h"
#include "Recording/FinishedRecording.h"
#include "Recording/RecordingJournal.h"
#include "Recording/RecordingRecord.h"
#include "Recording/SegmentMovie.h"
#include "Support/AtomicFile.h"
#include "Support/DiskFile.h"
#include "Support/Log.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <set>
#include <system_error>

namespace vantrell {

namespace {

namespace fs = std::filesystem;

bool isRecordingJournal(const fs::path &path) {
    return path.extension() == ".recording";
}

std::expected<RecordingRecord, PlatformError> readRecord(const fs::path &journal) {
    const auto text = readFile(journal);
    if (!text)
        return std::unexpected(text.error());
    auto record = recordingLines::read(*text);
    if (!record)
        return std::unexpected(PlatformError{"recording", 1, "damaged journal: " + record.error().message});
    return std::move(*record);
}

PlatformError stillInUse() {
    return {"posix", EWOULDBLOCK, "The recording is still being saved"};
}

/// A layer's whole movie, joined before it was cut off, in the newest place where it is.
std::optional<fs::path> finishedMovie(const std::vector<fs::path> &places, const fs::path &folder) {
    for (auto place = places.rbegin(); place != places.rend(); ++place)
        if (readMovieFacts(folder / *place))
            return folder / *place;
    return std::nullopt;
}

std::expected<std::vector<RecordedSegment>, Failure>
usableSegments(const RecordingRecord &record, const fs::path &folder, const std::optional<fs::path> &whole) {
    std::vector<RecordedSegment> usable;
    for (const RecordingRecord::Segment &segment : record.segments) {
        // A recording of one segment is that segment, wherever it was moved.
        const bool isWhole = whole && record.movies.front() == segment.file;
        const fs::path movie = isWhole ? *whole : folder / segment.file;
        const auto durationMs = durationOfMovie(movie);
        if (!durationMs)
            return std::unexpected(Failure(durationMs.error()));
        if (*durationMs > 0)
            usable.push_back({movie, segment.anchorHostTime.value_or(0), *durationMs});
    }
    return usable;
}

std::expected<fs::path, Failure> wholeMovie(const std::vector<RecordedSegment> &segments) {
    if (segments.size() == 1)
        return segments.front().fileURL;
    std::vector<fs::path> files;
    for (const RecordedSegment &segment : segments)
        files.push_back(segment.fileURL);
    const fs::path output = CaptureStorage::newFileURL("mov");
    const auto joined = joinMovies(files, output);
    if (joined)
        return output;
    if (const auto *error = std::get_if<PlatformError>(&joined.error()))
        return std::unexpected(Failure(*error));
    return std::unexpected(Failure(CaptureError::encodeFailed));
}

/// All that is known of a movie whose recording's journal is lost: what it shows of itself.
RecordingRecord recordOfOrphan(const fs::path &movie) {
    RecordingRecord record;
    record.segments.push_back({movie.filename(), {}});
    std::error_code failure;
    const auto written = fs::last_write_time(movie, failure);
    if (!failure)
        record.startedAt =
            std::chrono::time_point_cast<Clock::WallTime::duration>(std::chrono::file_clock::to_sys(written));
    const auto facts = readMovieFacts(movie);
    if (!facts)
        return record;
    for (const MovieFacts::Track &track : facts->tracks)
        if (track.isVideo) {
            Display display;
            display.pixels = {0, 0, track.size.width, track.size.height};
            display.frame = toPoints(display.pixels, 1);
            record.options.target = CaptureTarget::wholeDisplay(display);
            break;
        }
    return record;
}

/// However long it lay there, to its user it is new.
void makeNew(const fs::path &movie) {
    std::error_code ignored;
    fs::last_write_time(movie, fs::file_time_type::clock::now(), ignored);
}

std::expected<std::optional<CaptureResult>, Failure> recoverScreen(RecordingRecord record,
                                                                   std::vector<RecordedSegment> segments,
                                                                   const std::optional<fs::path> &whole,
                                                                   Clock::WallTime now) {
    FinishedRecording recording;
    if (segments.empty())
        return std::nullopt;
    recording.segments = std::move(segments);
    const auto movie = whole ? *whole : wholeMovie(recording.segments);
    if (!movie)
        return std::unexpected(movie.error());
    recording.movie = *movie;
    recording.options = std::move(record.options);
    recording.startedAt = record.startedAt;
    recording.events = std::move(record.events);
    recording.now = now;
    recording.nameSuffix = recoveredSuffix;
    auto capture = describeRecording(recording);
    if (!capture)
        return std::unexpected(Failure(capture.error()));
    makeNew(recording.movie);
    qCInfo(logCapture, "recording recovered");
    return std::optional(std::move(*capture));
}

std::expected<std::optional<CaptureResult>, Failure> recoverCamera(const RecordingRecord &record,
                                                                   const std::vector<RecordedSegment> &screen,
                                                                   const fs::path &journal,
                                                                   Clock::WallTime now) {
    const fs::path folder = journal.parent_path();
    CameraLayer layer;
    layer.screen = screen;
    layer.startedAt = record.startedAt;
    layer.now = now;
    layer.nameSuffix = recoveredSuffix;
    layer.recordingId = record.options.recordingId;
    layer.journal = journal;
    for (const RecordingRecord::Segment &segment : record.cameraSegments)
        if (segment.anchorHostTime)
            layer.files.push_back({folder / segment.file, *segment.anchorHostTime, 0});
        else if (const auto durationMs = durationOfMovie(folder / segment.file); !durationMs)
            // No picture came, or just the first: it is finished all the same, so that nobody takes it for a
            // recording of its own.
            return std::unexpected(Failure(durationMs.error()));
    const auto whole = finishedMovie(record.cameraMovies, folder);
    auto capture = whole && record.cameraAnchor ? describeCameraMovie(*whole, *record.cameraAnchor, layer)
                                                : makeCameraCapture(std::move(layer));
    if (capture && *capture)
        makeNew((*capture)->fileURL);
    return capture;
}

std::expected<RecordingRecovery::Recovered, Failure>
recoverRecord(RecordingRecord record, const fs::path &journal, Clock::WallTime now) {
    const fs::path folder = journal.parent_path();
    const auto whole = finishedMovie(record.movies, folder);
    const auto segments = usableSegments(record, folder, whole);
    if (!segments)
        return std::unexpected(segments.error());
    RecordingRecovery::Recovered recovered;
    if (!record.isCameraTaken) {
        auto camera = recoverCamera(record, *segments, journal, now);
        if (!camera)
            return std::unexpected(std::move(camera.error()));
        recovered.camera = std::move(*camera);
    }
    if (!record.isScreenTaken) {
        auto screen = recoverScreen(std::move(record), *segments, whole, now);
        if (!screen)
            return std::unexpected(std::move(screen.error()));
        recovered.screen = std::move(*screen);
    }
    return recovered;
}

std::vector<fs::path> segmentFiles(const RecordingRecord &record) {
    std::vector<fs::path> files;
    for (const auto *segments : {&record.segments, &record.cameraSegments})
        for (const RecordingRecord::Segment &segment : *segments)
            files.push_back(segment.file);
    return files;
}

/// Two layers may be taken over at the same moment.
std::mutex &takingOver() {
    static std::mutex mutex;
    return mutex;
}

} // namespace

std::vector<fs::path> RecordingRecovery::abandoned(const fs::path &folder) {
    removeAbandonedJoins(folder);
    std::vector<fs::path> found;
    std::set<fs::path> known;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; entry != end && !failure;
         entry.increment(failure)) {
        if (!isRecordingJournal(entry->path()))
            continue;
        // A recording under way names its movies too, which are then nobody else's.
        if (const auto record = readRecord(entry->path()))
            for (const fs::path &movie : segmentFiles(*record))
                known.insert(folder / movie);
        const auto file = DiskFile::openForWriting(entry->path());
        if (file && file->lock())
            found.push_back(entry->path());
    }
    for (fs::path &movie : unfinishedMovies(folder))
        if (!known.contains(movie))
            found.push_back(std::move(movie));
    std::ranges::sort(found);
    return found;
}

std::vector<fs::path> RecordingRecovery::needed(const fs::path &folder) {
    std::vector<fs::path> files;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; entry != end && !failure;
         entry.increment(failure)) {
        const fs::path &file = entry->path();
        if (const auto movie = MovieJournal::movieFor(file)) {
            files.insert(files.end(), {file, *movie});
        } else if (isRecordingJournal(file)) {
            files.push_back(file);
            const auto record = readRecord(file);
            if (!record)
                continue;
            for (const fs::path &segment : segmentFiles(*record))
                files.push_back(folder / segment);
            for (const auto *places : {&record->movies, &record->cameraMovies})
                for (const fs::path &place : *places)
                    files.push_back(folder / place);
        }
    }
    return files;
}

std::expected<RecordingRecovery::Recovered, Failure> RecordingRecovery::recover(const fs::path &what,
                                                                                Clock::WallTime now) {
    if (!isRecordingJournal(what)) {
        // Made whole first: what is known of it is in it.
        const auto durationMs = durationOfMovie(what);
        if (!durationMs)
            return std::unexpected(Failure(durationMs.error()));
        if (*durationMs <= 0)
            return Recovered();
        return recoverRecord(recordOfOrphan(what), what, now);
    }
    const auto journal = DiskFile::openForWriting(what);
    if (!journal)
        return std::unexpected(Failure(journal.error()));
    if (!journal->lock())
        return std::unexpected(Failure(stillInUse()));
    auto record = readRecord(what);
    if (!record) {
        // Its movies, if there are any, are found as movies without a recording.
        qCCritical(logCapture, "recording's journal dropped: %s", record.error().message.c_str());
        forgetWhole(what);
        return Recovered();
    }
    auto recovered = recoverRecord(std::move(*record), what, now);
    if (recovered && !recovered->screen && !recovered->camera)
        forgetWhole(what);
    return recovered;
}

void RecordingRecovery::noteMove(const fs::path &what, const fs::path &newPlace, RecordingLayer layer) {
    if (!isRecordingJournal(what))
        return;
    const std::string line = layer == RecordingLayer::screen
                                 ? recordingLines::movedMovie(newPlace)
                                 : recordingLines::cameraMovie(newPlace, std::nullopt);
    if (const auto noted = RecordingJournal::append(what, line); !noted)
        qCCritical(logCapture, "recording's journal not written: %s", noted.error().message.c_str());
}

bool RecordingRecovery::forget(const fs::path &what, RecordingLayer layer) {
    if (!isRecordingJournal(what))
        return false;
    const std::scoped_lock lock(takingOver());
    const auto record = readRecord(what);
    const bool isLeft =
        record && (layer == RecordingLayer::screen ? !record->cameraSegments.empty() && !record->isCameraTaken
                                                   : !record->segments.empty() && !record->isScreenTaken);
    if (!isLeft)
        return RecordingJournal::remove(what);
    const auto noted = RecordingJournal::append(what, recordingLines::taken(layer));
    if (!noted)
        qCCritical(logCapture, "recording's journal not written: %s", noted.error().message.c_str());
    return noted.has_value();
}

void RecordingRecovery::forgetWhole(const fs::path &what) {
    if (isRecordingJournal(what))
        RecordingJournal::remove(what);
}

} // namespace vantrell

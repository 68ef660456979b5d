// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingRecovery.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieJoin.h"
#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/MovieRecovery.h"
#include "Recording/FinishedRecording.h"
#include "Recording/RecordingJournal.h"
#include "Recording/RecordingRecord.h"
#include "Support/AtomicFile.h"
#include "Support/DiskFile.h"
#include "Support/Log.h"

#include <algorithm>
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

/// What the system refuses now it may allow later; a damaged file stays damaged.
bool mayPass(const PlatformError &error) {
    return error.domain == "posix";
}

PlatformError stillInUse() {
    return {"posix", EWOULDBLOCK, "The recording is still being saved"};
}

/// Whole or made whole; 0 when there is nothing in it. The error is worth another try.
std::expected<double, PlatformError> durationOfMovie(const fs::path &movie) {
    if (fs::exists(MovieJournal::pathFor(movie)))
        if (const auto recovered = recoverMovie(movie); !recovered) {
            qCCritical(logCapture, "segment not recovered: %s", recovered.error().message.c_str());
            if (recovered.error().code == EWOULDBLOCK && mayPass(recovered.error()))
                return std::unexpected(stillInUse());
            if (mayPass(recovered.error()))
                return std::unexpected(recovered.error());
            return 0;
        }
    if (!fs::exists(movie))
        return 0;
    const auto facts = readMovieFacts(movie);
    if (facts)
        return facts->durationMs;
    qCCritical(logCapture, "segment not readable: %s", facts.error().message.c_str());
    return 0;
}

/// The whole recording, joined before it was cut off, in the newest place where it is.
std::optional<fs::path> finishedMovie(const RecordingRecord &record, const fs::path &folder) {
    for (auto place = record.movies.rbegin(); place != record.movies.rend(); ++place)
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

std::expected<std::optional<CaptureResult>, Failure>
recoverRecord(RecordingRecord record, const fs::path &folder, Clock::WallTime now) {
    FinishedRecording recording;
    const auto whole = finishedMovie(record, folder);
    auto segments = usableSegments(record, folder, whole);
    if (!segments)
        return std::unexpected(segments.error());
    if (segments->empty())
        return std::nullopt;
    recording.segments = std::move(*segments);
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
    // However long it lay there, to its user it is new.
    std::error_code ignored;
    fs::last_write_time(recording.movie, fs::file_time_type::clock::now(), ignored);
    qCInfo(logCapture, "recording recovered");
    return std::optional(std::move(*capture));
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
            for (const RecordingRecord::Segment &segment : record->segments)
                known.insert(folder / segment.file);
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
            for (const RecordingRecord::Segment &segment : record->segments)
                files.push_back(folder / segment.file);
            for (const fs::path &place : record->movies)
                files.push_back(folder / place);
        }
    }
    return files;
}

std::expected<std::optional<CaptureResult>, Failure> RecordingRecovery::recover(const fs::path &what,
                                                                                Clock::WallTime now) {
    const fs::path folder = what.parent_path();
    if (!isRecordingJournal(what)) {
        // Made whole first: what is known of it is in it.
        const auto durationMs = durationOfMovie(what);
        if (!durationMs)
            return std::unexpected(Failure(durationMs.error()));
        if (*durationMs <= 0)
            return std::nullopt;
        return recoverRecord(recordOfOrphan(what), folder, now);
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
        forget(what);
        return std::nullopt;
    }
    auto recovered = recoverRecord(std::move(*record), folder, now);
    if (recovered && !*recovered)
        forget(what);
    return recovered;
}

void RecordingRecovery::noteMove(const fs::path &what, const fs::path &newPlace) {
    if (!isRecordingJournal(what))
        return;
    const auto noted = [&]() -> std::expected<void, PlatformError> {
        const auto journal = DiskFile::openForWriting(what);
        if (!journal)
            return std::unexpected(journal.error());
        const auto end = journal->size();
        if (!end)
            return std::unexpected(end.error());
        const std::string line = recordingLines::movedMovie(newPlace);
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(line.data());
        if (const auto written = journal->writeAt(*end, std::span(bytes, line.size())); !written)
            return written;
        return journal->syncData();
    }();
    if (!noted)
        qCCritical(logCapture, "recording's journal not written: %s", noted.error().message.c_str());
}

void RecordingRecovery::forget(const fs::path &what) {
    if (isRecordingJournal(what))
        RecordingJournal::remove(what);
}

} // namespace vantrell

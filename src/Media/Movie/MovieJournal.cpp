// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieJournal.h"

#include "Media/Movie/ByteWriter.h"
#include "Media/Movie/Crc32c.h"
#include "Media/Movie/MovieJournalLayout.h"

#include <unistd.h>

namespace vantrell {

using namespace journalLayout;

namespace {

constexpr std::string_view journalSuffix = ".journal";
constexpr std::uint64_t reserveStep = std::uint64_t(256) << 10;

std::expected<void, PlatformError> writeNote(const DiskFile &file, std::uint64_t place,
                                             std::uint64_t sequence, std::uint64_t value) {
    ByteWriter out;
    out.u64(sequence);
    out.u64(value);
    out.u32(crc32c(out.view()));
    return file.writeAt(place + (sequence % 2) * noteSpacing, out.view());
}

} // namespace

std::filesystem::path MovieJournal::pathFor(const std::filesystem::path &movie) {
    return movie.string() + std::string(journalSuffix);
}

std::optional<std::filesystem::path> MovieJournal::movieFor(const std::filesystem::path &journal) {
    if (journal.extension() != journalSuffix || journal.stem().extension() != ".mov")
        return std::nullopt;
    return std::filesystem::path(journal).replace_extension();
}

std::expected<MovieJournal, PlatformError> MovieJournal::create(const std::filesystem::path &movie) {
    auto file = DiskFile::create(pathFor(movie));
    if (!file)
        return std::unexpected(file.error());
    if (const auto locked = file->lock(); !locked)
        return std::unexpected(locked.error());
    ByteWriter head;
    head.text(magic);
    head.zeros(recordsBegin - head.size());
    if (const auto written = file->writeAt(0, head.view()); !written) {
        ::unlink(pathFor(movie).c_str());
        return std::unexpected(written.error());
    }
    MovieJournal journal(std::move(*file));
    journal.m_end = recordsBegin;
    return journal;
}

std::expected<void, PlatformError> MovieJournal::append(const std::vector<std::uint8_t> &payload) {
    ByteWriter record;
    record.u32(std::uint32_t(payload.size()));
    record.u32(crc32c(payload));
    record.bytes(payload);
    // Room is taken in steps ahead of need: a full disk shows here, where nothing is half-written.
    while (m_end + record.size() > m_reserved) {
        if (const auto reserved = m_file.reserve(m_reserved + reserveStep); !reserved)
            return reserved;
        m_reserved += reserveStep;
    }
    if (const auto written = m_file.writeAt(m_end, record.view()); !written)
        return written;
    m_end += record.size();
    return {};
}

std::expected<void, PlatformError> MovieJournal::addTrack(const TrackDescription &track) {
    ByteWriter out;
    out.u8(trackRecord);
    out.u8(track.kind == TrackKind::video ? 0 : 1);
    out.u32(track.timeScale);
    out.u32(std::uint32_t(track.size.width));
    out.u32(std::uint32_t(track.size.height));
    out.u32(track.samplesPerPacket);
    out.u32(track.priming);
    out.u16(std::uint16_t(track.name.size()));
    out.text(track.name);
    out.u16(std::uint16_t(track.sampleDescriptions.size()));
    for (const std::vector<std::uint8_t> &entry : track.sampleDescriptions) {
        out.u32(std::uint32_t(entry.size()));
        out.bytes(entry);
    }
    return append(out.view());
}

std::expected<void, PlatformError> MovieJournal::addChunk(std::uint32_t track, std::uint64_t offset,
                                                          std::span<const std::uint8_t> data,
                                                          std::span<const SampleEntry> samples) {
    ByteWriter out;
    out.reserve(40 + samples.size() * sampleBytes);
    out.u8(chunkRecord);
    out.u32(track);
    out.u64(offset);
    out.u64(data.size());
    out.u32(crc32c(data));
    out.u32(std::uint32_t(samples.size()));
    for (const SampleEntry &sample : samples) {
        out.u32(sample.size);
        out.u8(sample.isKey ? 1 : 0);
        out.i64(sample.dts);
        out.i32(sample.compositionOffset);
    }
    return append(out.view());
}

std::expected<void, PlatformError> MovieJournal::addEnds(std::span<const std::optional<std::int64_t>> ends) {
    ByteWriter out;
    out.u8(endsRecord);
    out.u32(std::uint32_t(ends.size()));
    for (const std::optional<std::int64_t> &end : ends) {
        out.u8(end ? 1 : 0);
        out.i64(end.value_or(0));
    }
    return append(out.view());
}

std::expected<void, PlatformError> MovieJournal::noteElapsed(double seconds) {
    return writeNote(m_file, elapsedNote, ++m_elapsedCount, std::bit_cast<std::uint64_t>(seconds));
}

std::expected<void, PlatformError> MovieJournal::noteSynced(std::uint64_t end) {
    return writeNote(m_file, syncedNote, ++m_syncedCount, end);
}

std::expected<DiskFile, PlatformError> lockMovieJournal(const std::filesystem::path &journal) {
    auto file = DiskFile::openForWriting(journal);
    if (!file)
        return file;
    if (const auto locked = file->lock(); !locked)
        return std::unexpected(locked.error());
    return file;
}

} // namespace vantrell

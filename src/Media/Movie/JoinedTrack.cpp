// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/JoinedTrack.h"

#include <algorithm>

namespace vantrell {

namespace {

std::int64_t presented(const MovieIndex::Sample &sample) {
    return sample.dts + sample.compositionOffset;
}

/// The samples of [from, until) in media time, with what decoding them needs.
std::pair<std::size_t, std::size_t> sampleRange(const MovieIndex::Track &track, std::int64_t from,
                                                std::int64_t until) {
    const auto &samples = track.samples;
    std::size_t begin = 0;
    std::size_t end = samples.size();
    while (end > 0 && presented(samples[end - 1]) >= until)
        --end;
    if (track.description.kind == TrackKind::video) {
        for (std::size_t i = 0; i < end && presented(samples[i]) <= from; ++i)
            if (samples[i].isKey)
                begin = i;
    } else {
        while (begin < end && presented(samples[begin]) + samples[begin].duration <= from)
            ++begin;
        // Each packet completes the one before it.
        if (begin > 0)
            --begin;
    }
    return {begin, end};
}

} // namespace

JoinedTrack::JoinedTrack(const TrackDescription &first) : m_description(first) {
    m_description.sampleDescriptions.clear();
}

std::vector<JoinedTrack::Piece> JoinedTrack::pieces(const MovieIndex::Track &source,
                                                    std::uint32_t sourceTimeScale,
                                                    std::int64_t cursor) const {
    const std::uint32_t mediaScale = source.description.timeScale;
    std::vector<Edit> edits = source.edits;
    if (edits.empty())
        edits.push_back({rescale(source.mediaDuration, mediaScale, sourceTimeScale), 0});
    std::vector<Piece> result;
    for (const Edit &edit : edits) {
        const std::int64_t next = cursor + rescale(edit.duration, sourceTimeScale, movieTimeScale);
        if (edit.mediaTime != emptyEdit && edit.duration > 0) {
            const std::int64_t until = edit.mediaTime + rescale(edit.duration, sourceTimeScale, mediaScale);
            const auto [begin, end] = sampleRange(source, edit.mediaTime, until);
            Piece piece{begin, end, 0, rescale(cursor, movieTimeScale, m_description.timeScale),
                        rescale(next, movieTimeScale, m_description.timeScale)};
            piece.zero = piece.shownFrom - rescale(edit.mediaTime, mediaScale, m_description.timeScale);
            if (begin < end)
                result.push_back(piece);
        }
        cursor = next;
    }
    return result;
}

std::int64_t JoinedTrack::timeOf(const MovieIndex::Track &source, const Piece &piece,
                                 std::size_t sample) const {
    return piece.zero +
           rescale(source.samples[sample].dts, source.description.timeScale, m_description.timeScale);
}

std::int64_t JoinedTrack::countedEnd() const {
    return m_samples.front().dts + std::int64_t(m_samples.size()) * m_packet;
}

void JoinedTrack::dropBefore(std::int64_t start) {
    while (!m_samples.empty() && m_samples.back().dts >= start)
        m_samples.pop_back();
    if (m_description.kind == TrackKind::audio)
        while (m_samples.size() > 1 && countedEnd() > start + m_packet / 2)
            m_samples.pop_back();
}

void JoinedTrack::prepare(const MovieIndex::Track &source, std::uint32_t sourceTimeScale, std::int64_t cursor,
                          const WriteSilence &writeSilence) {
    const std::vector<Piece> upcoming = pieces(source, sourceTimeScale, cursor);
    if (upcoming.empty() || m_samples.empty())
        return;
    const std::int64_t start = timeOf(source, upcoming.front(), upcoming.front().begin);
    dropBefore(start);
    if (m_description.kind != TrackKind::audio || m_samples.empty())
        return;
    // Half a packet more or less is within what counting may be off.
    std::int64_t at = std::max(countedEnd(), m_samples.back().dts + m_packet);
    const std::int64_t missing = (start - at + m_packet / 2) / m_packet;
    if (missing <= 0)
        return;
    const auto silence = writeSilence(std::size_t(missing));
    for (std::int64_t i = 0; silence && i < missing; ++i, at += m_packet)
        m_samples.push_back({silence->offset + std::uint64_t(i) * silence->packetBytes, at,
                             silence->packetBytes, 0, std::uint16_t(m_description.sampleDescriptions.size()),
                             true});
}

std::uint16_t JoinedTrack::descriptionIndex(const std::vector<std::uint8_t> &entry) {
    auto &entries = m_description.sampleDescriptions;
    const auto found = std::ranges::find(entries, entry);
    const auto index = std::uint16_t(found - entries.begin() + 1);
    if (found == entries.end())
        entries.push_back(entry);
    return index;
}

void JoinedTrack::append(const MovieIndex::Track &source, std::uint32_t sourceTimeScale, std::int64_t cursor,
                         std::uint64_t shift) {
    const std::uint32_t mediaScale = source.description.timeScale;
    const bool isAudio = m_description.kind == TrackKind::audio;
    for (const Piece &piece : pieces(source, sourceTimeScale, cursor)) {
        const std::int64_t start = timeOf(source, piece, piece.begin);
        if (m_samples.empty()) {
            m_description.priming =
                isAudio ? std::uint32_t(std::max<std::int64_t>(piece.shownFrom - start, 0)) : 0;
            m_packet = std::max<std::int64_t>(
                1, rescale(source.samples.front().duration, mediaScale, m_description.timeScale));
        }
        dropBefore(start);
        for (std::size_t i = piece.begin; i < piece.end; ++i) {
            const MovieIndex::Sample &sample = source.samples[i];
            m_samples.push_back(
                {sample.offset + shift, timeOf(source, piece, i), sample.size,
                 std::int32_t(rescale(sample.compositionOffset, mediaScale, m_description.timeScale)),
                 descriptionIndex(source.description.sampleDescriptions[sample.description - 1U]),
                 sample.isKey});
        }
        m_end = piece.shownUntil;
    }
}

std::vector<Edit> JoinedTrack::finish(MovieAssembler &movie) const {
    const std::uint32_t track = movie.addTrack(m_description);
    std::vector<SampleEntry> chunk;
    for (std::size_t i = 0; i < m_samples.size();) {
        const Sample &first = m_samples[i];
        std::uint64_t end = first.offset;
        chunk.clear();
        for (; i < m_samples.size() && m_samples[i].offset == end &&
               m_samples[i].description == first.description;
             ++i) {
            const Sample &sample = m_samples[i];
            chunk.push_back({sample.size, sample.isKey, sample.dts, sample.compositionOffset});
            end += sample.size;
        }
        movie.adoptChunk(track, first.offset, end - first.offset, chunk, first.description);
    }
    SampleTable &samples = movie.samples(track);
    if (m_description.kind == TrackKind::audio)
        samples.endAt(samples.lastDts() + m_packet);
    else
        samples.endAt(m_end);
    return presentationEdits(m_description, samples, std::min(m_end, samples.endDts()));
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/SmallEncoders.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// Up to this many macroblocks an encoder is made in less than a millisecond.
constexpr int smallBlocks = 32;

/// What the smallest takes, in macroblocks: 0.5 MiB and 2 KiB.
constexpr int ownWeight = 200;

int weightOf(const SmallEncoder &encoder) {
    return ownWeight + encoder.columns() * encoder.rows();
}

} // namespace

std::vector<SmallEncoder *> SmallEncoders::forPlaces(std::span<const BlockArea> places) {
    takeOverPrepared();
    makeRoom();
    ++m_picture;
    std::vector<SmallEncoder *> found;
    std::vector<Shape> missing;
    for (const BlockArea &place : places) {
        const Shape shape{place.columns, place.rows};
        Entry *entry = unused(place);
        if (!entry && (m_preparation == Preparation::atOnce || place.count() <= smallBlocks)) {
            add(m_make(m_stream, shape.columns, shape.rows), m_picture - 1);
            entry = unused(place);
        }
        if (entry) {
            entry->lastUsed = m_picture;
            found.push_back(entry->encoder.get());
        } else {
            missing.push_back(shape);
        }
    }
    for (const Entry &entry : m_entries) {
        if (entry.lastUsed != m_picture)
            entry.encoder->outdate();
    }
    if (m_failed || missing.empty())
        return m_failed ? std::vector<SmallEncoder *>() : found;
    for (const Shape &shape : missing) {
        if (std::ranges::count(m_awaited, shape) < std::ranges::count(missing, shape))
            prepare(shape);
    }
    return {};
}

void SmallEncoders::outdate() {
    for (const Entry &entry : m_entries)
        entry.encoder->outdate();
}

SmallEncoders::Entry *SmallEncoders::unused(const BlockArea &place) {
    Entry *found = nullptr;
    for (Entry &entry : m_entries) {
        if (entry.lastUsed == m_picture || entry.encoder->columns() != place.columns ||
            entry.encoder->rows() != place.rows)
            continue;
        if (entry.encoder->place() == place)
            return &entry;
        if (!found)
            found = &entry;
    }
    return found;
}

void SmallEncoders::prepare(const Shape &shape) {
    m_awaited.push_back(shape);
    m_worker.post([this, shape] {
        auto encoder = m_make(m_stream, shape.columns, shape.rows);
        const std::scoped_lock lock(m_mutex);
        m_prepared.push_back(std::move(encoder));
    });
}

void SmallEncoders::takeOverPrepared() {
    if (m_awaited.empty())
        return;
    std::vector<std::unique_ptr<SmallEncoder>> prepared;
    {
        const std::scoped_lock lock(m_mutex);
        prepared.swap(m_prepared);
    }
    // They come in the order in which they were asked for.
    m_awaited.erase(m_awaited.begin(), m_awaited.begin() + std::ssize(prepared));
    // Somebody waits for them, so they do not make room.
    for (auto &encoder : prepared)
        add(std::move(encoder), m_picture);
}

void SmallEncoders::add(std::unique_ptr<SmallEncoder> encoder, std::int64_t lastUsed) {
    if (encoder)
        m_entries.push_back({std::move(encoder), lastUsed});
    else
        m_failed = true;
}

void SmallEncoders::makeRoom() {
    int blocks = 0;
    for (const Entry &entry : m_entries)
        blocks += weightOf(*entry.encoder);
    while (blocks > m_mostBlocks) {
        const auto oldest = std::ranges::min_element(m_entries, {}, &Entry::lastUsed);
        // Made anew for each picture they would cost more than their memory.
        if (oldest->lastUsed == m_picture)
            return;
        blocks -= weightOf(*oldest->encoder);
        m_entries.erase(oldest);
    }
}

} // namespace vantrell

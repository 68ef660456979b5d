// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/SmallEncoder.h"
#include "Support/SerialWorker.h"

#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace vantrell {

/// Makes the encoder of a band of so many columns and rows, as SmallEncoder::create does. Reentrant.
using SmallEncoderFactory =
    std::function<std::unique_ptr<SmallEncoder>(const StreamFacts &stream, int columns, int rows)>;

/// The encoders of bands, one for each shape and place of a picture, made when they are first needed: small
/// ones at once, large ones on a thread of their own, and until then there is none. Those that were not
/// needed for long make room. Thread-bound.
class SmallEncoders {
public:
    enum class Preparation { aside = 1, atOnce };

    /// `mostBlocks`: the memory that they may keep in all, as that of so many macroblocks, 2 KiB each; more
    /// only where one picture needs them all.
    SmallEncoders(StreamFacts stream, SmallEncoderFactory make, int mostBlocks, Preparation preparation)
        : m_stream(std::move(stream)), m_make(std::move(make)), m_mostBlocks(mostBlocks),
          m_preparation(preparation) {}

    /// One for each place, in their order and each another one. Empty when not all are ready: they will be.
    /// Valid until the next call.
    std::vector<SmallEncoder *> forPlaces(std::span<const BlockArea> places);

    /// The picture's reconstruction was changed by others than the encoders of the last places.
    void outdate();

    /// The library refused one: there will be no others.
    bool hasFailed() const { return m_failed; }

private:
    struct Entry {
        std::unique_ptr<SmallEncoder> encoder;
        std::int64_t lastUsed = 0;
    };
    struct Shape {
        int columns;
        int rows;
        friend bool operator==(const Shape &, const Shape &) = default;
    };

    /// One that is free, which was at that place last if there is one.
    Entry *unused(const BlockArea &place);
    void prepare(const Shape &shape);
    void takeOverPrepared();
    void add(std::unique_ptr<SmallEncoder> encoder, std::int64_t lastUsed);
    void makeRoom();

    const StreamFacts m_stream;
    const SmallEncoderFactory m_make;
    const int m_mostBlocks;
    const Preparation m_preparation;
    std::vector<Entry> m_entries;
    std::int64_t m_picture = 0;
    bool m_failed = false;
    /// Being made.
    std::vector<Shape> m_awaited;

    std::mutex m_mutex;
    std::vector<std::unique_ptr<SmallEncoder>> m_prepared;
    SerialWorker m_worker;
};

} // namespace vantrell

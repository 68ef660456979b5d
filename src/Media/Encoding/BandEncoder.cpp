// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandEncoder.h"

#include "Media/Encoding/BandPlan.h"
#include "Media/H264/H264Units.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <latch>
#include <thread>
#include <utility>

namespace vantrell {

namespace {

// Seconds that a block has to stand still before it is made finer: a moment where a film or a page stopped, a
// little longer where letters are typed, which would be encoded twice.
constexpr double restOfCoarse = 0.31;
constexpr double restOfFine = 0.6;
/// Of a time that is kept as a float.
constexpr double timeTolerance = 0.005;

/// What the small encoders may take in all, as SmallEncoders reckons, besides nearly the share of the whole
/// picture that a plan may ask for.
constexpr int fewestKept = 4000;
constexpr double neverAsked = 0.1;

/// What is typed lies across no more rows of blocks and changes no more of them.
constexpr int rowsOfLine = 3;
constexpr int mostOfLine = 256;

/// Pixels that motion vectors may span upwards and downwards (Table A-1), and some less.
constexpr int levelOfFarMotion = 21;
constexpr int farMotion = 240;
constexpr int nearMotion = 60;

/// The quantizer of what is encoded in the midst of copies, since it is none that is good enough.
constexpr int mendedCopies = QuantizerControl::finest - 2;
/// So many rows of what stands still are a slice of their own above and below of what is scrolled.
constexpr int rowsApart = 4;

/// Macroblocks for which it pays to wake another thread.
constexpr int muchWork = 300;

int mostKept(int blocks) {
    return int(blocks * (worthwhileShare(blocks) - neverAsked)) + fewestKept;
}

int touchedIn(const BlockArea &band, const BlockMap &touched) {
    int count = 0;
    for (int row = band.row; row < band.bottom(); ++row) {
        for (int column = band.column; column < band.right(); ++column)
            count += touched.isMarked(column, row);
    }
    return count;
}

/// Where the bands of a second thread begin, which is to do as much as the first; the end when there is not
/// enough to do.
std::size_t secondHalf(const std::vector<BlockArea> &bands, const BlockMap &touched) {
    if (bands.size() < 2)
        return bands.size();
    std::vector<int> before{0};
    for (const BlockArea &band : bands)
        before.push_back(before.back() + touchedIn(band, touched));
    const int all = before.back();
    const auto middle =
        std::ranges::min_element(before, {}, [all](int first) { return std::abs(2 * first - all); });
    return std::min(*middle, all - *middle) < muchWork ? bands.size() : std::size_t(middle - before.begin());
}

/// Bands of even height in which there may be much to do.
void halveLarge(std::vector<BlockArea> &bands) {
    constexpr int large = 16;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        BlockArea &band = bands[i];
        if (band.rows < large || band.rows % 2 != 0)
            continue;
        band.rows /= 2;
        BlockArea lower = band;
        lower.row += band.rows;
        bands.insert(bands.begin() + std::ptrdiff_t(++i), lower);
    }
}

} // namespace

BandEncoder::BandEncoder(PixelSize picture, Options options, std::unique_ptr<SlicedX264> whole)
    : m_options(std::move(options)), m_whole(std::move(whole)),
      m_configuration(avcConfiguration(m_whole->instance().sequenceParameters(),
                                       m_whole->instance().pictureParameters())),
      m_stream(StreamFacts::of(m_whole->instance())),
      m_scroll(picture, m_whole->instance().level() >= levelOfFarMotion ? farMotion : nearMotion),
      m_quantizer(BlockMap(picture).columns() * BlockMap(picture).rows()), m_touched(picture) {
    m_coarseness.resize(m_touched.marks().size());
    m_changedAt.resize(m_touched.marks().size());
    if (constexpr int threads = 2; int(std::thread::hardware_concurrency()) >= threads)
        m_load.emplace(threads);
}

std::expected<std::unique_ptr<BandEncoder>, PlatformError> BandEncoder::create(PixelSize picture,
                                                                               Options options) {
    auto whole = SlicedX264::create(picture, options.isLarge.value_or(SlicedX264::isLarge(picture)));
    if (!whole)
        return std::unexpected(whole.error());
    return std::unique_ptr<BandEncoder>(new BandEncoder(picture, std::move(options), std::move(*whole)));
}

bool BandEncoder::usesBands() {
    if (!m_stream)
        return false;
    if (!m_mayUseBands) {
        m_mayUseBands = m_options.mayUseBands();
        if (m_mayUseBands == true)
            m_small = std::make_unique<SmallEncoders>(
                *m_stream, m_options.makeSmall, mostKept(int(m_coarseness.size())), m_options.preparation);
    }
    return m_small != nullptr;
}

void BandEncoder::giveUp(const char *why) {
    qCWarning(logCapture, "not encoding in bands any more: %s", why);
    m_stream.reset();
    m_small.reset();
}

std::expected<EncodedFrame, PlatformError> BandEncoder::encode(const Nv12Frame &frame,
                                                               const BlockMap &changed,
                                                               std::int64_t presentationTime, bool keyFrame) {
    const double seconds = double(presentationTime) / timeScale;
    const int quantizer = m_quantizer.quantizer(keyFrame);
    m_touched = changed;
    m_isScrolled = !keyFrame && usesBands() && m_scroll.find(frame, reconstruction(), changed);
    const auto isKey = encodeTouched(frame, quantizer, keyFrame);
    if (!isKey)
        return std::unexpected(isKey.error());
    remember(changed, quantizer, seconds, *isKey);
    m_quantizer.frameEncoded(seconds, changed.count(), m_data.size(), *isKey);
    return EncodedFrame{m_data, presentationTime, *isKey};
}

std::expected<bool, PlatformError> BandEncoder::encodeTouched(const Nv12Frame &frame, int quantizer,
                                                              bool keyFrame) {
    m_finished.clear();
    const bool usedBands = m_small != nullptr;
    if (usesBands() && !keyFrame && encodeInBands(frame, quantizer))
        return false;
    // A picture that was begun in bands may have been the last of them.
    const bool begins = usedBands && !m_small;
    m_isScrolled = false;
    return encodeWhole(frame, quantizer, keyFrame || begins);
}

void BandEncoder::remember(const BlockMap &changed, int quantizer, double seconds, bool isKey) {
    if (isKey)
        std::ranges::fill(m_coarseness, std::uint8_t(quantizer));
    const auto columns = std::size_t(m_touched.columns());
    const auto before = m_isScrolled ? m_coarseness : std::vector<std::uint8_t>();
    bool isCoarse = false;
    for (int row = 0; row < m_touched.rows(); ++row) {
        if (!m_touched.anyInRow(row))
            continue;
        for (std::size_t i = std::size_t(row) * columns; i < std::size_t(row + 1) * columns; ++i) {
            if (changed.marks()[i])
                m_changedAt[i] = float(seconds);
            if (!m_touched.marks()[i])
                continue;
            const int column = int(i % columns);
            const bool isFinished = std::ranges::any_of(
                m_finished, [row, column](const BlockArea &band) { return band.contains(row, column); });
            m_coarseness[i] = std::uint8_t(isFinished ? QuantizerControl::atRest : quantizer);
            if (m_isScrolled && m_copied.isMarked(column, row)) {
                const auto at = [&](int y) {
                    return before[std::size_t(y / blockEdge) * columns + i % columns];
                };
                const int top = row * blockEdge + m_scroll.distance();
                m_coarseness[i] = std::max(at(top), at(top + blockEdge - 1));
            }
            isCoarse |= m_coarseness[i] > QuantizerControl::atRest;
        }
    }
    if (!isCoarse || !changed.any())
        return;
    const double rest = quantizer > QuantizerControl::finest ? restOfCoarse : restOfFine;
    const auto due = std::int64_t((seconds + rest) * timeScale);
    m_refinesAt = std::min(m_refinesAt.value_or(due), due);
}

bool BandEncoder::findCoarse(double seconds) {
    m_touched.clear();
    m_refinesAt.reset();
    bool found = false;
    const auto columns = std::size_t(m_touched.columns());
    for (std::size_t i = 0; i < m_coarseness.size(); ++i) {
        if (m_coarseness[i] <= QuantizerControl::atRest)
            continue;
        if (seconds - double(m_changedAt[i]) >= restOfCoarse - timeTolerance) {
            m_touched.markBlock(int(i % columns), int(i / columns));
            found = true;
        } else {
            m_refinesAt = std::int64_t((seconds + restOfFine) * timeScale);
        }
    }
    return found;
}

std::expected<std::optional<EncodedFrame>, PlatformError> BandEncoder::refine(const Nv12Frame &frame,
                                                                              std::int64_t presentationTime) {
    const double seconds = double(presentationTime) / timeScale;
    if (!m_quantizer.isCalm(seconds)) {
        m_refinesAt = presentationTime + std::int64_t(restOfCoarse * timeScale);
        return std::nullopt;
    }
    if (!findCoarse(seconds))
        return std::nullopt;
    m_isScrolled = false;
    m_scroll.forget();
    const auto isKey = encodeTouched(frame, QuantizerControl::atRest, false);
    if (!isKey)
        return std::unexpected(isKey.error());
    remember(BlockMap(frame.picture()), QuantizerControl::atRest, seconds, *isKey);
    return EncodedFrame{m_data, presentationTime, *isKey};
}

bool BandEncoder::encodeInBands(const Nv12Frame &frame, int quantizer) {
    if (reconstruction().isNull())
        return false;
    auto bands = planBands(m_isScrolled ? notCopied() : m_touched);
    if (!bands || movesTooFar(*bands))
        return false;
    if (m_isHalving)
        halveLarge(*bands);
    const auto encoders = m_small->forPlaces(*bands);
    if (m_small->hasFailed()) {
        giveUp("the encoder of a band could not be made");
        return false;
    }
    if (encoders.size() != bands->size())
        return false;
    if (m_isScrolled)
        copyBetween(*bands);
    if (const auto failure = encodeAll(encoders, *bands, frame, quantizer)) {
        giveUp(failure->message.c_str());
        return false;
    }
    ++m_frameNumber;
    writeSlices(encoders);
    // Only now: each of them referred to what its neighbours were before.
    if (m_isScrolled)
        reconstructCopies();
    for (SmallEncoder *encoder : encoders)
        encoder->reconstructIn(reconstruction());
    std::ranges::copy_if(*bands, std::back_inserter(m_finished), [&](const BlockArea &band) {
        return quantizerOf(band, quantizer) <= QuantizerControl::atRest;
    });
    ++m_picturesInBands;
    return true;
}

bool BandEncoder::movesTooFar(const std::vector<BlockArea> &bands) const {
    return m_scroll.isMostScrolled() && std::abs(m_scroll.distance()) > SmallEncoder::farthestMotion &&
           std::ranges::any_of(
               bands, [this](const BlockArea &band) { return touchedIn(band, m_touched) > mostOfLine; });
}

int BandEncoder::expectedMotion() const {
    // What is left beside copies is new, and of what was scrolled before nothing follows: to look that far
    // costs time where nothing is found.
    const bool isMostCopied = m_isScrolled && 2 * m_copied.count() > m_touched.count();
    return isMostCopied || !m_scroll.isMostScrolled() ? 0 : m_scroll.distance();
}

/// What changes in so few places is text or nearly: a film beside it does not blur it. A line of it is so few
/// bits that it is made as fine at once as it would be a moment later; of a page that is scrolled, where it
/// comes into sight, since all is copied from there. Where it leaves the screen it has no future.
int BandEncoder::quantizerOf(const BlockArea &band, int quantizer) const {
    const bool isDown = m_scroll.distance() > 0;
    const bool isPassedOn = hasCopies(band, isDown ? band.row - 1 : band.bottom());
    const bool hasOrigin = hasCopies(band, isDown ? band.bottom() : band.row - 1);
    if (m_isScrolled && !isPassedOn)
        return quantizer;
    if (band.rows <= rowsOfLine && touchedIn(band, m_touched) <= mostOfLine)
        return std::min(quantizer, hasOrigin ? mendedCopies : QuantizerControl::atRest);
    return band.rows == 1 ? std::min(quantizer, QuantizerControl::finest) : quantizer;
}

bool BandEncoder::hasCopies(const BlockArea &band, int row) const {
    if (!m_isScrolled || row < 0 || row >= m_copied.rows())
        return false;
    for (int column = band.column; column < band.right(); ++column)
        if (m_copied.isMarked(column, row))
            return true;
    return false;
}

const BlockMap &BandEncoder::notCopied() {
    m_rest = m_touched;
    m_rest.remove(m_scroll.copies());
    return m_rest;
}

void BandEncoder::copyBetween(const std::vector<BlockArea> &bands) {
    m_copied = m_scroll.copies();
    for (const BlockArea &band : bands)
        for (int row = band.row; row < band.bottom(); ++row)
            for (int column = band.column; column < band.right(); ++column)
                m_copied.unmarkBlock(column, row);
    m_distances.resize(m_copied.marks().size());
    for (std::size_t i = 0; i < m_distances.size(); ++i) {
        const int distance = m_copied.marks()[i] ? m_scroll.distance() : 0;
        m_distances[i] = m_scroll.same().marks()[i] ? CopySlices::anyDistance : std::int16_t(distance);
    }
    for (const ScrollFinder::Paper &paper : m_scroll.papers()) {
        if (m_copied.isMarked(paper.column, paper.row))
            m_distances[std::size_t(paper.row * m_copied.columns() + paper.column)] =
                std::int16_t(paper.distance);
    }
    m_blocksCopied += m_copied.count();
}

void BandEncoder::reconstructCopies() {
    reconstruction().copyFromBelow(m_copied, m_scroll.distance());
    // From wherever it was copied, it is this colour.
    for (const ScrollFinder::Paper &paper : m_scroll.papers()) {
        if (m_copied.isMarked(paper.column, paper.row))
            reconstruction().fill(paper.column, paper.row, paper.colour);
    }
}

std::optional<PlatformError> BandEncoder::encodeAll(const std::vector<SmallEncoder *> &encoders,
                                                    const std::vector<BlockArea> &bands,
                                                    const Nv12Frame &frame, int quantizer) {
    const double begin = hostNow();
    const int motion = expectedMotion();
    std::array<std::optional<PlatformError>, 2> failures;
    const auto work = [&](std::size_t first, std::size_t last, std::optional<PlatformError> &failure) {
        for (std::size_t i = first; i < last && !failure; ++i) {
            const int own = quantizerOf(bands[i], quantizer);
            encoders[i]->expectMotion(motion);
            const auto encoded = encoders[i]->encode(frame, bands[i], m_touched, own, reconstruction());
            if (!encoded)
                failure = encoded.error();
        }
    };
    const std::size_t half = m_load ? secondHalf(bands, m_touched) : bands.size();
    if (half < bands.size()) {
        std::latch done(1);
        m_second.post([&] {
            work(half, bands.size(), failures[1]);
            done.count_down();
        });
        work(0, half, failures[0]);
        done.wait();
    } else {
        work(0, bands.size(), failures[0]);
    }
    if (m_load) {
        m_load->frameEncoded(begin, hostNow());
        m_isHalving = m_isHalving ? !m_load->canDoWithoutSlices() : m_load->needsSlices();
    }
    return failures[0] ? failures[0] : failures[1];
}

void BandEncoder::writeSlices(const std::vector<SmallEncoder *> &encoders) {
    m_data.clear();
    const int columns = m_touched.columns();
    int next = 0;
    for (const SmallEncoder *encoder : encoders) {
        const BlockArea &place = encoder->place();
        const int begin = place.row * columns + place.column;
        writeUnencoded(next, begin);
        encoder->appendTo(m_data, m_frameNumber);
        next = begin + place.count();
    }
    writeUnencoded(next, columns * m_touched.rows());
}

void BandEncoder::writeUnencoded(int begin, int end) {
    const auto skip = [this](int first, int last) {
        if (last > first)
            m_skips.append(m_data, m_stream->layout, first, last - first, m_frameNumber);
    };
    if (!m_isScrolled)
        return skip(begin, end);
    const std::span gap(m_distances.data() + begin, std::size_t(end - begin));
    const auto moves = [](std::int16_t distance) {
        return distance != 0 && distance != CopySlices::anyDistance;
    };
    const auto first = std::ranges::find_if(gap, moves);
    if (first == gap.end())
        return skip(begin, end);
    const auto last = std::find_if(gap.rbegin(), gap.rend(), moves).base();
    // What does not move costs no bits among what does, while a slice of its own begins with ten bytes; but
    // it is sooner written.
    const int much = rowsApart * m_touched.columns();
    const auto before = first - gap.begin();
    const auto behind = gap.end() - last;
    const int from = before >= much ? begin + int(before) : begin;
    const int to = behind >= much ? end - int(behind) : end;
    skip(begin, from);
    m_copies.append(m_data, m_stream->layout, from,
                    gap.subspan(std::size_t(from - begin), std::size_t(to - from)), m_scroll.distance(),
                    m_frameNumber);
    skip(to, end);
}

std::expected<bool, PlatformError> BandEncoder::encodeWhole(const Nv12Frame &frame, int quantizer,
                                                            bool keyFrame) {
    if (m_small)
        m_small->outdate();
    m_whole->expectMotion(expectedMotion());
    const auto run = [&](bool key) {
        m_hints.resize(m_touched.marks().size());
        std::ranges::transform(m_touched.marks(), m_hints.begin(), [](std::uint8_t mark) {
            return mark ? std::uint8_t(0) : X264Instance::constantHint;
        });
        return m_whole->encode(frame, m_hints, quantizer, key,
                               m_small ? SlicedX264::Change::carriedOver : SlicedX264::Change::withKeyFrame);
    };
    auto picture = run(keyFrame);
    if (picture && m_stream && !takeOver(picture->data, picture->isKey)) {
        giveUp("a slice is not understood");
        if (!picture->isKey)
            picture = run(true);
    }
    if (!picture)
        return std::unexpected(picture.error());
    if (!m_stream)
        m_data.assign(picture->data.begin(), picture->data.end());
    return picture->isKey;
}

bool BandEncoder::takeOver(std::span<const std::uint8_t> data, bool isKey) {
    const std::uint32_t frameNumber = isKey ? 0 : m_frameNumber + 1;
    const std::uint32_t keyId = isKey ? m_keyId ^ 1 : m_keyId;
    m_data.clear();
    for (const H264Unit unit : splitSized(data)) {
        const H264UnitType type = typeOf(unit);
        if (type != H264UnitType::slice && type != H264UnitType::keySlice)
            continue;
        const auto slice = parseSlice(unit, m_stream->layout);
        if (!slice || slice->header.isKey != isKey)
            return false;
        SliceHeader header = slice->header;
        header.frameNumber = frameNumber;
        header.keyId = keyId;
        appendSliceWithHeader(m_data, m_stream->layout, header, unit, *slice);
    }
    m_frameNumber = frameNumber;
    m_keyId = keyId;
    return !m_data.empty();
}

} // namespace vantrell

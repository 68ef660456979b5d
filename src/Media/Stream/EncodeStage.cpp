// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/EncodeStage.h"

#include "Support/Log.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantrell {

namespace {

/// A player that shows every frame for its own duration only must not lose the held picture's end.
constexpr std::int64_t heldFrameTicks = VideoEncoder::timeScale / 60;

} // namespace

EncodeStage::EncodeStage(FrameExchange &exchange, std::unique_ptr<VideoEncoder> encoder, MovieSink &movie,
                         TrackId track, std::function<void()> failed, double epoch)
    : m_exchange(exchange), m_encoder(std::move(encoder)), m_movie(movie), m_track(track),
      m_failed(std::move(failed)), m_epoch(epoch), m_thread("encode", [this] { run(); }) {}

EncodeStage::~EncodeStage() {
    m_exchange.close();
}

std::int64_t EncodeStage::ticks(double hostTime) const {
    return std::llround((hostTime - m_epoch) * VideoEncoder::timeScale);
}

void EncodeStage::run() {
    while (auto job = next()) {
        std::int64_t time = ticks(job->hostTime);
        if (m_last)
            time = std::max(time, m_lastEncoderTime + 1);
        m_lastEncoderTime = time;
        const bool encoded = job->isRepeated ? refine(*job, time) : encode(*job, time);
        m_exchange.done(*job);
        m_last = std::move(job);
        if (!encoded)
            return;
    }
}

std::optional<FrameExchange::Job> EncodeStage::next() {
    const auto refinesAt = m_encoder->refinesAt();
    if (!m_last || !refinesAt)
        return m_exchange.next();
    return m_exchange.next(m_epoch + double(*refinesAt) / VideoEncoder::timeScale, *m_last);
}

bool EncodeStage::refine(const FrameExchange::Job &job, std::int64_t presentationTime) {
    const auto frame = m_encoder->refine(job.slot->frame, presentationTime);
    if (!frame) {
        m_result.encoderBroke = true;
        fail(frame.error());
        return false;
    }
    // Right behind what it refines: the next picture may come late and still be of an earlier moment than
    // now.
    return !*frame || write(**frame, job.hostTime, m_result.lastPresentationTime + 1);
}

bool EncodeStage::encode(const FrameExchange::Job &job, std::int64_t presentationTime) {
    const auto frame =
        m_encoder->encode(job.slot->frame, job.changed, presentationTime, m_keyFrames.isDue(job.hostTime));
    if (!frame) {
        m_result.encoderBroke = true;
        fail(frame.error());
        return false;
    }
    return write(*frame, job.hostTime,
                 m_last ? std::max(ticks(job.hostTime), m_result.lastPresentationTime + 1)
                        : presentationTime);
}

bool EncodeStage::write(const EncodedFrame &frame, double hostTime, std::int64_t movieTime) {
    m_keyFrames.frameEncoded(hostTime, frame.data.size(), frame.isKeyFrame);
    const auto written = m_movie.append(
        m_track,
        EncodedSample{.data = frame.data, .pts = movieTime, .dts = movieTime, .isKey = frame.isKeyFrame});
    if (!written) {
        fail(written.error());
        return false;
    }
    ++m_result.frames;
    m_result.lastPresentationTime = movieTime;
    return true;
}

void EncodeStage::fail(PlatformError error) {
    qCWarning(logCapture, "encoding ended: %s", error.message.c_str());
    m_result.error = std::move(error);
    m_exchange.abandon();
    m_failed();
}

EncodeStage::Result EncodeStage::finish(std::int64_t endTime) {
    m_exchange.close();
    m_thread.join();
    if (m_last && !m_result.error)
        hold(endTime);
    return m_result;
}

void EncodeStage::hold(std::int64_t endTime) {
    const std::int64_t time = endTime - heldFrameTicks;
    if (time <= m_result.lastPresentationTime)
        return;
    const auto nothing = BlockMap(m_last->slot->frame.picture());
    // Nothing differs, so it is a few bytes and never worth a key frame.
    const auto frame =
        m_encoder->encode(m_last->slot->frame, nothing, std::max(time, m_lastEncoderTime + 1), false);
    if (!frame)
        return;
    const auto written = m_movie.append(
        m_track, EncodedSample{.data = frame->data, .pts = time, .dts = time, .isKey = frame->isKeyFrame});
    if (written) {
        ++m_result.frames;
        m_result.lastPresentationTime = time;
    }
}

} // namespace vantrell

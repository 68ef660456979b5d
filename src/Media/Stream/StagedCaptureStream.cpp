// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/StagedCaptureStream.h"

#include "Media/Encoding/SlicedX264.h"
#include "Media/Stream/EncodeStage.h"
#include "Platform/ScreenError.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

/// Enough for the encoder to be four frames late without a loss, or two where pictures are large.
constexpr int pictures = 6;
constexpr int largePictures = 4;
/// How soon a change is looked at again after one that did not show in the picture.
constexpr double quietInterval = 0.004;

} // namespace

StagedCaptureStream::StagedCaptureStream(CaptureStreamConfiguration configuration, CaptureStreamEvents events,
                                         std::unique_ptr<FrameSource> source,
                                         std::shared_ptr<EncoderChoice> encoders, SoundStageFactory makeSound)
    : m_configuration(std::move(configuration)), m_events(std::move(events)), m_source(std::move(source)),
      m_encoders(std::move(encoders)), m_makeSound(std::move(makeSound)),
      m_limiter(m_configuration.maximumFramesPerSecond) {}

StagedCaptureStream::~StagedCaptureStream() {
    stop();
}

Task<std::expected<void, StreamStartFailure>> StagedCaptureStream::start(std::stop_token stop) {
    const Started started;
    // Here and not on the capture thread, which may outlive the sound's backend when nobody waits for it.
    if (m_makeSound)
        m_sound = m_makeSound(m_configuration, m_events.microphoneSamples);
    m_thread = WorkerThread("capture", [this, started] { run(started); });
    auto result = co_await started.wait(stop);
    if (!result) {
        m_isCancelled = true;
        this->stop();
        co_return std::unexpected(StreamStartFailure(Cancelled{}));
    }
    if (!*result)
        co_return std::unexpected(StreamStartFailure(std::move(result->error())));
    co_return std::expected<void, StreamStartFailure>();
}

void StagedCaptureStream::stop() {
    double never = 0;
    if (!m_stopTime.compare_exchange_strong(never, hostNow()))
        return;
    m_isStopping = true;
    m_source->interrupt();
}

void StagedCaptureStream::run(const Started &started) {
    if (auto opened = open(); !opened) {
        discard();
        started.resolve(std::unexpected(opened.error()));
        return;
    }
    started.resolve({});
    auto captured = captureUntilStop();
    if (m_isCancelled)
        return discard();
    if (!captured) {
        double never = 0;
        m_stopTime.compare_exchange_strong(never, hostNow());
        if (m_events.stoppedWithError)
            m_events.stoppedWithError(captured.error());
    }
    finish();
}

std::expected<void, PlatformError> StagedCaptureStream::open() {
    if (auto opened = m_source->open(); !opened)
        return opened;
    m_picture = m_configuration.output.value_or(m_source->size());
    if (m_picture.isEmpty())
        return std::unexpected(screenError(ScreenErrorCode::badArea, "There is nothing to see of it yet"));
    m_fitting.emplace(m_picture);
    auto encoder = m_encoders->create(m_picture);
    if (!encoder)
        return std::unexpected(encoder.error());

    MovieWriter::Options options;
    options.elapsed = [this] {
        const double epoch = m_epoch;
        return epoch > 0 ? hostNow() - epoch : 0;
    };
    auto writer = MovieWriter::create(m_configuration.outputFile, options);
    if (!writer)
        return std::unexpected(writer.error());
    m_writer = std::move(*writer);
    m_videoTrack = m_writer->addVideoTrack({.size = (*encoder)->encodedSize(),
                                            .timeScale = VideoEncoder::timeScale,
                                            .decoderConfiguration = (*encoder)->codecConfiguration()});
    m_exchange =
        std::make_unique<FrameExchange>(m_picture, SlicedX264::isLarge(m_picture) ? largePictures : pictures);
    m_encode =
        std::make_unique<EncodeStage>(*m_exchange, std::move(*encoder), *m_writer, m_videoTrack, [this] {
            m_encoderFailed = true;
            m_source->interrupt();
        });
    if (m_sound)
        m_sound->begin(*m_writer);
    return {};
}

std::expected<void, PlatformError> StagedCaptureStream::captureUntilStop() {
    while (!m_encoderFailed) {
        const auto waited = m_source->wait(std::max(m_limiter.nextAllowed(), m_notBefore), std::nullopt);
        if (!waited)
            return std::unexpected(waited.error());
        if (*waited == FrameWait::changed) {
            if (auto captured = captureFrame(); !captured)
                return captured;
        }
        if (m_isStopping) {
            // What changed right before the stop still belongs to the recording.
            const auto last = m_source->wait(0, hostNow());
            return last && *last == FrameWait::changed ? captureFrame()
                                                       : std::expected<void, PlatformError>();
        }
    }
    return {};
}

std::expected<void, PlatformError> StagedCaptureStream::captureFrame() {
    const double asked = hostNow();
    FrameExchange::Slot *slot = m_exchange->acquire();
    if (!slot)
        return {};
    const double waited = hostNow() - asked;
    const auto missed = std::int64_t(waited * m_configuration.maximumFramesPerSecond);
    if (missed > 0 && m_droppedFrames == 0)
        qCWarning(logCapture, "the encoder cannot keep up, frames are dropped");
    m_droppedFrames += missed;

    const auto update = m_source->fetch();
    if (!update) {
        m_exchange->giveBack(slot);
        return std::unexpected(update.error());
    }
    const double stopTime = m_stopTime;
    if (stopTime > 0 && update->hostTime >= stopTime) {
        m_exchange->giveBack(slot);
        return {};
    }
    if (update->pointer && m_events.pointerMoved && !update->size.isEmpty())
        m_events.pointerMoved(update->hostTime, {update->pointer->x / update->size.width,
                                                 update->pointer->y / update->size.height});
    const auto patches = m_fitting->fit(*update);
    if (!patches) {
        m_exchange->giveBack(slot);
        return std::unexpected(patches.error());
    }
    BlockMap changed(m_picture);
    takeOver(*patches, *slot, changed);
    if (!changed.any()) {
        m_exchange->giveBack(slot);
        m_notBefore = hostNow() + quietInterval;
        return {};
    }
    if (m_epoch == 0)
        begin(update->hostTime);
    m_limiter.frameTaken(hostNow());
    m_exchange->submit(slot, std::move(changed), update->hostTime);
    return {};
}

void StagedCaptureStream::takeOver(std::span<const FramePatch> patches, FrameExchange::Slot &slot,
                                   BlockMap &changed) const {
    FrameExchange::Slot *latest = m_exchange->latest();
    if (latest && latest != &slot) {
        BlockMap covered(m_picture);
        for (const FramePatch &patch : patches)
            covered.mark(patch.rect);
        for (int row = 0; row < covered.rows(); ++row) {
            for (int column = 0; column < covered.columns(); ++column) {
                if (slot.stale.isMarked(column, row) && !covered.isMarked(column, row))
                    slot.frame.copyBlock(latest->frame, column, row);
            }
        }
    }
    for (const FramePatch &patch : patches)
        m_converter.convert(patch, latest ? latest->frame : slot.frame, slot.frame, changed);
    slot.stale.clear();
    // There is nothing before the first frame that a block could be equal to.
    if (!latest && !patches.empty())
        changed.markAll();
}

void StagedCaptureStream::begin(double hostTime) {
    m_epoch = hostTime;
    m_encode->setEpoch(hostTime);
    if (m_sound)
        m_sound->setEpoch(hostTime);
    if (m_events.firstFrame)
        m_events.firstFrame(hostTime);
}

void StagedCaptureStream::discard() {
    m_sound.reset();
    m_encode.reset();
    if (m_writer)
        m_writer->discard();
    m_writer.reset();
}

void StagedCaptureStream::finish() {
    const double stopTime = m_stopTime > 0 ? m_stopTime.load() : hostNow();
    std::vector<TrackEnd> ends;
    if (m_sound)
        ends = m_sound->end(stopTime);
    std::int64_t end = m_epoch > 0 ? m_encode->ticks(stopTime) : 0;
    const EncodeStage::Result encoded = m_encode->finish(end);
    if (encoded.frames > 0)
        end = std::max(end, encoded.lastPresentationTime + 1);
    if (encoded.encoderBroke)
        m_encoders->encoderFailed();
    if (m_encoderFailed && encoded.error && m_events.stoppedWithError)
        m_events.stoppedWithError(*encoded.error);
    ends.insert(ends.begin(), TrackEnd{m_videoTrack, end});

    const auto finished = m_writer->finish(ends);
    m_source->interrupt();
    if (!finished) {
        if (m_events.recordingFailed)
            m_events.recordingFailed(finished.error());
        return;
    }
    if (m_droppedFrames > 0)
        qCInfo(logCapture, "frames dropped: %lld", static_cast<long long>(m_droppedFrames));
    if (m_events.recordingFinished)
        m_events.recordingFinished({.durationSeconds = finished->durationMs / 1000,
                                    .frames = encoded.frames,
                                    .droppedFrames = m_droppedFrames,
                                    .soundProblem = m_sound ? m_sound->problem() : std::nullopt});
}

} // namespace vantrell

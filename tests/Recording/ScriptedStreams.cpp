// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ScriptedStreams.h"

namespace vantrell::testing {

namespace {

class ScriptedStream final : public CaptureStream {
public:
    ScriptedStream(ScriptedStreams::Script script, std::shared_ptr<ScriptedStreams::Stream> stream)
        : m_script(std::move(script)), m_stream(std::move(stream)) {}
    ~ScriptedStream() override { m_stream->destroyed = true; }

    Task<std::expected<void, StreamStartFailure>> start(std::stop_token) override {
        if (m_script.startError)
            co_return std::unexpected(*m_script.startError);
        co_return std::expected<void, StreamStartFailure>();
    }

    PixelSize pictureSize() const override { return {640, 480}; }

    void stop() override {
        if (std::exchange(m_stream->stopped, true))
            return;
        if (m_script.fails)
            m_stream->events.recordingFailed(*m_script.fails);
        else if (m_script.finishes)
            m_stream->events.recordingFinished(*m_script.finishes);
    }

private:
    ScriptedStreams::Script m_script;
    std::shared_ptr<ScriptedStreams::Stream> m_stream;
};

} // namespace

std::unique_ptr<CaptureStream> ScriptedStreams::makeStream(CaptureSource &,
                                                           CaptureStreamConfiguration configuration,
                                                           CaptureStreamEvents events) {
    auto stream = std::make_shared<Stream>();
    stream->configuration = std::move(configuration);
    stream->events = std::move(events);
    streams.push_back(std::move(stream));
    return std::make_unique<ScriptedStream>(script, streams.back());
}

} // namespace vantrell::testing

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CastListener.h"

#include "TestSupport/FrameCode.h"
#include "TestSupport/RunTask.h"

#include <stdexcept>
#include <utility>
#include <vector>

namespace vantrell::bench {

CastListener::CastListener(const QDBusConnection &bus, int x, int y) : m_x(x), m_y(y), m_portal(bus) {
    auto opened = testing::runTask(ScreenCastSession::open(&m_portal, {}, {}));
    if (!opened)
        throw std::runtime_error("no cast to listen to");
    m_session = std::move(opened->session);
    auto remote = testing::runTask(m_session->openRemote({}));
    if (!remote)
        throw std::runtime_error("no PipeWire to listen to");
    const PipeWireLoop::Lock lock(m_loop);
    auto connection = PipeWireConnection::open(m_loop, std::move(remote->socket), [] {});
    if (!connection)
        throw std::runtime_error(connection.error().message);
    m_connection = std::move(*connection);
    m_stream = std::make_unique<PipeWireVideoStream>(
        *m_connection, PipeWireVideoStream::Target{{}, m_session->node(), "Screen"},
        PipeWireVideoStream::Handlers{
            .formatChanged =
                [this](const spa_pod &pod) {
                    m_format = CastFormat::parse(pod).value_or(CastFormat());
                    m_stream->agree({});
                },
            .arrived = [this] { take(); },
            .bufferGoes = {},
            .stateChanged = {},
        });
    m_stream->connect(CastFormatOffer(false).pods());
}

CastListener::~CastListener() {
    const PipeWireLoop::Lock lock(m_loop);
    m_stream.reset();
    m_connection.reset();
}

std::map<std::uint32_t, double> CastListener::heard() const {
    const PipeWireLoop::Lock lock(m_loop);
    return m_heard;
}

void CastListener::take() {
    using namespace testing;
    while (const auto buffer = m_stream->take()) {
        const spa_data &data = (*buffer)->datas[0];
        const auto time = buffer->presentationTime();
        if (buffer->isWithoutPicture() || !data.data || !time || m_x + framecode::width > m_format.size.width)
            continue;
        const std::ptrdiff_t stride = data.chunk->stride;
        const auto *pixels =
            static_cast<const std::uint8_t *>(data.data) + data.chunk->offset + m_y * stride + m_x * 4;
        std::vector<std::uint8_t> luma;
        for (int y = 0; y < framecode::height; ++y)
            for (int x = 0; x < framecode::width; ++x)
                luma.push_back(pixels[y * stride + x * 4]);
        if (const auto number = framecode::read(luma.data(), framecode::width))
            m_heard.emplace(*number, double(*time) / 1e9);
    }
}

} // namespace vantrell::bench

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpClient.h"

#include "Http/DesktopProxy.h"
#include "Http/HttpEngine.h"
#include "Http/HttpTransfer.h"
#include "Http/Url.h"
#include "Support/BlockingWork.h"

namespace vantrell {

namespace {

Task<HttpResult> sendOn(std::weak_ptr<HttpEngine> engine, std::shared_ptr<HttpTransfer> transfer,
                        std::stop_token stop) {
    if (stop.stop_requested())
        co_return std::unexpected(TransportError::cancelled());
    const std::string url = transfer->url();
    const auto address = Url::parse(url);
    if (address && !address->isLoopback() && !environmentHasProxyFor(url)) {
        auto proxy = co_await runBlocking([url] { return desktopProxyFor(url); }, stop);
        if (!proxy)
            co_return std::unexpected(TransportError::cancelled());
        transfer->useProxy(std::move(*proxy));
    }
    if (const auto running = engine.lock())
        running->start(transfer);
    else
        co_return std::unexpected(TransportError::cancelled());
    auto result = co_await transfer->done().wait(stop);
    if (result)
        co_return std::move(*result);
    if (const auto running = engine.lock())
        running->abandon(transfer);
    co_return std::unexpected(TransportError::cancelled());
}

} // namespace

HttpClient::HttpClient(Options options)
    : m_engine(std::make_shared<HttpEngine>(std::move(options.authorities))) {}

HttpClient::~HttpClient() {
    m_engine->shutDown();
}

Task<HttpResult> HttpClient::send(HttpRequest request, std::stop_token stop) {
    // Not a coroutine itself: nothing that waits may refer to this object.
    return sendOn(m_engine, std::make_shared<HttpTransfer>(std::move(request)), std::move(stop));
}

} // namespace vantrell

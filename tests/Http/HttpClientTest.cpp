// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpClient.h"

#include "Support/TaskScope.h"
#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <curl/curl.h>

#include <atomic>
#include <fstream>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

class HttpClientTest : public ::testing::Test {
protected:
    HttpResult send(HttpRequest request) { return runTask(client.send(std::move(request), {})); }

    std::filesystem::path fileOf(std::size_t bytes) const {
        const std::filesystem::path path = folder / "body";
        std::ofstream out(path, std::ios::binary);
        for (std::size_t i = 0; i < bytes; ++i)
            out.put(char(i * 31 >> 3));
        return path;
    }

    static std::string contents(const std::filesystem::path &path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    TemporaryFolder folder;
    HttpClient client;
    std::shared_ptr<RequestLog> log = std::make_shared<RequestLog>();
};

TEST_F(HttpClientTest, sendsEachMethodAsGivenOverOneConnection) {
    ScriptedHttpServer server(answering(log, [](ScriptedConnection &c, const ReceivedRequest &r) {
        c.answer(r.method == "HEAD" ? 204 : 200, "X-Seen: one\r\nx-sEEn: two\r\n",
                 r.method == "HEAD" ? "" : "ok");
    }));
    const std::filesystem::path path = fileOf(1'500'000);
    for (const HttpMethod method : {HttpMethod::get, HttpMethod::head, HttpMethod::post})
        ASSERT_TRUE(send({.method = method, .url = server.url("/a?b=c"), .headers = {{"X-Empty", ""}}}));
    ASSERT_TRUE(send({.method = HttpMethod::post, .url = server.url(), .body = std::string("{}")}));
    ASSERT_TRUE(send({.method = HttpMethod::patch,
                      .url = server.url(),
                      .headers = {{"Content-Type", "application/offset+octet-stream"}},
                      .body = FileRange{path, 1000, 1'400'000}}));
    const auto response = send({.method = HttpMethod::put,
                                .url = server.url(),
                                .body = FileRange{path, 0, 1'500'000},
                                .expectContinue = true});

    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200);
    EXPECT_EQ(response->body, "ok");
    EXPECT_EQ(response->headers.find("X-SEEN"), "one");
    EXPECT_EQ(response->bodyBytesSent, 1'500'000);

    const auto requests = log->all();
    EXPECT_EQ(log->methods(), "GET HEAD POST POST PATCH PUT");
    EXPECT_EQ(requests[0].target, "/a?b=c");
    EXPECT_TRUE(requests[0].headers.contains("x-empty"));
    EXPECT_EQ(requests[2].header("content-length"), "0");
    EXPECT_FALSE(requests[2].headers.contains("content-type"));
    EXPECT_EQ(requests[3].body, "{}");
    EXPECT_FALSE(requests[3].headers.contains("content-type"));
    EXPECT_EQ(requests[4].body, contents(path).substr(1000, 1'400'000));
    EXPECT_FALSE(requests[4].headers.contains("expect"));
    EXPECT_EQ(requests[5].header("expect"), "100-continue");
    EXPECT_EQ(requests[5].body, contents(path));
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(HttpClientTest, returnsARedirectAsItsStatus) {
    ScriptedHttpServer elsewhere(
        answering(log, [](ScriptedConnection &c, const ReceivedRequest &) { c.answer(200); }));
    ScriptedHttpServer server([&elsewhere](ScriptedConnection &c) {
        while (c.receive())
            c.answer(307, "Location: " + elsewhere.url("/stolen") + "\r\n");
    });
    const auto response = send({.url = server.url(), .headers = {{"Authorization", "Bearer secret"}}});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 307);
    EXPECT_EQ(log->count(), 0);
}

TEST_F(HttpClientTest, neverSendsABodyTwiceWhenAKeptConnectionBreaks) {
    // The first request is answered; the second meets a peer that goes away after the head, in the middle of
    // the body, after it, or in the middle of its answer's first line.
    for (const std::string ending : {"head", "within", "after", "first line"}) {
        const auto seen = std::make_shared<std::atomic<int>>(0);
        ScriptedHttpServer server([seen, ending](ScriptedConnection &c) {
            if (c.receive())
                c.answer(200);
            while (const auto head = c.receiveHead()) {
                ++*seen;
                if (ending == "head")
                    return c.reset();
                c.receiveBody(ending == "within" ? head->contentLength() / 2 : head->contentLength());
                if (ending == "first line")
                    c.send("HTTP/1.");
                c.reset();
                return;
            }
        });
        const std::filesystem::path path = fileOf(3'000'000);
        ASSERT_TRUE(send({.url = server.url()}));
        const auto result =
            send({.method = HttpMethod::patch, .url = server.url(), .body = FileRange{path, 0, 3'000'000}});
        ASSERT_FALSE(result) << ending;
        EXPECT_TRUE(result.error().ambiguous) << ending << ": " << result.error().platform.message;
        EXPECT_EQ(result.error().kind, TransportError::Kind::transport);
        EXPECT_LE(result.error().bodyBytesSent, 3'000'000);
        settle();
        EXPECT_EQ(*seen, 1) << ending;
    }
}

TEST_F(HttpClientTest, repeatsAGetWhenAKeptConnectionTurnsOutToBeDead) {
    const auto count = std::make_shared<std::atomic<int>>(0);
    ScriptedHttpServer server([count](ScriptedConnection &c) {
        while (c.receive()) {
            if (++*count == 2)
                return c.reset();
            c.answer(200);
        }
    });
    ASSERT_TRUE(send({.url = server.url()}));
    const auto second = send({.url = server.url()});
    ASSERT_TRUE(second) << second.error().platform.message;
    EXPECT_EQ(*count, 3);
}

TEST_F(HttpClientTest, namesWhatWentWrong) {
    const auto failing = [this](ScriptedHttpServer::Script script) {
        ScriptedHttpServer server(std::move(script));
        const auto result = send({.url = server.url()});
        EXPECT_FALSE(result);
        return result ? TransportError{} : result.error();
    };
    const TransportError garbage = failing([](ScriptedConnection &c) {
        c.receive();
        c.send("SSH-2.0-OpenSSH_9.2\r\n\r\n");
    });
    EXPECT_EQ(garbage.kind, TransportError::Kind::notHttp);

    const TransportError nothing = failing([](ScriptedConnection &c) { c.receive(); });
    EXPECT_EQ(nothing.kind, TransportError::Kind::transport);
    EXPECT_EQ(nothing.platform.code, CURLE_GOT_NOTHING);

    const TransportError half = failing([](ScriptedConnection &c) {
        c.receive();
        c.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
    });
    EXPECT_EQ(half.platform.code, CURLE_PARTIAL_FILE);
    EXPECT_TRUE(half.ambiguous);

    int freePort = 0;
    {
        ScriptedHttpServer gone([](ScriptedConnection &) {});
        freePort = gone.port();
    }
    const auto refused = send({.url = "http://127.0.0.1:" + std::to_string(freePort)});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().platform.domain, "curl");
    EXPECT_EQ(refused.error().platform.code, CURLE_COULDNT_CONNECT);
    EXPECT_FALSE(refused.error().ambiguous);

    ScriptedHttpServer plain([](ScriptedConnection &c) { c.receiveBody(1); });
    const auto tls = send({.url = "https://127.0.0.1:" + std::to_string(plain.port())});
    ASSERT_FALSE(tls);
    EXPECT_EQ(tls.error().kind, TransportError::Kind::transport);

    EXPECT_FALSE(send({.url = "file:///etc/hostname"}));
    EXPECT_FALSE(send({.url = "not an address"}));
    EXPECT_FALSE(send({.url = plain.url(), .headers = {{"X", "a\r\nInjected: b"}}}));
    EXPECT_FALSE(
        send({.method = HttpMethod::put, .url = plain.url(), .body = FileRange{folder / "none", 0, 1}}));
}

TEST_F(HttpClientTest, dropsAnAnswerThatIsTooLongButKeepsItsStatus) {
    ScriptedHttpServer server(answering(log, [](ScriptedConnection &c, const ReceivedRequest &) {
        c.answer(502, {}, std::string(100'000, 'x'));
    }));
    const auto response = send({.url = server.url(), .maxAnswerBytes = 1000});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 502);
    EXPECT_TRUE(response->bodyDropped);
    EXPECT_TRUE(response->body.empty());
}

TEST_F(HttpClientTest, endsWhenTheBodysFileBecomesShorter) {
    ScriptedHttpServer server([](ScriptedConnection &c) {
        const auto head = c.receiveHead();
        c.receiveBody(head->contentLength());
    });
    const std::filesystem::path path = fileOf(100'000);
    const auto result =
        send({.method = HttpMethod::put, .url = server.url(), .body = FileRange{path, 0, 200'000}});
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().kind, TransportError::Kind::file);
    EXPECT_TRUE(result.error().ambiguous);
}

TEST_F(HttpClientTest, countsSilenceAndNotSlowness) {
    // Reads 64 KiB every 20 ms: never silent for 300 ms, though the whole takes longer than a second and the
    // kernel has swallowed the end of the body long before.
    ScriptedHttpServer slow([](ScriptedConnection &c) {
        const auto head = c.receiveHead();
        std::int64_t left = head->contentLength();
        while (left > 0) {
            std::this_thread::sleep_for(20ms);
            const std::int64_t got = std::int64_t(c.receiveBody(std::min<std::int64_t>(left, 65536)).size());
            if (got == 0)
                return;
            left -= got;
        }
        c.answer(200);
    });
    const std::filesystem::path path = fileOf(5'000'000);
    const auto start = std::chrono::steady_clock::now();
    const auto result = send({.method = HttpMethod::put,
                              .url = slow.url(),
                              .body = FileRange{path, 0, 5'000'000},
                              .silence = 300ms});
    EXPECT_TRUE(result) << result.error().platform.message;
    EXPECT_GT(std::chrono::steady_clock::now() - start, 1s);
}

TEST_F(HttpClientTest, timesOutOnAPeerThatFallsSilentAnywhere) {
    const std::filesystem::path path = fileOf(30'000'000);
    const auto expectTimeout = [this, &path](ScriptedHttpServer::Script script) {
        ScriptedHttpServer server(std::move(script));
        const auto start = std::chrono::steady_clock::now();
        const auto result = send({.method = HttpMethod::put,
                                  .url = server.url(),
                                  .body = FileRange{path, 0, 30'000'000},
                                  .silence = 250ms});
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().platform.code, CURLE_OPERATION_TIMEDOUT);
        EXPECT_TRUE(result.error().ambiguous);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        // Its connection is closed and not kept for others.
        EXPECT_TRUE(eventually([&server] { return server.endedCount() == 1; }));
    };
    expectTimeout([](ScriptedConnection &c) { c.waitForClose(); });
    expectTimeout([](ScriptedConnection &c) {
        c.receiveHead();
        c.receiveBody(10'000'000);
        c.waitForClose();
    });
    expectTimeout([](ScriptedConnection &c) {
        c.receive();
        c.waitForClose();
    });
    expectTimeout([](ScriptedConnection &c) {
        c.receive();
        c.send("HTTP/1.1 200 OK\r\nContent-Le");
        c.waitForClose();
    });
}

TEST_F(HttpClientTest, closesTheSocketAtOnceWhenStopped) {
    const auto closed = std::make_shared<std::atomic<bool>>(false);
    const auto reading = std::make_shared<std::atomic<bool>>(false);
    ScriptedHttpServer server([closed, reading](ScriptedConnection &c) {
        const auto head = c.receiveHead();
        c.receiveBody(1'000'000);
        *reading = true;
        c.receiveBody(head->contentLength());
        *closed = true;
    });
    const std::filesystem::path path = fileOf(1'000'000);
    std::stop_source stop;
    // The body never ends: the file is shorter than what the server waits for only after the stop.
    Task<HttpResult> task = client.send({.method = HttpMethod::put,
                                         .url = server.url(),
                                         .body = FileRange{"/dev/zero", 0, 1'000'000'000'000}},
                                        stop.get_token());
    ASSERT_TRUE(eventually([&reading] { return reading->load(); }));
    const auto asked = std::chrono::steady_clock::now();
    stop.request_stop();
    EXPECT_TRUE(task.isReady());
    while (!*closed && std::chrono::steady_clock::now() - asked < 5s)
        std::this_thread::sleep_for(1ms);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 500ms);
    const auto result = runTask(std::move(task));
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.error().isCancelled());

    // A stop that came before the start sends nothing.
    const auto never = runTask(client.send({.url = server.url()}, stop.get_token()));
    ASSERT_FALSE(never);
    EXPECT_TRUE(never.error().isCancelled());
    EXPECT_EQ(server.connectionCount(), 1);
}

/// An object in the middle of a request.
struct Requester {
    explicit Requester(HttpClient &http, const std::string &url, bool *sawCancel) {
        scope.start(
            [](Requester *self, HttpClient *c, std::string u, bool *saw, std::stop_token stop) -> Task<> {
                const auto result = co_await c->send({.url = u}, stop);
                *saw = !result && result.error().isCancelled() && self->alive;
            },
            this, &http, url, sawCancel);
    }
    bool alive = true;
    TaskScope scope;
};

TEST_F(HttpClientTest, unwindsWhenTheOwnerOrTheClientIsDestroyedMidRequest) {
    ScriptedHttpServer server([](ScriptedConnection &c) { c.waitForClose(); });
    bool cancelled = false;
    auto owner = std::make_unique<Requester>(client, server.url(), &cancelled);
    ASSERT_TRUE(eventually([&server] { return server.connectionCount() == 1; }));
    owner.reset();
    EXPECT_TRUE(cancelled);
    EXPECT_TRUE(eventually([&server] { return server.endedCount() == 1; }));

    cancelled = false;
    auto second = std::make_unique<HttpClient>();
    Requester waiting(*second, server.url(), &cancelled);
    ASSERT_TRUE(eventually([&server] { return server.connectionCount() == 2; }));
    second.reset();
    EXPECT_TRUE(eventually([&cancelled] { return cancelled; }));
}

TEST(HttpResponse, isAWebPageWhenItsBodyIsOneWhateverItsTypeSays) {
    HttpResponse response{.status = 200, .headers = {{"Content-Type", "text/html; charset=utf-8"}}};
    for (const char *harmless : {"", "  \r\n", "OK", "<p>stored</p>", R"({"text":"<html>"})",
                                 "<?xml version=\"1.0\"?><Result><Key>html</Key></Result>"}) {
        response.body = harmless;
        EXPECT_FALSE(response.isWebPage()) << harmless;
    }
    response.headers.clear();
    for (const char *page : {"<!DOCTYPE HTML><title>Log in</title>", "\xef\xbb\xbf\r\n <HTML lang=en>",
                             "<!-- portal --> <head>", "<?xml version=\"1.0\"?>\n<!DOCTYPE html PUBLIC>",
                             "<meta http-equiv=refresh content='0;url=/login'>",
                             "<script>location = '/login'</script>", "<body onload=go()>"}) {
        response.body = page;
        EXPECT_TRUE(response.isWebPage()) << page;
    }
}

TEST_F(HttpClientTest, goesThroughTheEnvironmentsProxyButNeverToThisComputer) {
    ScriptedHttpServer proxy(answering(log, [](ScriptedConnection &c, const ReceivedRequest &r) {
        c.answer(r.method == "CONNECT" ? 403 : 200, {}, "from the proxy");
    }));
    ScriptedHttpServer direct(
        answering(log, [](ScriptedConnection &c, const ReceivedRequest &) { c.answer(200); }));
    const std::string address = "http://127.0.0.1:" + std::to_string(proxy.port());
    const ScopedEnvironment plain("http_proxy", address);
    const ScopedEnvironment secure("https_proxy", address);

    const auto response = send({.url = "http://storage.invalid/x"});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "from the proxy");
    EXPECT_EQ(log->all().back().target, "http://storage.invalid/x");

    const auto refused =
        send({.url = "https://storage.invalid/x", .headers = {{"Authorization", "Bearer secret"}}});
    ASSERT_FALSE(refused);
    EXPECT_EQ(log->all().back().method, "CONNECT");
    EXPECT_FALSE(log->all().back().headers.contains("authorization"));

    ASSERT_TRUE(send({.url = direct.url()}));
    EXPECT_EQ(log->all().back().target, "/");

    const ScopedEnvironment none("no_proxy", "storage.invalid");
    EXPECT_FALSE(send({.url = "http://storage.invalid/x"}));
    EXPECT_EQ(log->count(), 3);
}

TEST_F(HttpClientTest, goesThroughTheDesktopsProxyWhereTheEnvironmentNamesNone) {
    ScriptedHttpServer proxy(answering(
        log, [](ScriptedConnection &c, const ReceivedRequest &) { c.answer(200, {}, "from the proxy"); }));
    // The desktop's settings as a file, for the resolver that a GNOME session has.
    const std::filesystem::path settings = folder / "glib-2.0/settings/keyfile";
    std::filesystem::create_directories(settings.parent_path());
    std::ofstream(settings) << "[system/proxy]\nmode='manual'\nignore-hosts=['direct.invalid']\n"
                            << "[system/proxy/http]\nhost='127.0.0.1'\nport=" << proxy.port() << "\n";
    const ScopedEnvironment config("XDG_CONFIG_HOME", folder.path().string());
    const ScopedEnvironment backend("GSETTINGS_BACKEND", "keyfile");
    const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "GNOME");
    const auto response = send({.url = "http://storage.invalid/x"});
    ASSERT_TRUE(response) << response.error().platform.message;
    EXPECT_EQ(response->body, "from the proxy");
    EXPECT_FALSE(send({.url = "http://direct.invalid/x"}));
    EXPECT_EQ(log->count(), 1);
}

} // namespace
} // namespace vantrell::testing

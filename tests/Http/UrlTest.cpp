// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/Url.h"
#include "Http/ServiceURL.h"
#include "TestSupport/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

TEST(ServiceURL, takesHttpsAnywhereAndHttpOnThisComputerOnly) {
    for (const char *good :
         {"https://api.example.com", "https://api.example.com:8443/base/", "http://localhost:8080",
          "http://127.0.0.1", "http://127.9.9.9:1", "http://[::1]:3000/"})
        EXPECT_TRUE(ServiceURL::parse(good)) << good;
    for (const char *insecure :
         {"http://api.example.com", "http://192.168.1.2:3000", "http://localhost.example.com",
          "http://127.0.0.1.example.com", "http://[fe80::1]/", "http://0.0.0.0"}) {
        const auto url = ServiceURL::parse(insecure);
        ASSERT_FALSE(url) << insecure;
        EXPECT_EQ(url.error(), ServiceURLError::insecure) << insecure;
    }
    for (const char *text : {"", "api.example.com", "ftp://api.example.com", "file:///etc/passwd", "https://",
                             "https://a b/", "javascript:alert(1)"}) {
        const auto url = ServiceURL::parse(text);
        ASSERT_FALSE(url) << text;
        EXPECT_EQ(url.error(), ServiceURLError::notAnAddress) << text;
    }
    for (const char *text :
         {"https://key@api.example.com", "https://api.example.com/?a=b", "http://localhost/#x"}) {
        const auto url = ServiceURL::parse(text);
        ASSERT_FALSE(url) << text;
        EXPECT_EQ(url.error(), ServiceURLError::notABase) << text;
    }
}

TEST(ServiceURL, appendsPathsBehindItsOwn) {
    EXPECT_EQ(ServiceURL::parse("https://a.example//")->appending("v1/keys/poll"),
              "https://a.example/v1/keys/poll");
    EXPECT_EQ(ServiceURL::parse("https://a.example/base")->appending("v1/x"), "https://a.example/base/v1/x");
}

TEST(ServiceURL, comesFromTheEnvironmentOrElseIsBuiltIn) {
    {
        const ScopedEnvironment environment("VANTRELL_API_URL", "http://127.0.0.1:4321/");
        EXPECT_EQ(ServiceURL::fromEnvironment()->text(), "http://127.0.0.1:4321");
    }
    {
        const ScopedEnvironment environment("VANTRELL_API_URL", "http://example.com");
        EXPECT_FALSE(ServiceURL::fromEnvironment());
    }
    const ScopedEnvironment environment("VANTRELL_API_URL", "");
    ASSERT_TRUE(ServiceURL::fromEnvironment());
    EXPECT_TRUE(ServiceURL::fromEnvironment()->text().starts_with("https://"));
}

TEST(Url, resolvesReferencesAgainstABase) {
    const std::string base = "https://s.example:8443/upload/create";
    EXPECT_EQ(resolveUrl(base, "/files/1?x=2"), "https://s.example:8443/files/1?x=2");
    EXPECT_EQ(resolveUrl(base, "1"), "https://s.example:8443/upload/1");
    EXPECT_EQ(resolveUrl(base, "http://other.example/7"), "http://other.example/7");
    EXPECT_EQ(resolveUrl(base, "//other.example/7"), "https://other.example/7");
    EXPECT_EQ(resolveUrl(base, "ftp://other.example/7"), std::nullopt);
    EXPECT_EQ(resolveUrl("nonsense", "/7"), std::nullopt);
}

} // namespace
} // namespace vantrell::testing

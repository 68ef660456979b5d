// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/DesktopProxy.h"

#include <gio/gio.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

namespace vantrell {

namespace {

struct StringsFree {
    void operator()(gchar **strings) const { g_strfreev(strings); }
};

/// None for a kind of proxy that libcurl does not know.
std::optional<std::string> asCurlTakesIt(std::string_view proxy) {
    const std::size_t end = proxy.find("://");
    const std::string_view scheme = proxy.substr(0, end);
    if (scheme == "direct")
        return "";
    // The proxy looks names up: this computer may not be able to.
    if (scheme == "socks" || scheme == "socks5")
        return "socks5h" + std::string(proxy.substr(end));
    if (scheme == "socks4" || scheme == "socks4a")
        return "socks4a" + std::string(proxy.substr(end));
    if (scheme == "http" || scheme == "https")
        return std::string(proxy);
    return std::nullopt;
}

} // namespace

std::string desktopProxyFor(const std::string &url) {
    // Owned by GLib. It picks the resolver that knows this desktop; where there is none, everything is
    // direct.
    GProxyResolver *const resolver = g_proxy_resolver_get_default();
    const std::unique_ptr<gchar *, StringsFree> proxies(
        g_proxy_resolver_lookup(resolver, url.c_str(), nullptr, nullptr));
    for (gchar **proxy = proxies.get(); proxy && *proxy; ++proxy) {
        if (auto taken = asCurlTakesIt(*proxy))
            return std::move(*taken);
    }
    return {};
}

bool environmentHasProxyFor(const std::string &url) {
    const auto isSet = [](const char *name) {
        const char *value = std::getenv(name);
        return value && *value;
    };
    // The names that libcurl looks at. HTTP_PROXY is none: a web server would set it from a request's header.
    return isSet("all_proxy") || isSet("ALL_PROXY") ||
           (url.starts_with("https:") ? isSet("https_proxy") || isSet("HTTPS_PROXY") : isSet("http_proxy"));
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ReleaseFeed.h"

#include "Support/JsonReader.h"
#include "Support/Log.h"

#include <QByteArray>

#include <openssl/evp.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace vantrell {

namespace {

struct OpensslFree {
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};

const unsigned char *bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char *>(text.data());
}

bool isSignedBy(const std::string &publicKey, std::string_view text, std::string_view signature) {
    const std::unique_ptr<EVP_PKEY, OpensslFree> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytesOf(publicKey), publicKey.size()));
    const std::unique_ptr<EVP_MD_CTX, OpensslFree> context(EVP_MD_CTX_new());
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytesOf(signature), signature.size(), bytesOf(text),
                            text.size()) == 1;
}

std::unexpected<UpdateError> untrusted(const std::string &why) {
    qCInfo(logApp, "list of updates refused: %s", why.c_str());
    return std::unexpected(UpdateError{UpdateError::Kind::untrusted, {}});
}

/// None when it is no version.
std::optional<std::vector<int>> numbersOf(std::string_view version) {
    std::vector<int> numbers;
    while (true) {
        int number = 0;
        const auto [end, error] = std::from_chars(version.data(), version.data() + version.size(), number);
        if (error != std::errc() || number < 0)
            return std::nullopt;
        numbers.push_back(number);
        version.remove_prefix(std::size_t(end - version.data()));
        if (version.empty())
            return numbers;
        if (version.front() != '.')
            return std::nullopt;
        version.remove_prefix(1);
    }
}

} // namespace

std::expected<std::vector<Release>, UpdateError> readReleaseFeed(std::string_view document,
                                                                 const std::string &publicKey) {
    const auto envelope = parseJson(document);
    if (!envelope)
        return untrusted(envelope.error().message);
    JsonReader outer(*envelope);
    const std::string text = outer.string("signed");
    const std::string encoded = outer.string("signature");
    if (outer.error())
        return untrusted(outer.error()->message);
    const auto signature = QByteArray::fromBase64Encoding(QByteArray::fromStdString(encoded));
    if (!signature || !isSignedBy(publicKey, text, (*signature).toStdString()))
        return untrusted("the signature does not hold");
    const auto list = parseJson(text);
    if (!list)
        return untrusted(list.error().message);
    JsonReader reader(*list);
    const nlohmann::json &entries = reader.array("releases");
    if (reader.error())
        return untrusted(reader.error()->message);
    std::vector<Release> releases;
    for (const nlohmann::json &entry : entries) {
        JsonReader fields(entry);
        Release release;
        release.version = fields.string("version");
        release.kind = fields.string("kind");
        release.architecture = fields.string("architecture");
        release.url = fields.string("url");
        release.size = fields.integer("size");
        release.sha256 = fields.string("sha256");
        if (!fields.error() && release.size > 0 && numbersOf(release.version))
            releases.push_back(std::move(release));
    }
    return releases;
}

bool isNewerVersion(const std::string &version, const std::string &than) {
    auto left = numbersOf(version);
    auto right = numbersOf(than);
    if (!left || !right)
        return false;
    const std::size_t length = std::max(left->size(), right->size());
    left->resize(length);
    right->resize(length);
    return *left > *right;
}

std::optional<Release> newestRelease(const std::vector<Release> &releases, const std::string &kind,
                                     const std::string &architecture, const std::string &currentVersion) {
    std::optional<Release> newest;
    for (const Release &release : releases) {
        if (release.kind == kind && release.architecture == architecture &&
            isNewerVersion(release.version, newest ? newest->version : currentVersion))
            newest = release;
    }
    return newest;
}

} // namespace vantrell

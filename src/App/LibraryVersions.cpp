// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/LibraryVersions.h"

#include <QtGlobal>

#include <curl/curl.h>
#include <openssl/crypto.h>
#include <pulse/version.h>
#include <x264.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <gnu/libc-version.h>

namespace vantrell {

namespace {

std::string libavVersion(unsigned version) {
    return std::to_string(AV_VERSION_MAJOR(version)) + '.' + std::to_string(AV_VERSION_MINOR(version)) + '.' +
           std::to_string(AV_VERSION_MICRO(version));
}

} // namespace

std::vector<LibraryVersion> libraryVersions() {
    const curl_version_info_data *const curl = curl_version_info(CURLVERSION_NOW);
    return {
        {"Qt", qVersion()},
        {"libavcodec", libavVersion(avcodec_version())},
        {"libavformat", libavVersion(avformat_version())},
        {"x264", std::to_string(X264_BUILD)},
        {"libcurl",
         std::string(curl->version) + (curl->ssl_version ? ", " + std::string(curl->ssl_version) : "")},
        {"libcrypto", OpenSSL_version(OPENSSL_VERSION_STRING)},
        {"libpulse", pa_get_library_version()},
        {"glibc", gnu_get_libc_version()},
    };
}

} // namespace vantrell

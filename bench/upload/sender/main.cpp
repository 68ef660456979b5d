// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/StoragePut.h"
#include "API/TusUploader.h"
#include "Support/AtomicFile.h"
#include "Support/SystemClock.h"

#include <QCoreApplication>
#include <QCoroTask>

#include <iostream>

namespace vantrell::bench {

namespace {

std::optional<UploadDescriptor> readDescriptor(const std::filesystem::path &file) {
    const auto text = readFile(file);
    const auto json = parseJson(text.value_or(""));
    if (!json)
        return std::nullopt;
    JsonReader reader(*json);
    const UploadDescriptor descriptor = decodeUploadDescriptor(reader);
    return reader.error() ? std::nullopt : std::optional(descriptor);
}

Task<> keep(std::string location, std::filesystem::path file) {
    if (!file.empty() && !writeFileAtomically(file, location))
        std::cerr << "upload-send: the location was not kept" << std::endl;
    co_return;
}

Task<std::expected<void, TransferError>> send(UploadDescriptor descriptor, std::filesystem::path file,
                                              std::filesystem::path locationFile) {
    HttpClient http;
    SystemClock clock;
    if (const auto *standard = std::get_if<StandardUpload>(&descriptor))
        co_return co_await StoragePut(http).putFile(file, standard->uploadUrl, "video/quicktime", {});
    std::optional<std::string> location;
    if (const auto saved = readFile(locationFile); saved && !saved->empty())
        location = *saved;
    const TusUploader uploader(http, clock);
    co_return co_await uploader.upload(
        file, std::get<TusUpload>(descriptor), location,
        {.onLocation =
             [&locationFile](std::string created) { return keep(std::move(created), locationFile); },
         .onProgress = {}},
        {});
}

} // namespace
} // namespace vantrell::bench

/// `upload-send DESCRIPTOR FILE [LOCATION-FILE]`: this project's transfer alone, as a process of its own that
/// can be measured and killed. The location file keeps the upload's address, so that a later run resumes it.
int main(int argc, char **argv) {
    using namespace vantrell::bench;
    QCoreApplication application(argc, argv);
    const auto descriptor = argc >= 3 ? readDescriptor(argv[1]) : std::nullopt;
    if (!descriptor) {
        std::cerr << "upload-send DESCRIPTOR FILE [LOCATION-FILE]" << std::endl;
        return 2;
    }
    const auto sent = QCoro::waitFor(send(*descriptor, argv[2], argc > 3 ? argv[3] : ""));
    if (!sent)
        std::cerr << "upload-send: " << logText(sent.error()) << std::endl;
    return sent ? 0 : 1;
}

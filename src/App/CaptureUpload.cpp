// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/CaptureUpload.h"

#include "API/StoragePut.h"
#include "API/TusUploader.h"
#include "Media/MovieReader.h"
#include "Support/Log.h"

#include <QUuid>

#include <cmath>
#include <cstdlib>

namespace vantrell {

namespace {

std::optional<std::filesystem::path> existing(std::filesystem::path path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored) ? std::optional(std::move(path)) : std::nullopt;
}

std::optional<std::filesystem::path> beside(const std::filesystem::path &file, const char *extension) {
    return existing(std::filesystem::path(file).replace_extension(extension));
}

Task<std::expected<void, TransferError>> sendMain(CaptureUpload upload, UploadDescriptor descriptor,
                                                  ServiceSession *session, CommandContext context,
                                                  std::stop_token stop) {
    if (const auto *standard = std::get_if<StandardUpload>(&descriptor)) {
        const StoragePut put(session->http());
        co_return co_await put.putFile(upload.file, standard->uploadUrl, upload.mime, stop);
    }
    const TusUploader uploader(session->http(), context.clock);
    TusUploader::Callbacks callbacks;
    callbacks.onProgress = [&context, name = upload.file.filename().string()](std::int64_t sent,
                                                                              std::int64_t total) {
        context.reporter.progress(name + "  " + std::to_string(total > 0 ? sent * 100 / total : 100) + " %");
    };
    auto sent = co_await uploader.upload(upload.file, std::get<TusUpload>(descriptor), {},
                                         std::move(callbacks), stop);
    context.reporter.progress({});
    co_return sent;
}

Task<> sendSideFile(std::optional<std::filesystem::path> file, std::optional<SignedCapture::SideSlot> slot,
                    std::string mime, ServiceSession *session, std::stop_token stop) {
    if (!file || !slot)
        co_return;
    const StoragePut put(session->http());
    const auto sent = co_await put.putFile(*file, slot->uploadUrl, mime, stop);
    if (!sent)
        qCWarning(logUpload, "side file upload failed (asset still confirms): %s",
                  logText(sent.error()).c_str());
}

} // namespace

std::expected<CaptureUpload, std::string> CaptureUpload::ofFile(const std::filesystem::path &file) {
    if (!existing(file))
        return std::unexpected("There is no file " + file.string());
    CaptureUpload upload;
    upload.file = file;
    upload.name = file.stem().string();
    const std::string extension = file.extension().string();
    if (extension == ".mov") {
        const auto facts = readMovieFacts(file);
        if (!facts)
            return std::unexpected(file.string() + ": " + facts.error().description());
        upload.kind = "video";
        upload.mime = "video/quicktime";
        upload.durationMs = std::llround(facts->durationMs);
    } else if (extension == ".png") {
        upload.kind = "image";
        upload.mime = "image/png";
    } else {
        return std::unexpected(file.string() + " is neither a .mov recording nor a .png screenshot");
    }
    upload.thumbnail = beside(file, ".jpg");
    upload.sidecar = beside(file, ".json");
    return upload;
}

Task<std::expected<std::string, std::string>> uploadCapture(CaptureUpload upload, std::string projectId,
                                                            ServiceSession *session, CommandContext context,
                                                            std::stop_token stop) {
    const auto size = TusUploader::fileSize(upload.file);
    if (!size)
        co_return std::unexpected(size.error().description());
    CaptureRegistration registration;
    registration.projectId = projectId;
    registration.kind = upload.kind;
    registration.mime = upload.mime;
    registration.bytes = *size;
    registration.durationMs = upload.durationMs;
    registration.name = upload.name;
    if (upload.thumbnail)
        registration.thumbBytes = TusUploader::fileSize(*upload.thumbnail).value_or(0);
    registration.hasMeta = upload.sidecar.has_value();
    registration.captureId = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();

    const auto registered = co_await session->api().sign(registration, stop);
    if (!registered)
        co_return std::unexpected(registered.error().description());
    const auto sent = co_await sendMain(upload, registered->main.upload, session, context, stop);
    if (!sent)
        co_return std::unexpected(description(sent.error()));
    co_await sendSideFile(upload.thumbnail, registered->thumb, "image/jpeg", session, stop);
    co_await sendSideFile(upload.sidecar, registered->meta, "application/json", session, stop);
    const auto confirmed = co_await session->api().confirm(registered->assetId, stop);
    if (!confirmed)
        co_return std::unexpected(confirmed.error().description());
    qCInfo(logUpload, "capture uploaded: %s", registered->assetId.c_str());
    co_return registered->assetId;
}

} // namespace vantrell

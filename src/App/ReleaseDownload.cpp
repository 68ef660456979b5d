// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ReleaseDownload.h"

#include "Support/BlockingWork.h"
#include "Support/DiskFile.h"

#include <QCryptographicHash>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

using Kind = UpdateError::Kind;

constexpr std::int64_t pieceBytes = 4 << 20;
constexpr int mostFailures = 3;

std::unexpected<UpdateError> failure(Kind kind, std::optional<PlatformError> platform = {}) {
    return std::unexpected(UpdateError{kind, std::move(platform)});
}

std::unexpected<UpdateError> failure(const std::variant<PlatformError, Cancelled> &error) {
    if (const auto *platform = std::get_if<PlatformError>(&error))
        return failure(Kind::notPlaced, *platform);
    return failure(Kind::cancelled);
}

/// The bytes from `offset` on out of an answer; none when it holds others.
std::optional<std::string> pieceOf(HttpResponse answer, std::int64_t offset, const Release &release) {
    const auto length = std::int64_t(answer.body.size());
    if (answer.bodyDropped || length == 0 || length > release.size - offset)
        return std::nullopt;
    // A server that knows no ranges sends the whole.
    if (answer.status == 200 && offset == 0 && length == release.size)
        return std::move(answer.body);
    const std::string range = "bytes " + std::to_string(offset) + "-";
    if (answer.status == 206 && answer.headers.find("Content-Range").value_or("").starts_with(range))
        return std::move(answer.body);
    return std::nullopt;
}

/// One piece, however often it takes.
Task<std::expected<std::string, UpdateError>> fetchPiece(HttpClient *http, Clock *clock, Release release,
                                                         std::string address, std::int64_t offset,
                                                         std::stop_token stop) {
    const std::int64_t last = std::min(offset + pieceBytes, release.size) - 1;
    for (int failures = 0;; ++failures) {
        HttpRequest request;
        request.url = address;
        request.headers.add("Range", "bytes=" + std::to_string(offset) + "-" + std::to_string(last));
        request.maxAnswerBytes = pieceBytes;
        auto answer = co_await http->send(std::move(request), stop);
        if (stop.stop_requested() || (!answer && answer.error().isCancelled()))
            co_return failure(Kind::cancelled);
        if (answer && answer->isSuccess()) {
            auto piece = pieceOf(std::move(*answer), offset, release);
            if (!piece)
                co_return failure(Kind::damaged);
            co_return std::move(*piece);
        }
        if (failures == mostFailures || (answer && answer->status < 500))
            co_return failure(Kind::unreachable);
        if (!co_await clock->sleep(1s * (1 << failures), stop))
            co_return failure(Kind::cancelled);
    }
}

Task<std::expected<void, UpdateError>> fetchInto(HttpClient *http, Clock *clock, Release release,
                                                 std::string address, std::filesystem::path file,
                                                 std::stop_token stop) {
    auto created = co_await runBlocking([file] { return DiskFile::create(file); }, stop);
    if (!created)
        co_return failure(created.error());
    const auto target = std::make_shared<DiskFile>(std::move(*created));
    for (std::int64_t offset = 0; offset < release.size;) {
        auto piece = co_await fetchPiece(http, clock, release, address, offset, stop);
        if (!piece)
            co_return std::unexpected(std::move(piece.error()));
        const auto length = std::int64_t(piece->size());
        const auto written = co_await runBlocking(
            [target, offset, bytes = std::move(*piece)] {
                return target->writeAt(std::uint64_t(offset),
                                       {reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()});
            },
            stop);
        if (!written)
            co_return failure(written.error());
        offset += length;
    }
    const auto verified = co_await runBlocking(
        [target, release, file]() -> std::expected<void, UpdateError> {
            if (const auto synced = target->sync(); !synced)
                return failure(Kind::notPlaced, synced.error());
            // What is open for writing cannot be started, and this work may go later than its result comes.
            target->close();
            return verifyRelease(release, file);
        },
        stop);
    if (verified)
        co_return std::expected<void, UpdateError>();
    const auto *error = std::get_if<UpdateError>(&verified.error());
    co_return std::unexpected(error ? *error : UpdateError{});
}

} // namespace

std::expected<void, UpdateError> verifyRelease(const Release &release, const std::filesystem::path &file) {
    const auto opened = DiskFile::openForReading(file);
    if (!opened)
        return failure(Kind::notPlaced, opened.error());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<std::uint8_t> buffer(1 << 20);
    std::int64_t offset = 0;
    while (true) {
        const auto count = opened->readAt(std::uint64_t(offset), buffer);
        if (!count)
            return failure(Kind::notPlaced, count.error());
        hash.addData(QByteArrayView(buffer.data(), qsizetype(*count)));
        offset += std::int64_t(*count);
        if (*count < buffer.size())
            break;
    }
    if (offset != release.size || hash.result().toHex().toStdString() != release.sha256)
        return failure(Kind::damaged);
    return {};
}

Task<std::expected<void, UpdateError>> downloadRelease(HttpClient &http, Clock &clock, Release release,
                                                       std::string address, std::filesystem::path file,
                                                       std::stop_token stop) {
    std::error_code ignored;
    const std::filesystem::path part = file.string() + ".part";
    std::filesystem::remove(part, ignored);
    const auto fetched = co_await fetchInto(&http, &clock, release, std::move(address), part, stop);
    if (fetched) {
        std::filesystem::rename(part, file, ignored);
        if (!ignored)
            co_return std::expected<void, UpdateError>();
    }
    std::filesystem::remove(part, ignored);
    co_return fetched ? failure(Kind::notPlaced) : std::unexpected(fetched.error());
}

} // namespace vantrell

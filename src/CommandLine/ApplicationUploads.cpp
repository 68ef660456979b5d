// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ApplicationUploads.h"

#include "API/APIError.h"
#include "Support/FilePath.h"

#include <QDBusArgument>
#include <QStringList>

#include <algorithm>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto progressInterval = 500ms;

QString textOf(const std::string &text) {
    return QString::fromStdString(text);
}

QStringList textsOf(const std::vector<std::string> &texts) {
    QStringList list;
    for (const std::string &text : texts)
        list.append(textOf(text));
    return list;
}

} // namespace

/// What `await` waits for.
struct ApplicationUploads::Waiting {
    std::function<void(const RunningApplication::Uploaded &)> ended;
    std::size_t left = 0;
    std::optional<RunningApplication::CallError> failure;
    OneShot<bool> done;
};

ApplicationUploads::ApplicationUploads(Clock &clock) : m_clock(clock) {}

Task<std::expected<void, ApplicationUploads::Refusal>> ApplicationUploads::prepare(std::stop_token stop) {
    const auto answer = co_await RunningApplication::call("Status", {}, stop);
    if (!answer)
        co_return std::unexpected(Refusal{answer.error().sentence, false});
    const QVariantMap status = qdbus_cast<QVariantMap>(answer->value(0).value<QDBusArgument>());
    if (!status.value(QStringLiteral("connected")).toBool())
        co_return std::unexpected(Refusal{APIError(APIError::NotPaired{}).description(), true});
    co_return std::expected<void, Refusal>();
}

Task<std::expected<std::vector<ApplicationUploads::Taken>, RunningApplication::CallError>>
ApplicationUploads::add(std::vector<std::filesystem::path> files, std::optional<std::string> projectId,
                        std::stop_token stop) {
    QStringList paths;
    for (const std::filesystem::path &file : files)
        paths.append(textOf(textOfPath(std::filesystem::absolute(file))));
    QVariantList arguments;
    arguments.append(QVariant(paths));
    arguments.append(textOf(projectId.value_or("")));
    const auto answer = co_await RunningApplication::call("Upload", arguments, stop);
    if (!answer)
        co_return std::unexpected(answer.error());
    const QStringList ids = answer->value(0).toStringList();
    const QStringList errors = answer->value(1).toStringList();
    std::vector<Taken> taken;
    for (int i = 0; i < int(files.size()); ++i) {
        if (const std::string why = errors.value(i).toStdString(); !why.empty())
            taken.push_back({files[std::size_t(i)], std::unexpected(why)});
        else
            taken.push_back({files[std::size_t(i)], ids.value(i).toStdString()});
    }
    co_return taken;
}

Task<std::expected<std::vector<std::string>, RunningApplication::CallError>>
ApplicationUploads::resume(std::stop_token stop) {
    const auto answer = co_await RunningApplication::call("Resume", {}, stop);
    if (!answer)
        co_return std::unexpected(answer.error());
    std::vector<std::string> ids;
    for (const QString &id : answer->value(0).toStringList())
        ids.push_back(id.toStdString());
    co_return ids;
}

Task<std::expected<void, RunningApplication::CallError>>
ApplicationUploads::await(std::vector<std::string> ids,
                          std::function<void(const RunningApplication::Uploaded &)> ended,
                          std::stop_token stop) {
    using Result = std::expected<void, RunningApplication::CallError>;
    if (ids.empty())
        co_return Result();
    Waiting waiting{[this, ended = std::move(ended)](const RunningApplication::Uploaded &uploaded) {
                        m_lines.clear();
                        ended(uploaded);
                    },
                    ids.size(),
                    {},
                    {}};
    m_waiting = &waiting;
    TaskScope waits;
    waits.start(this, &ApplicationUploads::showProgress, ids);
    for (const std::string &id : ids)
        waits.start(this, &ApplicationUploads::awaitOne, id);
    const bool isDone = (co_await waiting.done.wait(stop)).has_value();
    waits.cancel();
    m_waiting = nullptr;
    m_lines.clear();
    if (!isDone)
        co_return std::unexpected(RunningApplication::CallError{"Interrupted"});
    if (waiting.failure)
        co_return std::unexpected(*waiting.failure);
    co_return Result();
}

Task<> ApplicationUploads::awaitOne(std::string id, std::stop_token stop) {
    const auto uploaded = co_await RunningApplication::awaitUpload(std::move(id), stop);
    if (stop.stop_requested() || !m_waiting)
        co_return;
    if (uploaded)
        m_waiting->ended(*uploaded);
    else
        m_waiting->failure = uploaded.error();
    if (--m_waiting->left == 0 || !uploaded)
        m_waiting->done.resolve(true);
}

Task<> ApplicationUploads::showProgress(std::vector<std::string> ids, std::stop_token stop) {
    QVariantList arguments;
    arguments.append(QVariant(textsOf(ids)));
    while (co_await m_clock.sleep(progressInterval, stop)) {
        const auto answer = co_await RunningApplication::call("Progress", arguments, stop);
        if (!answer)
            co_return;
        std::vector<std::string> lines;
        for (const double progress : qdbus_cast<QList<double>>(answer->value(0).value<QDBusArgument>()))
            if (progress > 0)
                lines.push_back("Uploading " + std::to_string(int(progress * 100)) + "%");
        m_lines.show(lines);
    }
}

Task<ApplicationUploads::Asset> ApplicationUploads::upload(std::filesystem::path file,
                                                           std::optional<std::string> projectId,
                                                           std::stop_token stop) {
    std::vector<std::filesystem::path> files;
    files.push_back(std::move(file));
    const auto taken = co_await add(files, std::move(projectId), stop);
    if (!taken)
        co_return std::unexpected(taken.error().sentence);
    if (!taken->front().id)
        co_return std::unexpected(taken->front().id.error());
    co_return co_await awaitUpload(QUuid(textOf(*taken->front().id)), stop);
}

Task<ApplicationUploads::Asset> ApplicationUploads::awaitUpload(QUuid journalId, std::stop_token stop) {
    Asset asset = std::unexpected(Cancelled());
    std::vector<std::string> ids;
    ids.push_back(journalId.toString(QUuid::WithoutBraces).toStdString());
    const auto awaited = co_await await(
        ids,
        [&asset](const RunningApplication::Uploaded &uploaded) {
            if (uploaded.assetId)
                asset = *uploaded.assetId;
            else
                asset = std::unexpected(uploaded.assetId.error());
        },
        stop);
    co_return asset;
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/UploadCommand.h"

#include "App/CaptureUpload.h"
#include "App/ServiceSession.h"
#include "Support/BlockingWork.h"

#include <nlohmann/json.hpp>

namespace vantrell {

namespace {

ExitCode fail(const CommandContext &context, const std::string &sentence, ExitCode code = ExitCode::failed) {
    context.reporter.failure(sentence);
    return code;
}

} // namespace

Task<ExitCode> runUpload(UploadArguments arguments, CommandContext context, std::stop_token stop) {
    auto session = ServiceSession::create(context);
    if (!session)
        co_return fail(context, session.error());
    if (!co_await (*session)->connect(stop))
        co_return fail(context, APIError(APIError::NotPaired{}).description(), ExitCode::notConnected);
    const auto project = co_await (*session)->chooseProject(arguments.projectId, stop);
    if (!project)
        co_return fail(context, project.error().description(),
                       project.error().as<APIError::NotPaired>() ? ExitCode::notConnected : ExitCode::failed);
    ExitCode worst = ExitCode::success;
    for (const std::filesystem::path &file : arguments.files) {
        const auto upload = co_await runBlocking([file] { return CaptureUpload::ofFile(file); }, stop);
        if (!upload)
            co_return ExitCode::failed;
        if (!*upload) {
            worst = fail(context, upload->error());
            continue;
        }
        const auto asset = co_await uploadCapture(**upload, *project, session->get(), context, stop);
        if (!asset) {
            worst = fail(context, asset.error());
            continue;
        }
        const std::string path = std::filesystem::absolute(file).string();
        context.reporter.result({{"file", path}, {"assetId", *asset}, {"projectId", *project}},
                                path + " is uploaded as " + *asset);
    }
    co_return worst;
}

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/CaptureRegistration.h"

#include <nlohmann/json.hpp>

namespace vantrell {

std::string CaptureRegistration::toJson() const {
    nlohmann::json body{{"projectId", projectId}, {"kind", kind},    {"mime", mime},
                        {"bytes", bytes},         {"meta", hasMeta}, {"captureId", captureId}};
    if (durationMs)
        body["durationMs"] = *durationMs;
    if (name)
        body["name"] = *name;
    if (thumbBytes)
        body["thumb"] = {{"mime", "image/jpeg"}, {"bytes", *thumbBytes}};
    // A name may come from a window title that is no valid UTF-8: show it with marks rather than fail.
    return body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace vantrell

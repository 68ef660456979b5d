// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Task.h"

#include <QString>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace vantrell {
class PanelButton;
}

namespace vantrell::gallery {

/// One state of one panel.
struct Scene {
    QString name;
    /// Shows it; what it returns is kept until the next scene.
    std::function<std::shared_ptr<void>()> show;
};

/// Shows the scenes one after another in front of what is on the screen and writes a picture of each,
/// "name.png", into the folder.
Task<> grabScenes(std::vector<Scene> scenes, QString folder, std::stop_token stop);
/// Shows them likewise, in the pseudo-language, and tells standard output of texts that are not translated or
/// cut. `faults`: how many.
Task<> auditScenes(std::vector<Scene> scenes, int *faults, std::stop_token stop);

/// Whether something has that name, in whatever language the gallery is shown.
bool isCalled(const QString &name, const QString &english);

/// The visible control with that (English) label; null when there is none.
PanelButton *controlNamed(const QString &label);

} // namespace vantrell::gallery

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/BlockingWork.h"

#include <QThreadPool>

namespace vantrell {

void postToWorker(std::function<void()> work) {
    QThreadPool::globalInstance()->start(std::move(work));
}

} // namespace vantrell

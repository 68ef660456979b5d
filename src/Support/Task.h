// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QCoroTask>

namespace vantrell {

/// An asynchronous operation. It starts at once, runs on the thread that called it (the main thread unless
/// a header says otherwise) and takes its parameters by value.
template <typename T = void>
using Task = QCoro::Task<T>;

} // namespace vantrell

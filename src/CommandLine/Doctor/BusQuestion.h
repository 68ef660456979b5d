// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"
#include "Support/Task.h"

#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include <expected>
#include <stop_token>

namespace vantrell {

/// A call to a service on the session bus.
struct BusQuestion {
    QString service;
    QString path;
    QString interface;
    QString member;
    QVariantList arguments;
    /// The bus may start the service for it.
    bool startsService = false;
};

using BusAnswer = std::expected<QVariantList, PlatformError>;

/// Asks without keeping anybody waiting; an error when the stop comes first. Main thread.
Task<BusAnswer> askBus(BusQuestion question, std::stop_token stop);

/// A property of a service, without starting it unless said.
Task<std::expected<QVariant, PlatformError>> askProperty(QString service, QString path, QString interface,
                                                         QString property, bool startsService,
                                                         std::stop_token stop);

/// Whether somebody has the name on the session bus now.
Task<bool> isOnBus(QString service, std::stop_token stop);

} // namespace vantrell

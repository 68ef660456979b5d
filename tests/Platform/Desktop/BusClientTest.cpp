// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Bus/BusClient.h"

#include "Platform/Bus/PortalRequests.h"
#include "TestSupport/RunTask.h"

#include <gtest/gtest.h>

namespace vantrell {
namespace {

using testing::eventually;

TEST(BusClient, answersWhereThereIsNoBus) {
    BusClient client(QDBusConnection(QStringLiteral("none")), QStringLiteral("org.example"));
    bool isTold = false;
    client.call({"/", "org.example", "Ask"}, [&](const BusClient::Answer &answer) { isTold = !answer; });
    EXPECT_FALSE(isTold);
    EXPECT_TRUE(eventually([&] { return isTold; }));
}

TEST(PortalRequests, tellApartWhatTwoOfTheirUsersAskAtOnce) {
    const QDBusConnection none(QStringLiteral("none"));
    EXPECT_NE(PortalRequests(none).newToken(), PortalRequests(none).newToken());
}

} // namespace
} // namespace vantrell

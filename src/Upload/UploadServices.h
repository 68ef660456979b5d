// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

class Analytics;
class Clock;
class HttpClient;
class ShelfStore;
class UploadJournal;
class VantrellAPI;

/// What uploads are made with. All of it outlives the manager.
struct UploadServices {
    VantrellAPI &api;
    HttpClient &http;
    UploadJournal &journal;
    ShelfStore &shelf;
    Analytics &analytics;
    Clock &clock;
};

} // namespace vantrell

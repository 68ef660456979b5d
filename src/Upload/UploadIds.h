// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QUuid>

namespace vantrell {

/// The two names of one upload, by which nobody can take one for the other.
struct UploadIds {
    /// Its entry in the journal: the capture's id.
    QUuid entryId;
    /// Its card on the shelf.
    QUuid shelfId;
};

} // namespace vantrell

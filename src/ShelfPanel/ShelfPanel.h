// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TargetProject.h"
#include "Platform/CaptureBackend.h"
#include "Platform/FileOpener.h"
#include "Platform/StillCapture.h"
#include "Shelf/ShelfStore.h"
#include "Support/Clock.h"

#include <QRect>
#include <QUuid>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantrell {

/// The shelf on the screen: a stack of cards at the display's right edge. Shows itself while the store has
/// cards. Main thread.
class ShelfPanel {
public:
    /// All outlive the panel.
    struct Services {
        ShelfStore &store;
        CaptureBackend &capture;
        FileOpener &files;
        /// They tell whether the screen behind the shelf is light; without them it is taken for dark.
        StillCapture *stills = nullptr;
        Clock *clock = nullptr;
    };

    explicit ShelfPanel(Services services);
    ~ShelfPanel();

    /// What `store.onVisibilityChange` tells.
    void setVisible(bool visible);
    /// Somebody can see a card.
    bool isVisible() const;
    /// Where the cards lie, in Qt's coordinates; empty while none is seen.
    QRect frame() const;

    /// Gives the keyboard to the newest card: arrows go from card to card, Enter does what its button does,
    /// Delete dismisses it, and Escape gives the keyboard back to whom it was taken from.
    void takeKeyboard();

    /// The projects that a card which needs one offers.
    std::function<std::vector<TargetProject>()> projects;
    /// The user chose one on a card.
    std::function<void(const QUuid &itemId, const std::string &projectId)> onProjectChosen;
    /// The address of a finished capture's page, for copying.
    std::function<std::string(const ShelfItem &)> pageOf;

private:
    struct Panel;
    std::unique_ptr<Panel> m_panel;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/LayerDrag.h"
#include "Panels/LayerOrder.h"
#include "Panels/PanelShell.h"
#include "Panels/PlasmaRooms.h"

#include <QPointer>
#include <QRect>
#include <QTimer>

#include <map>
#include <optional>
#include <vector>

class QMenu;
class QWindow;

namespace vantrell {

class LayerWindow;
class WaylandLink;

/// Wayland: surfaces of the layer shell where the compositor has it; else ordinary windows, which it places
/// as it likes and gives the keyboard to as it does to others. Main thread.
class WaylandPanelShell final : public PanelShell {
public:
    explicit WaylandPanelShell(WaylandLink &link);

    Qt::WindowFlags flags(Role role) const override;
    void adopt(QWidget &window, Role role, QWidget *owner) override;
    void attach(QWidget &window, QWidget &below) override;
    bool placesWindows() const override { return m_hasLayers; }
    bool keepsOutOfPictures() const override { return false; }
    bool knowsPointer() const override { return false; }
    bool canFade() const override { return false; }
    QRect room(const QScreen &screen) const override;
    void raise(QWidget &window) override;
    void setShape(QWidget &window, const QRegion &visible, const QRegion &touchable) override;
    bool lendKeyboard(QWidget &window) override;
    void takeKeyboardBack(QWidget &window) override;
    bool beginDrag(QWidget &window) override;
    std::optional<QPoint> dragged(const QWidget &window, const Drag &drag) override;
    void sync() override;

private:
    QRect askForRoom(const QScreen &screen) const;
    void lendToMenusOf(QWidget &panel, QMenu &menu);
    void pruneBorrowers();
    void keepWithBorrower(const QWindow *now);
    void returnKeyboard(const LayerWindow &clicked);

    WaylandLink &m_link;
    const bool m_hasLayers;
    /// How much room the screens have, for as long as that is likely to be true.
    mutable std::map<const QScreen *, QRect> m_rooms;
    mutable QTimer m_roomsAge;
    mutable PlasmaRooms m_plasma;
    LayerOrder m_order;
    LayerDrag m_drag;
    /// Who has borrowed the keyboard; the last one has it.
    std::vector<QPointer<QWidget>> m_borrowers;
};

} // namespace vantrell

// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/MenuEntry.h"

#include <functional>
#include <memory>
#include <vector>

class QMenu;

namespace vantrell {

/// Makes a menu of the entries anew; what was in it goes. `chosen` is told what the user chose.
void fillMenu(QMenu &menu, const std::vector<MenuEntry> &entries,
              const std::function<void(const MenuEntry &)> &chosen);

} // namespace vantrell

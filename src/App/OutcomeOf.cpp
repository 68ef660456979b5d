// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/OutcomeOf.h"

#include "Platform/DisplayLayout.h"

#include <QDBusArgument>

#include <algorithm>

namespace vantrell {

namespace {

QList<int> numbersOf(const QVariant &value) {
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<QList<int>>(value.value<QDBusArgument>());
    QList<int> numbers;
    for (const QVariant &each : value.toList())
        numbers.append(each.toInt());
    return numbers;
}

} // namespace

std::expected<SelectionOutcome, std::string> outcomeOf(CaptureBackend &capture, const QVariantMap &wanted) {
    const auto displays = capture.displays();
    if (!displays)
        return std::unexpected(displays.error().description());
    if (displays->empty())
        return std::unexpected("There is no display");
    if (wanted.contains(QStringLiteral("window"))) {
        const auto windows = capture.windows();
        if (!windows)
            return std::unexpected(windows.error().description());
        const auto found = std::ranges::find(*windows, wanted.value(QStringLiteral("window")).toUInt(),
                                             &WindowDescription::id);
        if (found == windows->end())
            return std::unexpected("There is no such window");
        return SelectionOutcome{SelectionOutcome::Window{*found, displayHolding(*displays, found->pixels)}};
    }
    if (wanted.contains(QStringLiteral("area"))) {
        const QList<int> numbers = numbersOf(wanted.value(QStringLiteral("area")));
        if (numbers.size() != 4)
            return std::unexpected("An area has four numbers: x, y, width, height");
        const auto area = areaOnDisplays(*displays, {numbers[0], numbers[1], numbers[2], numbers[3]});
        if (!area)
            return std::unexpected(area.error().description());
        const Display &display = displayHolding(*displays, *area);
        const PixelRect onDisplay{area->x - display.pixels.x, area->y - display.pixels.y, area->width,
                                  area->height};
        return SelectionOutcome{SelectionOutcome::Region{toPoints(onDisplay, display.scale), display}};
    }
    const std::string id = wanted.value(QStringLiteral("display")).toString().toStdString();
    const auto found = id.empty() ? displays->begin() : std::ranges::find(*displays, id, &Display::id);
    if (found == displays->end())
        return std::unexpected("There is no such display");
    return SelectionOutcome{SelectionOutcome::WholeDisplay{*found}};
}

} // namespace vantrell

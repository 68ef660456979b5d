// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11WindowCatalog.h"

#include "Platform/DisplayLayout.h"
#include "Platform/X11/X11Property.h"
#include "Platform/X11/X11WindowPlace.h"

#include <algorithm>
#include <ranges>

#include <unistd.h>

namespace vantrell {

namespace {

/// How far below a frame an old window manager hides the application's window.
constexpr int deepestApplicationWindow = 3;

std::vector<xcb_window_t> childrenOf(const X11Connection &connection, xcb_window_t window) {
    const auto tree =
        xcbReply(connection.xcb(), xcb_query_tree(connection.xcb(), window), xcb_query_tree_reply);
    if (!tree)
        return {};
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

std::string hostName() {
    char name[256] = {};
    ::gethostname(name, sizeof name - 1);
    return name;
}

} // namespace

X11WindowCatalog::Atoms::Atoms(const X11Connection &connection)
    : clientListStacking(connection.atom("_NET_CLIENT_LIST_STACKING", true)),
      supportingWmCheck(connection.atom("_NET_SUPPORTING_WM_CHECK", true)),
      windowType(connection.atom("_NET_WM_WINDOW_TYPE", true)),
      typeDock(connection.atom("_NET_WM_WINDOW_TYPE_DOCK", true)),
      typeDesktop(connection.atom("_NET_WM_WINDOW_TYPE_DESKTOP", true)),
      state(connection.atom("_NET_WM_STATE", true)),
      stateHidden(connection.atom("_NET_WM_STATE_HIDDEN", true)), wmState(connection.atom("WM_STATE", true)),
      name(connection.atom("_NET_WM_NAME", true)), pid(connection.atom("_NET_WM_PID", true)),
      gtkApplicationId(connection.atom("_GTK_APPLICATION_ID", true)),
      kdeDesktopFile(connection.atom("_KDE_NET_WM_DESKTOP_FILE", true)),
      gtkFrameExtents(connection.atom(X11WindowPlace::shadowProperty, true)) {}

struct X11WindowCatalog::Inquiry {
    Inquiry(const X11Connection &connection, xcb_window_t window, const Atoms &atoms)
        : id(window), place(connection, window, atoms.gtkFrameExtents),
          types(connection, window, atoms.windowType), states(connection, window, atoms.state),
          name(connection, window, atoms.name), plainName(connection, window, XCB_ATOM_WM_NAME),
          windowClass(connection, window, XCB_ATOM_WM_CLASS),
          gtkApplicationId(connection, window, atoms.gtkApplicationId),
          kdeDesktopFile(connection, window, atoms.kdeDesktopFile), pid(connection, window, atoms.pid),
          machine(connection, window, XCB_ATOM_WM_CLIENT_MACHINE) {}

    xcb_window_t id;
    X11WindowPlace::Question place;
    X11Property types, states, name, plainName, windowClass, gtkApplicationId, kdeDesktopFile, pid, machine;
};

X11WindowCatalog::X11WindowCatalog(const X11Connection &connection)
    : m_connection(connection), m_atoms(connection) {}

std::expected<std::vector<WindowDescription>, PlatformError>
X11WindowCatalog::windows(const std::vector<Display> &displays) {
    // All questions are sent before the first answer is read.
    std::vector<Inquiry> inquiries;
    for (const xcb_window_t window : candidates() | std::views::reverse)
        inquiries.emplace_back(m_connection, window, m_atoms);
    std::vector<WindowDescription> windows;
    for (Inquiry &inquiry : inquiries) {
        if (auto window = describe(inquiry, displays))
            windows.push_back(std::move(*window));
    }
    if (m_connection.isBroken())
        return std::unexpected(X11Connection::lostError());
    return windows;
}

std::optional<PixelRect> X11WindowCatalog::bounds(std::uint32_t window) const {
    const auto place = X11WindowPlace::Question(m_connection, window, m_atoms.gtkFrameExtents).answer();
    return place ? std::optional(place->content) : std::nullopt;
}

std::vector<xcb_window_t> X11WindowCatalog::candidates() const {
    std::vector<xcb_window_t> managed =
        X11Property(m_connection, m_connection.root(), m_atoms.clientListStacking).numbers();
    return !managed.empty() && hasLiveWindowManager() ? managed : windowsOnRoot();
}

bool X11WindowCatalog::hasLiveWindowManager() const {
    // What a window manager that crashed has left on the root names a window that is gone.
    const auto check = X11Property(m_connection, m_connection.root(), m_atoms.supportingWmCheck).numbers();
    return !check.empty() &&
           X11Property(m_connection, check.front(), m_atoms.supportingWmCheck).numbers() == check;
}

std::vector<xcb_window_t> X11WindowCatalog::windowsOnRoot() const {
    std::vector<xcb_window_t> windows;
    for (const xcb_window_t child : childrenOf(m_connection, m_connection.root())) {
        const auto place = X11WindowPlace::Question(m_connection, child, XCB_ATOM_NONE).answer();
        // Menus and tool tips keep away from window managers; applications do not.
        if (!place || !place->isViewable || place->overridesRedirect)
            continue;
        windows.push_back(applicationWindow(child, deepestApplicationWindow).value_or(child));
    }
    return windows;
}

std::optional<xcb_window_t> X11WindowCatalog::applicationWindow(xcb_window_t onRoot, int depth) const {
    if (!X11Property(m_connection, onRoot, m_atoms.wmState).numbers().empty())
        return onRoot;
    if (depth == 0)
        return std::nullopt;
    for (const xcb_window_t child : childrenOf(m_connection, onRoot)) {
        if (const auto found = applicationWindow(child, depth - 1))
            return found;
    }
    return std::nullopt;
}

bool X11WindowCatalog::isForUsers(Inquiry &inquiry) const {
    const auto types = inquiry.types.numbers();
    const auto states = inquiry.states.numbers();
    const auto pid = inquiry.pid.numbers();
    const auto machine = inquiry.machine.text();
    const bool isPartOfDesktop =
        !types.empty() && (types.front() == m_atoms.typeDock || types.front() == m_atoms.typeDesktop);
    const bool isMinimised = std::ranges::find(states, m_atoms.stateHidden) != states.end();
    const bool isOwn = !pid.empty() && pid.front() == std::uint32_t(::getpid()) &&
                       machine.value_or(hostName()) == hostName();
    return !isPartOfDesktop && !isMinimised && !isOwn;
}

std::optional<WindowDescription> X11WindowCatalog::describe(Inquiry &inquiry,
                                                            const std::vector<Display> &displays) {
    const auto place = inquiry.place.answer();
    if (!isForUsers(inquiry) || !place || !place->isViewable || place->isInputOnly)
        return std::nullopt;
    WindowDescription window;
    window.id = inquiry.id;
    window.pixels = place->content;
    window.frame = inPointsOf(displayHolding(displays, place->content), place->content);

    window.title = inquiry.name.text();
    if (auto plain = inquiry.plainName.text(); !window.title)
        window.title = std::move(plain);

    const std::vector<std::string> classes = inquiry.windowClass.strings();
    const std::string windowClass = classes.size() > 1 ? classes[1] : classes.empty() ? "" : classes[0];
    // The most exact name first: a program may use one class for many applications.
    std::vector<std::string> ids;
    for (auto id : {inquiry.gtkApplicationId.text(), inquiry.kdeDesktopFile.text()}) {
        if (id)
            ids.push_back(std::move(*id));
    }
    std::ranges::copy_if(std::vector{windowClass, classes.empty() ? "" : classes[0]}, std::back_inserter(ids),
                         [](const std::string &id) { return !id.empty(); });
    if (!ids.empty())
        window.applicationId = ids.front();
    for (const std::string &id : ids) {
        if ((window.applicationName = m_entries.nameOf(id)))
            break;
    }
    if (!window.applicationName && !windowClass.empty())
        window.applicationName = windowClass;
    return window;
}

} // namespace vantrell

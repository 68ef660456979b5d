# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# The life of a recording as assistive technology leads it: controls are found by role and name and worked by
# their actions alone. Says what is missing and ends with 1.

import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PATIENCE = 60


def below(node):
    if node is None:
        return
    yield node
    for index in range(node.get_child_count()):
        yield from below(node.get_child_at_index(index))


def everything():
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application and application.get_name() == "vantrell-capture":
            yield from below(application)


def matches(name, wanted):
    return name == wanted or (wanted.endswith("…") and name.startswith(wanted[:-1]))


def find(role, name, state=None):
    """Waits for a control, "Begin…" for one that begins so; with a state, until it has that."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            for node in everything():
                if node.get_role_name() == role and matches(node.get_name(), name):
                    if state is None or node.get_state_set().contains(state):
                        return node
        except gi.repository.GLib.Error:
            pass  # It went while it was looked at.
        time.sleep(0.1)
    sys.exit(f"there is no {role} \"{name}\"")


def press(role, name, state=Atspi.StateType.SHOWING):
    node = find(role, name, state)
    for index in range(node.get_n_actions()):
        if Atspi.Action.get_action_name(node, index) == "Press":
            return Atspi.Action.do_action(node, index)
    sys.exit(f"the {role} \"{name}\" cannot be pressed")


def recorded_seconds():
    minutes, seconds = find("push button", "Stop").get_description().split(".")[0].split(":")
    return int(minutes) * 60 + int(seconds)


def until(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"{what} never came: {[node.get_description() for node in everything()]}")
        time.sleep(0.1)


press("radio button", "Screen")
find("panel", "Vantrell capture overlay", Atspi.StateType.SHOWING)
find("push button", "Capture", Atspi.StateType.ENABLED)
# The overlay's buttons are drawn beside a selection only; they work with every tool.
press("push button", "Record", Atspi.StateType.ENABLED)

find("filler", "Recording", Atspi.StateType.SHOWING)
until("a second", lambda: recorded_seconds() >= 1)
meter = find("progress bar", "Microphone level")
level = Atspi.Value.get_current_value(meter)
if not 0 <= level <= Atspi.Value.get_maximum_value(meter):
    sys.exit(f"the level is {level}")

press("push button", "Pause")
find("push button", "Resume", Atspi.StateType.SHOWING)
paused = recorded_seconds()
press("push button", "Resume")
until("more time", lambda: recorded_seconds() > paused)
press("push button", "Stop")

find("list item", "Capture…", Atspi.StateType.SHOWING)
until("the end of the upload",
      lambda: any(node.get_role_name() == "list item" and matches(node.get_description(), "In your library…")
                  for node in everything()))

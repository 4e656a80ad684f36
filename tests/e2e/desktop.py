"""A desktop of its own for the built program: X server, window manager, accessibility bus.

Controls are found by role and accessible name, used with real key and mouse events. Nothing waits a
fixed time: wait_until polls a condition until it holds or its deadline fails the test.
"""
import itertools
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

DEADLINE = 30.0
POLL = 0.03
BETWEEN_LOOKS = threading.Event()  # never set


def wait_until(condition, what, deadline=DEADLINE):
    """The first true result of condition(); fails with `what` after the deadline (seconds)."""
    end = time.monotonic() + deadline
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"never happened: {what() if callable(what) else what}")
        BETWEEN_LOOKS.wait(POLL)


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


class Desktop:
    """Xvfb with openbox; the session bus is the one the tests were started under."""

    def __init__(self, size="1500x1000"):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{size}x24", "-nolisten", "tcp"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as answer:
            self.display = ":" + answer.readline().strip()
        os.environ["DISPLAY"] = self.display
        self.manager = None
        try:
            wait_until(self._managed, "a window manager")
        except BaseException:
            self.close()
            raise

    def _managed(self):
        """Starts the manager, again when it ended at once because the server was not ready."""
        if self.manager is None or self.manager.poll() is not None:
            self.manager = subprocess.Popen(["openbox"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        answer = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True, text=True)
        return "window id" in answer.stdout

    def close(self):
        for process in (self.manager, self.server):
            if process is not None:
                process.kill()
                process.wait()

    def screenshot(self, path):
        subprocess.run(["import", "-window", "root", str(path)], check=True)


class Program:
    """One run of the application on a data folder of its own."""

    def __init__(self, binary, data_home, log):
        """`log` gets what the program writes to standard error."""
        self.binary = binary
        self.log = log
        self.environment = dict(os.environ, XDG_DATA_HOME=str(data_home), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                                QT_QPA_PLATFORM="xcb", LC_ALL="C.UTF-8")
        self.store = pathlib.Path(data_home) / "LumvexAssetLibrary"
        self.process = self.spawn()
        self.app = None

    def spawn(self):
        with open(self.log, "ab") as log:
            return subprocess.Popen([self.binary], env=self.environment, stderr=log)

    def attach(self):
        """Waits for the window and its accessibility tree."""
        self.app = wait_until(self._find, "the application on the accessibility bus")
        self.window_id()
        return self

    def _find(self):
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_process_id() == self.process.pid:
                return child
        return None

    def window_id(self):
        return wait_until(self._window_id, "the main window on the screen")

    def _window_id(self):
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--pid", str(self.process.pid), "--name", "MORVANE 素材助手"],
            capture_output=True, text=True).stdout.split()
        return found[0] if found else None

    # Reading.

    def settings(self):
        try:
            return json.loads((self.store / "settings.json").read_text())
        except (OSError, ValueError):
            return {}

    def nodes(self, root=None):
        """Every showing node below `root`, depth first; cells of large lists are not entered."""
        stack = [root or self.app]
        while stack:
            node = stack.pop()
            if node is None:
                continue
            yield node
            try:
                if node.get_role() in (Atspi.Role.TABLE, Atspi.Role.TREE):
                    continue
                stack.extend(reversed([node.get_child_at_index(i) for i in range(node.get_child_count())]))
            except Exception:  # the node went away while it was looked at
                continue

    def find(self, name, role=None):
        """The first showing control with this accessible name, or None."""
        for node in self.nodes():
            try:
                if node.get_name() != name or (role is not None and node.get_role_name() != role):
                    continue
                if node.get_state_set().contains(Atspi.StateType.SHOWING):
                    return node
            except Exception:
                continue
        return None

    def wait_for(self, name, role=None):
        return wait_until(lambda: self.find(name, role), f"{role or 'control'} {name!r}")

    def enabled(self, name, role=None):
        node = self.find(name, role)
        return node is not None and node.get_state_set().contains(Atspi.StateType.ENABLED)

    def shows(self, text):
        return self.find(text) is not None

    def wait_for_text(self, text, deadline=DEADLINE):
        wait_until(lambda: self.shows(text), f"the text {text!r} on the screen", deadline)

    def texts(self):
        """Every showing text, for a message that tells what was there instead."""
        return [node.get_name() for node in self.nodes() if node.get_name()]

    # Acting.

    def center(self, node):
        box = node.get_extents(Atspi.CoordType.SCREEN)
        return box.x + box.width // 2, box.y + box.height // 2

    def click(self, name, role=None, button=1):
        """Clicks the middle of a control once it is showing and enabled."""
        wait_until(lambda: self.enabled(name, role), f"{name!r} to be enabled")
        self.click_at(*self.center(self.find(name, role)), button=button)

    def click_at(self, x, y, button=1):
        run("xdotool", "mousemove", str(x), str(y), "click", str(button))

    def drag(self, start, end, arrived):
        """Presses at `start`, moves to `end` and about it until `arrived()`, then lets go."""
        run("xdotool", "mousemove", *map(str, start), "mousedown", "1")
        for step in (10, 20, 40):
            run("xdotool", "mousemove", str(start[0] + step), str(start[1] + step // 4))
        sides = itertools.cycle((-4, 4))

        def moved_and_arrived():
            run("xdotool", "mousemove", str(end[0] + next(sides)), str(end[1]))
            return arrived()

        wait_until(moved_and_arrived, f"the drag to arrive at {end}")
        run("xdotool", "mouseup", "1")

    def type(self, text):
        run("xdotool", "type", "--delay", "5", text)

    def key(self, *keys):
        run("xdotool", "key", "--delay", "5", *keys)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()


class Neighbour:
    """Another program on the same desktop, a script beside this one, and the lines it prints."""

    def __init__(self, script):
        self.script = pathlib.Path(__file__).with_name(script)
        self.lines = []

    def __enter__(self):
        self.process = subprocess.Popen([sys.executable, str(self.script)], stdout=subprocess.PIPE, text=True)
        self.reader = threading.Thread(target=self._read)
        self.reader.start()
        return self

    def _read(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def window_id(self, title):
        def found():
            return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", title],
                                  capture_output=True, text=True).stdout.split()

        return wait_until(found, f"the window {title!r}")[0]

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.reader.join()
        self.process.stdout.close()


class Scratch:
    """A folder for one test."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="morvane-e2e-")).resolve()

    def remove(self):
        shutil.rmtree(self.path, ignore_errors=True)

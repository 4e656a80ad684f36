"""The shape of an end-to-end test: a desktop, a scratch folder, a program, pictures of what was seen."""
import os
import pathlib
import unittest

from desktop import Desktop, Program, Scratch, run, wait_until

BINARIES = pathlib.Path(os.environ["MORVANE_BIN_DIR"])
PICTURES = pathlib.Path(os.environ["MORVANE_E2E_PICTURES"])


class EndToEnd(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.remove)
        self.desktop = Desktop()
        self.addCleanup(self.desktop.close)
        os.environ["XDG_RUNTIME_DIR"] = str(self.scratch.path / "runtime")
        (self.scratch.path / "runtime").mkdir(mode=0o700)
        self.data = self.scratch.path / "data"
        self.program = None
        self.addCleanup(self._finish)

    def _finish(self):
        if self.program is None:
            return
        self.picture("last")
        if self._outcome_failed():
            print("on the screen:", *self.program.texts(), sep="\n  ")
        self.program.close()

    def _outcome_failed(self):
        outcome = self._outcome
        return not getattr(outcome, "success", True)

    def start(self):
        """Starts the program on this test's store and waits until its library has been read."""
        PICTURES.mkdir(parents=True, exist_ok=True)
        log = PICTURES / f"{self.id().split('.')[-1]}-stderr.txt"
        self.program = Program(str(BINARIES / "morvane"), self.data, log).attach()
        wait_until(lambda: not self.program.shows("正在读取素材库…"), "the library to be read")
        return self.program

    def ctl(self, *arguments):
        environment = dict(os.environ, XDG_DATA_HOME=str(self.data), LC_ALL="C.UTF-8")
        return run(str(BINARIES / "morvanectl"), *map(str, arguments), env=environment)

    def picture(self, name):
        PICTURES.mkdir(parents=True, exist_ok=True)
        self.desktop.screenshot(PICTURES / f"{self.id().split('.')[-1]}-{name}.png")

    def add_folder(self, folder):
        """Adds a library folder through the window, by the button and the panel."""
        self.program.click("添加文件夹…", "push button")
        self.program.wait_for("添加素材库", "push button")
        self.program.key("ctrl+a")
        self.program.type(str(folder))
        self.program.key("Return")

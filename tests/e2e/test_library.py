"""The library from an empty store to a renamed file: real media, real keys and mouse."""
import json
import pathlib
import unittest

import media
from case import EndToEnd
from desktop import Neighbour, run, wait_until


class Library(EndToEnd):
    def make_media(self):
        folder = self.scratch.path / "media"
        media.sound(folder / "Take 2.wav")
        media.sound(folder / "Take 10.wav")
        media.film(folder / "day1/clip.mp4", seconds=5)
        media.picture(folder / "day1/still.png")
        (folder / "look.cube").write_text("LUT")
        return folder

    def test_from_an_empty_store_to_a_renamed_file(self):
        folder = self.make_media()
        program = self.start()
        program.wait_for_text("添加素材文件夹开始管理，或切换到整理素材新建拍摄项目。")
        self.picture("first-start")
        self.add_folder(folder)
        program.wait_for_text("1 个素材文件夹 · 5 个素材")
        program.wait_for_text("5 项")
        self.assertEqual(program.settings()["roots"], [str(folder)])
        wait_until(lambda: program.settings()["pendingRefresh"] is False, "the refresh to be noted as done")
        self.assertEqual(len(json.loads(self.ctl("search", "--json"))), 5)

        program.click("搜索素材")
        program.type("take 1")
        program.wait_for_text("1 项")
        program.key("Escape")
        program.wait_for_text("5 项")
        program.click("视频", "radio button")
        program.wait_for_text("1 项")

        self.choose_row(0)
        program.wait_for_text("clip.mp4")
        self.picture("video")
        program.key("space")
        program.wait_for("暂停", "push button")
        wait_until(lambda: program.settings()["recent"] == [str(folder / "day1/clip.mp4")], "the recent list")
        program.key("space")
        program.wait_for("播放", "push button")

        program.click("收藏", "push button")
        program.wait_for("已收藏", "push button")
        wait_until(lambda: program.settings()["favorites"] == [str(folder / "day1/clip.mp4")], "the favourite")

        program.click("重命名", "push button")
        program.wait_for("新文件名称")
        program.key("ctrl+a")
        program.type("lake at dusk")
        self.picture("rename")
        program.key("Return")
        program.wait_for_text("已同步重命名原文件：lake at dusk.mp4")
        renamed = folder / "day1/lake at dusk.mp4"
        self.assertTrue(renamed.exists())
        wait_until(lambda: program.settings()["favorites"] == [str(renamed)], "the favourite to follow")
        wait_until(lambda: json.loads(self.ctl("search", "--json", "dusk"))[0]["path"] == str(renamed),
                   "the catalog to follow")

    def row_center(self, row):
        """28 for the header, 48 a row."""
        box = self.program.wait_for("素材文件列表", "table").get_extents(0)
        return box.x + 120, box.y + 28 + 48 * row + 24

    def choose_row(self, row):
        self.program.click_at(*self.row_center(row))

    def test_rows_are_dragged_into_another_program(self):
        folder = self.make_media()
        program = self.start()
        run("xdotool", "windowsize", "--sync", program.window_id(), "1100", "700")
        run("xdotool", "windowmove", program.window_id(), "0", "0")
        self.add_folder(folder)
        program.wait_for_text("5 项")
        with Neighbour("drop_target.py") as target:
            run("xdotool", "windowmove", target.window_id("Drop target"), "1150", "300")
            self.choose_row(0)
            run("xdotool", "keydown", "shift")
            self.choose_row(1)
            run("xdotool", "keyup", "shift")
            program.drag(self.row_center(1), (1300, 420), lambda: "over" in target.lines)
            wait_until(lambda: target.lines[-1].startswith("action"), "the files to be dropped")
        paths = [found["path"] for found in json.loads(self.ctl("search", "--json"))[:2]]
        self.assertEqual([line for line in target.lines if line != "over"],
                         [pathlib.Path(path).as_uri() for path in paths] + ["action copy"])
        for path in paths:
            self.assertTrue(pathlib.Path(path).exists(), "the originals stay")

    def test_space_types_in_the_search_field(self):
        folder = self.make_media()
        program = self.start()
        self.add_folder(folder)
        program.wait_for_text("5 项")
        self.choose_row(3)
        program.key("ctrl+f")
        program.type("take 2")
        program.wait_for_text("1 项")
        self.assertEqual(program.settings()["recent"], [])

    def test_a_second_start_brings_the_window_forward(self):
        program = self.start()
        window = program.window_id()
        run("xdotool", "windowminimize", "--sync", window)
        second = program.spawn()
        self.assertEqual(second.wait(timeout=20), 0)
        wait_until(lambda: run("xdotool", "getactivewindow").strip() == window, "the first window to be active")
        self.assertIsNone(program.process.poll())

    def test_the_window_remembers_its_size_and_closes_cleanly(self):
        program = self.start()
        run("xdotool", "windowsize", "--sync", program.window_id(), "1200", "700")
        program.key("ctrl+q")
        self.assertEqual(program.process.wait(timeout=20), 0)
        self.assertTrue((program.store / "ui-state.json").exists())
        self.assertFalse((program.store / "settings.json").exists())
        program = self.start()
        geometry = run("xdotool", "getwindowgeometry", "--shell", program.window_id())
        self.assertIn("WIDTH=1200", geometry)
        self.assertIn("HEIGHT=700", geometry)

    def test_the_smallest_window_shows_every_control(self):
        self.make_media()
        program = self.start()
        run("xdotool", "windowsize", "--sync", program.window_id(), "1100", "650")
        for name in ("播放", "收藏", "重命名", "刷新索引", "添加文件夹…"):
            program.wait_for(name, "push button")
        self.picture("smallest")


if __name__ == "__main__":
    unittest.main()

"""The organizer from a name to a verified project: real files, real keys and mouse."""
import json
import shutil
import unittest

import media
from case import EndToEnd
from desktop import wait_until

MANIFEST = "MORVANE项目清单.json"


class Organizer(EndToEnd):
    def setUp(self):
        super().setUp()
        self.projects = self.scratch.path / "projects"
        self.projects.mkdir()
        self.source = self.scratch.path / "CARD_A"
        media.film(self.source / "PRIVATE/CLIP/C0001.mp4")
        (self.source / "PRIVATE/CLIP/C0001M01.XML").write_text("side car")
        self.sounds = self.scratch.path / "sounds"
        media.sound(self.sounds / "music/theme.wav")

    def choose_in_panel(self, opener, folder, prompt):
        """Opens a panel, goes to `folder` by typing its path, and confirms."""
        program = self.program
        program.click(opener, "push button")
        program.click("文件夹路径", "text")
        program.key("ctrl+a")
        program.type(str(folder))
        program.key("Return")
        program.click(prompt, "push button")
        wait_until(lambda: not program.shows("文件夹路径"), "the panel to close")

    def fill_request(self, name):
        program = self.start()
        program.click("整理素材", "radio button")
        program.click("项目名称", "text")
        program.type(name)
        self.choose_in_panel("保存位置", self.projects, "选择位置")
        self.choose_in_panel("添加来源…", self.source, "添加来源")
        return program

    def test_from_a_name_to_a_verified_project_in_the_library(self):
        program = self.fill_request("Lake 2026")
        self.choose_in_panel("添加来源…", self.sounds, "添加来源")
        self.picture("filled")
        program.click("检查并预演", "push button")
        program.wait_for_text("检查完成，可以开始整理")
        self.picture("ready")
        program.click("开始复制并校验", "push button")
        # The camera card is a reminder that has to be confirmed.
        program.click("按计划复制", "push button")
        program.wait_for_text("拍摄项目已整理完成")
        self.picture("finished")
        project = self.projects / "Lake 2026"
        checked = json.loads(self.ctl("project", "verify", project / MANIFEST, "--json"))
        self.assertEqual(checked, {"checked": 3, "changed": [], "missing": []})
        clips = list(project.rglob("C0001.mp4"))
        self.assertEqual(len(clips), 1)
        self.assertEqual(clips[0].read_bytes(), (self.source / "PRIVATE/CLIP/C0001.mp4").read_bytes())
        # The project joined the library by itself.
        wait_until(lambda: program.settings().get("roots") == [str(project)], "the project to join the library")
        program.click("管理素材", "radio button")
        program.wait_for_text("2 项")
        program.click("整理素材", "radio button")
        program.click("准备下一个项目", "push button")
        program.wait_for_text("准备新项目")

    def test_a_running_copy_keeps_the_window_and_can_be_stopped_and_resumed(self):
        if shutil.disk_usage(self.projects).free < 4_000_000_000:
            self.skipTest("less than 4 GB free: a copy that takes long needs 3 GB")
        with open(self.source / "PRIVATE/CLIP/C0002.mp4", "wb") as long:
            long.truncate(3_000_000_000)
        program = self.fill_request("Long")
        program.click("检查并预演", "push button")
        program.wait_for_text("检查完成，可以开始整理")
        program.click("开始复制并校验", "push button")
        program.click("按计划复制", "push button")
        project = self.projects / "Long"
        wait_until(lambda: list(project.rglob(".morvane-*.partial")), "the copy to run")
        program.click("管理素材", "radio button")
        program.key("ctrl+q")
        program.wait_for_text("整理任务仍在进行")
        self.picture("busy")
        self.assertIsNone(program.process.poll())
        program.click("返回整理任务", "push button")
        program.click("取消", "push button")
        program.wait_for_text("任务已停止")
        self.picture("stopped")
        self.assertFalse(list(project.rglob(".morvane-*.partial")))
        with open(self.source / "PRIVATE/CLIP/C0002.mp4", "r+b") as long:
            long.truncate(0)
        program.click("重试未完成文件", "push button")
        program.wait_for_text("整理完成，部分文件需要重试")
        program.key("ctrl+q")
        self.assertEqual(program.process.wait(timeout=20), 0)


if __name__ == "__main__":
    unittest.main()

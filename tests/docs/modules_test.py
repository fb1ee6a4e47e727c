#!/usr/bin/env python3
"""The tutorial of docs/modules.md: its code is that of the files, what a real uveld then says is what the page says.

    modules_test.py BUILD_DIR
"""

import difflib
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from pages import ROOT, marked_blocks

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
TUTORIAL = ROOT / "examples" / "tutorial"
STEPS = [f"step{number}" for number in range(1, 6)]
BLOCKS = marked_blocks("docs/modules.md")


def said(kind, name):
    """The one block of this kind and name."""
    (lines,) = [lines for block_kind, block_name, lines in BLOCKS if (block_kind, block_name) == (kind, name)]
    return lines


def code(path):
    """Lines that a reader has to write; which headers a file includes he sees in the file."""
    return [line for line in path.read_text().splitlines()
            if line and not line.startswith(("#include", "/* Step "))] if path.exists() else []


class Code(unittest.TestCase):
    def test_every_block_stands_in_its_file_as_it_is(self):
        blocks = [(name, "\n".join(lines)) for kind, name, lines in BLOCKS if kind == "file"]
        self.assertGreater(len(blocks), 15)
        for name, body in blocks:
            self.assertIn(f"\n{body}\n", f"\n{(ROOT / name).read_text()}", name)

    def test_what_a_step_adds_is_all_on_the_page(self):
        for before, step in zip(["step0"] + STEPS, STEPS):
            path = TUTORIAL / f"{step}.cpp"
            shown = {line for kind, name, lines in BLOCKS if (kind, name) == ("file", f"examples/tutorial/{step}.cpp")
                     for line in lines}
            added = [line[2:] for line in difflib.ndiff(code(TUTORIAL / f"{before}.cpp"), code(path))
                     if line.startswith("+ ")]
            self.assertTrue(added, step)
            self.assertEqual([], [line for line in added if line not in shown and line != "}"], step)


class Uveld(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uveld-tutorial-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        for path in TUTORIAL.glob("*.yaml"):
            shutil.copy(path, self.folder)

    def load(self, step):
        shutil.copy(BUILD / "lib" / "uvel" / "tutorial" / f"{step}.so", self.folder / "flaps.so")

    def start(self, configuration="uveld.yaml"):
        """Runs until the test ends; its log goes to a file beside the configuration."""
        log = open(self.folder / f"{configuration}.log", "w")
        process = subprocess.Popen([BUILD / "bin" / "uveld", "--config", self.folder / configuration], stderr=log)

        def end():
            process.terminate()
            process.wait(20)
            log.close()
        self.addCleanup(end)
        self.wait_until(lambda: "is ready" in self.log(configuration) or process.poll() is not None)
        self.assertIsNone(process.poll(), self.log(configuration))

    def log(self, configuration="uveld.yaml"):
        return (self.folder / f"{configuration}.log").read_text()

    def lines_of_the_module(self, configuration="uveld.yaml"):
        return re.findall(r"^\S+ (\w+ flaps: .*)$", self.log(configuration), re.M)

    def wait_until(self, condition, seconds=30):
        end = time.monotonic() + seconds
        while not condition() and time.monotonic() < end:
            time.sleep(0.02)

    def run_in_folder(self, command):
        program, *arguments = command.split()
        return subprocess.run([BUILD / "bin" / program, *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False).stdout.splitlines()

    def check_run(self, step):
        command, *output = said("run", step)
        self.assertTrue(command.startswith("$ "))
        self.wait_until(lambda: self.run_in_folder(command[2:]) == output)
        self.assertEqual(output, self.run_in_folder(command[2:]))

    def test_the_log_of_each_step_is_what_the_page_says(self):
        for step in STEPS[:3]:
            with self.subTest(step):
                self.load(step)
                self.start()
                self.wait_until(lambda: "has come to its end" in self.log())
                self.wait_until(lambda: len(self.lines_of_the_module()) >= len(said("log", step)))
                self.assertEqual(said("log", step), self.lines_of_the_module())
                self.doCleanups()
                self.setUp()

    def test_the_show_function_shows_what_the_page_says(self):
        self.load("step4")
        self.start()
        self.check_run("step4")

    def test_the_hook_is_the_module_s_own_where_an_uplink_is_set(self):
        self.load("step3")
        self.start()
        hooks = self.run_in_folder("uvelctl -r run show hooks installed")
        self.assertIn("flaps.so", next(line for line in hooks if "IS_WAN_INTERFACE" in line))

    def test_the_standby_device_has_the_counts_of_the_active_one(self):
        self.load("step5")
        self.choose_ports()
        self.run_in_folder("uvelctl keys keys a b")
        self.start("b.yaml")
        self.start("a.yaml")
        self.check_run("step5")
        self.assertEqual(["info flaps: watches the lines"], self.lines_of_the_module("b.yaml"))

    def choose_ports(self):
        """Free ports in place of those of the page."""
        with socket.socket() as first, socket.socket() as second:
            for probe in (first, second):
                probe.bind(("127.0.0.1", 0))
            ports = {"4711": str(first.getsockname()[1]), "4712": str(second.getsockname()[1])}
        for name in ("a.yaml", "b.yaml"):
            path = self.folder / name
            path.write_text(re.sub("4711|4712", lambda found: ports[found.group()], path.read_text()))

    def test_step_5_works_without_a_link(self):
        self.load("step5")
        self.start()
        self.check_run("step4")


if __name__ == "__main__":
    unittest.main()

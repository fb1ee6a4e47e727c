#!/usr/bin/env python3
"""The demonstration interrupted anywhere, ended from outside, and run twice at once: nothing is left over.

    demo_test.py BUILD_DIR
"""

import contextlib
import io
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
DEMO = pathlib.Path(__file__).resolve().parent.parent.parent / "examples" / "demo" / "demo.py"
sys.path.insert(0, str(DEMO.parent))
sys.dont_write_bytecode = True
import demo as demonstration  # noqa: E402

WAYS = [[], ["--scenario"]] if os.geteuid() == 0 else [["--scenario"]]


class Leftovers(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uvel-demo-test-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def run_demo(self, *arguments):
        return subprocess.Popen([sys.executable, DEMO, "--binaries", BUILD, "--sessions", "2000", *arguments],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, start_new_session=True,
                                env={**os.environ, "TMPDIR": str(self.folder)})

    def nothing_is_left_of(self, demo):
        self.assertEqual([], list(self.folder.iterdir()), "files")
        namespaces = subprocess.run(["ip", "netns"], stdout=subprocess.PIPE, text=True, check=True).stdout
        self.assertNotIn(f"uvel-{demo.pid}-", namespaces)
        processes = [path for path in pathlib.Path("/proc").glob("[0-9]*/cmdline") if self.is_ours(path)]
        self.assertEqual([], processes)

    def is_ours(self, path):
        try:
            return os.fsencode(self.folder) in path.read_bytes() and path.parent.name != str(os.getpid())
        except OSError:
            return False

    def interrupt(self, demo, after, signals):
        """As a terminal does: the whole group gets it, some time after the demonstration itself has begun."""
        while demo.poll() is None and not any(self.folder.iterdir()):
            time.sleep(0.005)
        time.sleep(after)
        for number in signals:
            if demo.poll() is None:
                os.killpg(demo.pid, number)
            time.sleep(0.05)
        output = demo.communicate(timeout=60)[0]
        self.assertIn(demo.returncode, (130, 0, -signals[0]), output)
        self.assertNotIn("Traceback", output)
        self.nothing_is_left_of(demo)

    def test_nothing_is_left_when_it_is_interrupted(self):
        for way in WAYS:
            for after in (0, 0.1, 0.25, 0.5, 1.0, 1.8):
                with self.subTest(way=way, after=after):
                    self.interrupt(self.run_demo(*way), after, [signal.SIGINT])

    def test_nothing_is_left_when_somebody_is_impatient(self):
        for way in WAYS:
            for after in (0.5, 1.5):
                with self.subTest(way=way, after=after):
                    self.interrupt(self.run_demo(*way), after, [signal.SIGINT] * 5)

    def test_nothing_is_left_when_its_terminal_goes_away_or_it_is_told_to_end(self):
        for number in (signal.SIGHUP, signal.SIGTERM):
            with self.subTest(number):
                self.interrupt(self.run_demo(*WAYS[0]), 1.0, [number])

    def test_devices_end_with_a_demonstration_that_is_killed(self):
        demo = self.run_demo("--scenario")
        time.sleep(1.5)
        demo.kill()
        demo.communicate()
        end = time.monotonic() + 10
        while any(self.is_ours(path) for path in pathlib.Path("/proc").glob("[0-9]*/cmdline")):
            self.assertLess(time.monotonic(), end)
            time.sleep(0.05)

    def test_two_at_once_do_not_disturb_each_other(self):
        for way in WAYS:
            demos = [self.run_demo(*way) for _ in range(2)]
            for demo in demos:
                output = demo.communicate(timeout=120)[0]
                self.assertEqual(0, demo.returncode, output)
                self.assertIn("sessions lost by the failure           0", output)
            self.nothing_is_left_of(demos[0])

    def test_a_step_of_the_scenario_that_comes_too_early_comes_later_the_next_time(self):
        place = demonstration.OnePlace(2000)
        place.port_down_after = 0
        with contextlib.redirect_stdout(io.StringIO()) as screen:
            demonstration.demonstrate(place, self.folder, BUILD, 2000)
        self.assertIn("500 log-ons were refused: an interface went down 0 s after the start; once more", screen.getvalue())
        self.assertIn("sessions lost by the failure           0", screen.getvalue())


if __name__ == "__main__":
    unittest.main(verbosity=2)

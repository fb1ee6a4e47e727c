#!/usr/bin/env python3
"""uveld and uvelctl as people use them: processes, signals, sockets. Interfaces come from a scenario, so no root is needed.

    uveld_test.py BUILD_DIR
"""

import json
import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
UVELD, UVELCTL = BUILD / "bin" / "uveld", BUILD / "bin" / "uvelctl"
MODULE = BUILD / "lib" / "uvel" / "modules" / "session_table.so"

DEVICE = """
device:
  name: edge-1
  interfaces:
    - {index: 7, name: port7, state: up, addresses: [192.0.2.1/24]}
    - {index: 8, name: port8, state: down}
"""

WHOLE_DEVICE = """
device:
  boards:
    - {slot: 1, role: main, cpus: 2}
    - {slot: 3, role: service, cpus: 4}
  vrfs: [{index: 1, name: blue, system: true}]
  vlans: [{id: 20}, {id: 100-101}]
  interfaces:
    - {index: 7, name: port7, layer: 2, port-index: auto, state: up, vlans: {untagged: [20], tagged: [100-101]}}
    - {index: 8, name: port8, layer: 2, port-index: auto, state: down, vlans: {tagged: [20, 101]}}
    - {index: 100, name: trunk1}
    - {index: 200, name: Vlanif20, kind: vlan, vlan: 20, state: up,
       addresses: [192.0.2.1/24, 192.0.2.9/24, "2001:db8::1/64", "2001:db8::2/64"]}
  trunks: [{id: 1, interface: 100, members: [7, 8]}]
"""


class Uveld(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="uveld-test-")
        self.addCleanup(self.temporary.cleanup)
        self.folder = pathlib.Path(self.temporary.name)
        (self.folder / "device.yaml").write_text(DEVICE)
        self.configuration = (f"run_directory: run\nfeeder: {{scenario: device.yaml}}\n"
                              f"log: {{file: {self.folder}/uveld.log}}\nmodules: [{{file: {MODULE}}}]\n")
        self.processes = []
        self.addCleanup(self.end_all)

    def end_all(self):
        for process in self.processes:
            process.terminate()
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
            process.stderr.close()

    def spawn(self, environment=None):
        (self.folder / "uveld.yaml").write_text(self.configuration)
        process = subprocess.Popen([UVELD, "--config", self.folder / "uveld.yaml"], stderr=subprocess.PIPE, text=True,
                                   env={**os.environ, **(environment or {})})
        self.processes.append(process)
        return process

    def wait_until(self, condition, seconds=30):
        end = time.monotonic() + seconds
        while not condition():
            self.assertLess(time.monotonic(), end, "waited in vain")
            time.sleep(0.01)

    def start(self):
        process = self.spawn()
        self.wait_until(lambda: process.poll() is not None or "is ready" in self.log())
        self.assertIsNone(process.poll(), self.log())
        return process

    def log(self):
        path = self.folder / "uveld.log"
        return path.read_text() if path.exists() else ""

    def uvelctl(self, *arguments):
        return subprocess.run([UVELCTL, "-r", self.folder / "run", *arguments], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)

    def view(self, *name):
        result = self.uvelctl("--json", "show", *name)
        self.assertEqual(0, result.returncode, result.stderr)
        return json.loads(result.stdout)

    def connect(self, name):
        client = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        client.settimeout(20)
        client.connect(str(self.folder / "run" / name))
        self.addCleanup(client.close)
        return client

    def ask(self, line):
        with self.connect("sessions.sock") as client:
            client.sendall(line.encode() + b"\n")
            return client.makefile().readline().rstrip("\n")

    # ---- life ----

    def test_ends_on_sigterm_with_status_0_and_leaves_no_socket(self):
        process = self.start()
        process.terminate()
        self.assertEqual(0, process.wait(20))
        self.assertIn("has ended", self.log())
        self.assertFalse((self.folder / "run" / "uveld.sock").exists())

    def test_starts_again_where_another_was_killed(self):
        self.start().kill()
        self.processes[0].wait()
        (self.folder / "uveld.log").unlink()
        self.start()
        self.assertEqual("port7", self.view("interfaces")[0]["name"])

    def test_a_second_one_on_the_same_run_directory_is_refused(self):
        first = self.start()
        second = self.spawn()
        self.assertEqual(1, second.wait(20))
        self.assertIn(f"another uveld (process {first.pid}) runs in", second.stderr.read())
        self.assertEqual(2, len(self.view("interfaces")))

    def test_opens_its_log_anew_on_sighup(self):
        process = self.start()
        (self.folder / "uveld.log").rename(self.folder / "uveld.log.1")
        process.send_signal(signal.SIGHUP)
        self.wait_until(lambda: "was opened anew" in self.log())
        self.assertIsNone(process.poll())

    def test_tells_systemd_when_it_is_ready_and_when_it_ends(self):
        path = str(self.folder / "notify.sock")
        notify = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(notify.close)
        notify.bind(path)
        notify.settimeout(30)
        process = self.spawn({"NOTIFY_SOCKET": path})
        self.assertEqual(b"READY=1", notify.recv(1000))
        process.terminate()
        self.assertEqual(b"STOPPING=1", notify.recv(1000))
        self.assertEqual(0, process.wait(20))

    def test_says_what_is_wrong_with_its_configuration(self):
        self.configuration = "feeder: {scenario: nowhere.yaml}\n"
        process = self.spawn()
        self.assertEqual(2, process.wait(20))
        self.assertIn("uveld.yaml:1:20: there is no file", process.stderr.read())
        result = subprocess.run([UVELD, "--check-config", "-c", self.folder / "uveld.yaml"], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, check=False)
        self.assertEqual(2, result.returncode)

    def test_says_what_is_wrong_with_its_scenario(self):
        (self.folder / "device.yaml").write_text("device: {interfaces: [{index: seven}]}\n")
        process = self.spawn()
        self.assertEqual(1, process.wait(20))
        self.assertIn("device.yaml:1:31: expected a number", process.stderr.read())

    def test_does_not_start_with_a_module_that_is_none(self):
        (self.folder / "module.so").write_text("no shared object")
        self.configuration = self.configuration.replace(str(MODULE), str(self.folder / "module.so"))
        process = self.spawn()
        self.assertEqual(1, process.wait(20))
        self.assertIn("the module cannot be loaded", process.stderr.read())

    def test_does_not_start_with_a_module_that_refuses_its_settings(self):
        self.configuration = self.configuration.replace("so}", "so, settings: {document: /nowhere.xml}}")
        process = self.spawn()
        self.assertEqual(1, process.wait(20))
        self.assertIn("the module sessions does not start", process.stderr.read())
        self.assertIn("error sessions: /nowhere.xml cannot be read", self.log())

    # ---- looking into it ----

    def test_every_view_answers_people_and_machines(self):
        self.start()
        views = [row["name"] for row in self.view("views")]
        self.assertIn("callbacks", views)
        for view in views:
            arguments = [view, "sessions"] if view == "module" else [view]
            people = self.uvelctl("show", *arguments)
            if view == "standby":
                self.assertEqual((1, "uvelctl: no standby link is configured\n"), (people.returncode, people.stderr))
                continue
            self.assertEqual(0, people.returncode, people.stderr)
            rows = self.view(*arguments)
            self.assertEqual(len(rows) + 1, len(people.stdout.splitlines()), view)

    def test_views_show_what_is_there(self):
        self.start()
        self.assertEqual([[7, "port7", "up", ["192.0.2.1/24"]], [8, "port8", "down", []]],
                         [[row[key] for key in ("index", "name", "line", "addresses")] for row in self.view("interfaces")])
        self.assertEqual(["EVNT"], [row["name"] for row in self.view("queues")])
        self.assertEqual({"sessions"}, {row["owner"] for row in self.view("callbacks")})
        self.assertEqual(46, len([row for row in self.view("hooks", "installed")]))
        self.assertEqual("edge-1", {row["name"]: row["value"] for row in self.view("device")}["name"])

    def rows(self, view, *columns):
        return [[row[column] for column in columns] for row in self.view(view)]

    def test_views_show_a_whole_device(self):
        (self.folder / "device.yaml").write_text(WHOLE_DEVICE)
        self.start()
        addresses = ["192.0.2.1/24", "192.0.2.9/24", "2001:db8::1/64", "2001:db8::2/64"]
        self.assertEqual([[7, 2, None, []], [8, 2, None, []], [100, 3, None, []], [200, 3, 20, addresses]],
                         self.rows("interfaces", "index", "layer", "vlan", "addresses"))
        self.assertEqual([[20, ["port7", "port8"]], [100, ["port7"]], [101, ["port7", "port8"]]],
                         self.rows("vlans", "vlan", "ports"))
        self.assertEqual([["20", "100-101"], ["-", "20,101"]], self.rows("ports", "untagged", "tagged"))
        self.assertEqual([[1, 100, [7, 8]]], self.rows("trunks", "trunk", "interface", "members"))
        self.assertEqual([[1, "blue", True]], self.rows("vrfs", "index", "name", "virtual_system"))
        self.assertEqual([[1, "main", 2], [3, "service", 4]], self.rows("boards", "slot", "role", "cpus"))

    def test_uvelctl_says_when_there_is_no_uveld(self):
        result = self.uvelctl("show", "queues")
        self.assertEqual((1, f"uvelctl: no uveld runs in {self.folder}/run\n"), (result.returncode, result.stderr))

    def test_an_inspector_that_talks_nonsense_harms_nobody(self):
        self.start()
        client = self.connect("uveld.sock")
        client.sendall(b"\x00\xff{{{\n[1]\n\n")
        answers = client.makefile()
        for _ in range(3):
            self.assertIn("error", json.loads(answers.readline()))
        flood = self.connect("uveld.sock")
        try:
            flood.sendall(b"x" * 1_000_000)
        except OSError:
            pass
        self.assertEqual(2, len(self.view("interfaces")))

    def test_watch_looks_as_often_as_it_is_told(self):
        self.start()
        result = self.uvelctl("--json", "watch", "queues", "-n", "3", "-i", "0.1")
        self.assertEqual(3, result.stdout.count('"EVNT"'))

    # ---- the session table in it ----

    def test_sessions_log_on_and_off(self):
        self.start()
        self.assertEqual("ok", self.ask("logon 021a-2b3c-4d5e anna 7 0 10.0.0.1"))
        self.assertEqual("error the interface is down", self.ask("logon 021a-2b3c-4d5f bert 8 0"))
        self.assertIn("sessions: 1", [row["line"] for row in self.view("module", "sessions")])
        self.assertEqual("ok", self.ask("logoff 021a-2b3c-4d5e"))
        self.assertEqual("digest 0 0000000000000000", self.ask("digest"))

    def test_sessions_come_from_a_file_too(self):
        (self.folder / "always.txt").write_text("# two\nlogon 021a-2b3c-4d5e anna 7 0\nlogon 021a-2b3c-4d5f bert 8 0\n")
        self.configuration = self.configuration.replace("so}", f"so, settings: {{requests: {self.folder}/always.txt}}}}")
        self.start()
        self.wait_until(lambda: "1 requests refused, the first in line 3: the interface is down" in self.log())
        self.assertIn("always.txt: 1 requests carried out", self.log())
        self.assertEqual("1", self.ask("digest").split()[1])

    def test_sessions_end_with_their_interface(self):
        step = "steps: [{at: 1500ms, put: {interfaces: [{index: 7, state: down}]}}]\n"
        (self.folder / "device.yaml").write_text(DEVICE + step)
        self.start()
        self.assertEqual("ok", self.ask("logon 021a-2b3c-4d5e anna 7 0"))
        self.wait_until(lambda: self.ask("digest") == "digest 0 0000000000000000")
        self.assertIn("1 sessions ended: interface 7 went down", self.log())

    def test_the_system_name_follows_the_configuration_database(self):
        self.start()
        database = f"sqlite:{self.folder}/run/configuration.db"
        put = self.uvelctl("confdb", "--endpoint", database, "put", "system_info", "sys_name", "edge-9")
        self.assertEqual(0, put.returncode, put.stderr)
        self.wait_until(lambda: {row["name"]: row["value"] for row in self.view("device")}["name"] == "edge-9")


if __name__ == "__main__":
    unittest.main(verbosity=2)

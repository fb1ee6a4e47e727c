#!/usr/bin/env python3
"""uvelctl against every state that a uveld can be in, and its answers for machines against their schema.

    uvelctl_test.py BUILD_DIR
"""

import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import unittest

import jsonschema

from service import Service, free_ports, log_on_line, main, wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCHEMA = json.loads((ROOT / "apps" / "uvelctl" / "answers.schema.json").read_text())
STUBBORN = BUILD / "lib" / "uvel" / "test_modules" / "stubborn_module.so"
RICH_DEVICE = (ROOT / "examples" / "scenarios" / "edge.yaml").read_text()


def check(name, answer):
    jsonschema.Draft202012Validator({**SCHEMA, "$ref": f"#/$defs/{name}"}).validate(answer)


def answers_in(text):
    """The JSON values that stand one behind the other in a text."""
    decoder, found = json.JSONDecoder(), []
    text = text.strip()
    while text:
        value, end = decoder.raw_decode(text)
        found.append(value)
        text = text[end:].lstrip()
    return found


class Case(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uvelctl-test-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.service = Service(BUILD, self.folder / "device")
        self.addCleanup(self.service.kill)

    def fails(self, text, *arguments, status=1, **keywords):
        result = self.service.uvelctl(*arguments, **keywords)
        self.assertEqual((status, ""), (result.returncode, result.stdout))
        self.assertIn(text, result.stderr)
        self.assertEqual(1, result.stderr.count("\n") if status == 1 else 1, "one line")

    def use_stubborn(self, where):
        self.service = Service(BUILD, self.folder / where, f"modules: [{{file: {STUBBORN}, settings: {{where: {where}}}}}]\n",
                               module=False)
        self.addCleanup(self.service.kill)

    def use_link(self):
        subprocess.run([BUILD / "bin" / "uvelctl", "keys", self.folder / "keys", "a", "b"], check=True,
                       stdout=subprocess.DEVNULL)
        ports = free_ports(2)
        services = []
        for own, peer, listen, other in (("a", "b", *ports), ("b", "a", *ports[::-1])):
            services.append(Service(BUILD, self.folder / own, f"""
standby: {{listen: "127.0.0.1:{listen}", peer: "127.0.0.1:{other}", certificate: ../keys/{own}.pem,
  key: ../keys/{own}.key, authority: ../keys/authority.pem, peer_name: {peer}, heartbeat: 50ms, timeout: 500ms,
  takeover: 500ms}}
"""))
            self.addCleanup(services[-1].kill)
        return services


class States(Case):
    def test_nobody_is_there(self):
        self.fails(f"no uveld runs in {self.folder}/device/run", "show", "queues")
        self.service.start().kill()
        self.assertTrue((self.service.folder / "run" / "uveld.sock").exists(), "a stale socket")
        self.fails(f"no uveld runs in {self.folder}/device/run", "show", "queues")

    def test_it_is_starting(self):
        self.use_stubborn("start")
        self.service.spawn()
        wait_until(lambda: "stubborn: begins" in self.service.log())
        self.fails(f"uveld (process {self.service.process.pid}) in {self.service.folder}/run does not answer: it is starting "
                   "or ending", "show", "queues")

    def test_it_goes_away_while_it_is_watched(self):
        self.service.start()
        watch = subprocess.Popen([BUILD / "bin" / "uvelctl", "-r", self.service.folder / "run", "--json", "watch", "queues",
                                  "-i", "0.1"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.assertEqual("[\n", watch.stdout.readline())
        self.service.kill()
        self.assertIn("uveld has ended before it answered", watch.communicate(timeout=20)[1])
        self.assertEqual(1, watch.returncode)

    def test_a_watch_is_interrupted(self):
        self.service.start()
        watch = subprocess.Popen([BUILD / "bin" / "uvelctl", "-r", self.service.folder / "run", "watch", "queues"],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        watch.stdout.read(1)
        watch.send_signal(signal.SIGINT)
        self.assertEqual("", watch.communicate(timeout=20)[1])
        self.assertEqual(-signal.SIGINT, watch.returncode)

    @unittest.skipUnless(os.geteuid() == 0, "needs another user")
    def test_the_socket_is_another_users(self):
        self.service.start()
        for folder in (self.folder, self.service.folder):
            folder.chmod(0o755)
        # the build may stand where others cannot look, in root's home for one
        program = shutil.copy(BUILD / "bin" / "uvelctl", self.folder)
        shutil.copy(BUILD / "lib" / "libuvelhost.so.1", self.folder)
        counters = self.folder / "counters"  # of a build that counts coverage
        counters.mkdir()
        counters.chmod(0o777)
        self.fails("uveld.sock: Permission denied, it is for root alone", "show", "queues", program=program, user=65534,
                   group=65534, extra_groups=[],
                   env={**os.environ, "LD_LIBRARY_PATH": str(self.folder), "GCOV_PREFIX": str(counters)})

    def test_many_look_at_once(self):
        self.service.start()
        inspectors = [self.service.connect("uveld.sock") for _ in range(32)]
        wait_until(lambda: "32 inspectors are connected already" in self.service.uvelctl("show", "queues").stderr)
        for inspector in inspectors:
            inspector.close()
        wait_until(lambda: self.service.uvelctl("show", "queues").returncode == 0)

    def test_there_is_no_such_view_module_or_event(self):
        self.service.start()
        self.fails('there is no view "weather"', "show", "weather")
        self.fails("the name of a module is missing", "show", "module")
        self.fails('there is no module "x"', "show", "module", "x")
        self.fails('"2000" is no event number (0 to 1999)', "show", "callbacks", "2000")
        self.fails('"odd" is neither installed nor empty', "show", "hooks", "odd")

    def test_the_command_line_is_wrong(self):
        for arguments in ([], ["show"], ["--nonsense"], ["watch", "queues", "-i", "0"], ["watch", "queues", "-n", "x"]):
            result = self.service.uvelctl(*arguments)
            self.assertEqual(2, result.returncode, arguments)
            self.assertIn("--help", result.stderr)
        self.assertEqual(0, self.service.uvelctl("--help").returncode)

    def test_a_module_shows_nothing(self):
        self.use_stubborn("silent")
        self.service.start()
        self.assertEqual([], self.service.rows("module", "stubborn"))
        self.assertEqual("Module stubborn\n", self.service.uvelctl("show", "module", "stubborn").stdout)

    def test_there_are_no_interfaces(self):
        (self.service.folder / "device.yaml").write_text("device: {name: bare}\n")
        self.service.start()
        for view in ("interfaces", "vlans", "ports", "trunks", "vrfs"):
            self.assertEqual([], [row for row in self.service.rows(view) if row.get("name") != "public"], view)

    def test_there_is_no_link(self):
        self.service.start()
        self.fails("no standby link is configured", "show", "standby")

    def test_roles_and_peer_show(self):
        a, b = self.use_link()
        a.start()
        state = a.view("standby")
        self.assertEqual((False, "alone"), (state["connected"], state["backup"]))
        wait_until(lambda: a.view("standby")["active"])
        b.start()
        wait_until(lambda: a.view("standby")["backup"] == b.view("standby")["backup"] == "real-time")
        state = b.view("standby")
        self.assertEqual((True, False, True), (state["connected"], state["active"], state["peer_active"]))
        self.assertEqual((True, False), (a.view("device")["master"], b.view("device")["master"]))
        check("standby", a.rows("standby"))
        a.kill()
        wait_until(lambda: b.view("standby")["active"])
        check("standby", b.rows("standby"))


class Machines(Case):
    def test_every_view_keeps_to_its_schema(self):
        (self.service.folder / "device.yaml").write_text(RICH_DEVICE)
        self.service.start()
        interface = next(row["index"] for row in self.service.rows("interfaces") if row["line"] == "up")
        self.service.ask(log_on_line(1, interface))
        views = [row["name"] for row in self.service.rows("views")]
        self.assertEqual(sorted(set(SCHEMA["$defs"]) - {"capset", "confdb get", "confdb put", "confdb watch"}),
                         sorted(views))
        empty = []
        for view in views:
            if view != "standby":
                rows = self.service.rows(view, *(["sessions"] if view == "module" else []))
                check(view, rows)
                empty += [] if rows else [view]
        self.assertEqual(["pools"], empty, "nothing was checked there")

    def test_a_watch_keeps_to_the_schema_of_its_view(self):
        self.service.start()
        for view in ("queues", "interfaces", "callbacks"):
            result = self.service.uvelctl("--json", "watch", view, "-n", "3", "-i", "0.1")
            answers = answers_in(result.stdout)
            self.assertEqual(3, len(answers))
            for answer in answers:
                check(view, answer)

    def test_the_database_keeps_to_its_schema(self):
        database = ["--json", "confdb", "--endpoint", f"sqlite:{self.folder}/c.db"]
        check("confdb put", json.loads(self.service.uvelctl(*database, "put", "system_info", "sys_name", "edge").stdout))
        self.service.uvelctl(*database, "put", "devm_global", "system_mac", "--hex", "02:1a:2b:3c:4d:5e")
        for name in ([], ["system_info"], ["system_info", "sys_name"], ["devm_global", "system_mac"]):
            check("confdb get", json.loads(self.service.uvelctl(*database, "get", *name).stdout))
        watch = subprocess.Popen([BUILD / "bin" / "uvelctl", *database, "watch"], stdout=subprocess.PIPE, text=True)
        for _ in range(2):
            check("confdb watch", json.loads(watch.stdout.readline()))
        watch.terminate()
        watch.communicate()

    def test_the_capability_set_keeps_to_its_schema(self):
        (self.folder / "caps.yaml").write_text("items: {SRV_SPEC_MAX_USER: 7}\n")
        result = self.service.uvelctl("--json", "capset", "list", self.folder / "caps.yaml")
        self.assertEqual(0, result.returncode, result.stderr)
        check("capset", json.loads(result.stdout))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""What bash offers where a command line of uveld or uvelctl ends.

    completion_test.py BUILD_DIR SOURCE_DIR
"""

import os
import pathlib
import pty
import select
import subprocess
import sys
import tempfile
import time
import unittest

SOURCE, BUILD = (pathlib.Path(sys.argv.pop(i)).resolve() for i in (2, 1))
COMPLETION = SOURCE / "packaging" / "completion" / "uvelctl"
ENVIRONMENT = {**os.environ, "PATH": f"{BUILD / 'bin'}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}

# As bash calls a completion function; what is offered, one word a line.
OFFER = """
source "$1"
COMP_LINE=$2 COMP_POINT=${#2} COMP_WORDBREAKS=$' \\t\\n"\\'><=;|&(:'
_${2%% *}
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="completion-")
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = pathlib.Path(temporary.name)
        (cls.folder / "device.yaml").write_text("device: {name: edge-1}\n")
        (cls.folder / "uveld.yaml").write_text(
            "run_directory: run\nfeeder: {scenario: device.yaml}\n"
            f"modules: [{{file: {BUILD}/lib/uvel/modules/session_table.so}}]\n")
        cls.database = f"sqlite:{cls.folder}/settings.db"
        for table, key in ("system_info", "sys_name"), ("devm_global", "system_mac"), ("devm_global", "$(touch pwned)"):
            subprocess.run([BUILD / "bin/uvelctl", "confdb", "-e", cls.database, "put", table, key, f"of {key}"],
                           check=True, stdout=subprocess.DEVNULL)
        uveld = subprocess.Popen([BUILD / "bin/uveld", "-c", cls.folder / "uveld.yaml"], stderr=subprocess.DEVNULL)
        cls.addClassCleanup(uveld.wait)
        cls.addClassCleanup(uveld.terminate)
        end = time.monotonic() + 30
        while not (cls.folder / "run/uveld.sock").exists():
            assert time.monotonic() < end and uveld.poll() is None, "uveld does not start"
            time.sleep(0.01)

    def offered(self, line):
        result = subprocess.run(["bash", "--norc", "-c", OFFER, "bash", COMPLETION, line], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, check=True, env=ENVIRONMENT, cwd=self.folder)
        return result.stdout.split("\n")[:-1] if result.stdout != "\n" else []

    def test_commands(self):
        self.assertEqual(["show", "watch", "capset", "confdb", "keys"], self.offered("uvelctl "))
        self.assertEqual(["capset", "confdb"], self.offered("uvelctl c"))
        self.assertEqual(["get", "put", "del", "watch"], self.offered("uvelctl confdb "))
        self.assertEqual(["put"], self.offered("uvelctl --json confdb -e sqlite:/x p"))
        self.assertEqual([], self.offered("uvelctl nothing"))

    def test_options_of_the_command_and_of_those_above_it(self):
        self.assertEqual(["--check-config", "--config", "--help", "--version", "-c", "-h"],
                         sorted(self.offered("uveld ")))
        self.assertEqual(["--check-config"], self.offered("uveld --ch"))
        self.assertEqual(["--interval"], self.offered("uvelctl watch queues --i"))
        self.assertEqual(["--json"], self.offered("uvelctl watch queues --j"))
        self.assertEqual(["--help", "--hex"], self.offered("uvelctl confdb put system_info --he"))
        self.assertEqual([], self.offered("uvelctl --interval"))

    def test_views_are_those_of_the_running_uveld(self):
        shown = subprocess.run([BUILD / "bin/uvelctl", "-r", self.folder / "run", "show", "views"], check=True,
                               stdout=subprocess.PIPE, text=True).stdout.splitlines()[1:]
        self.assertEqual(sorted(line.split()[0] for line in shown), sorted(self.offered("uvelctl show ")))
        self.assertEqual(["module", "modules"], sorted(self.offered("uvelctl watch -n 3 mod")))

    def test_arguments_of_views(self):
        self.assertEqual(["empty", "installed"], self.offered("uvelctl show hooks "))
        self.assertEqual(["sessions"], self.offered("uvelctl -r run show module "))
        events = self.offered("uvelctl -r run show callbacks ")
        self.assertTrue(events and all(event.isdigit() for event in events), events)
        self.assertEqual([], self.offered("uvelctl -r nowhere show module "))
        self.assertEqual([], self.offered("uvelctl show queues "))

    def test_files_and_folders(self):
        self.assertEqual(["uveld.yaml"], self.offered("uveld -c uv"))
        self.assertEqual(["uveld.yaml"], self.offered("uveld --check-config --config uveld"))
        self.assertEqual(["run"], self.offered("uvelctl --run-directory r"))
        self.assertEqual(["device.yaml"], self.offered("uvelctl capset list de"))
        self.assertEqual(["run"], self.offered("uvelctl keys r"))
        self.assertEqual(["device.yaml"], self.offered("uvelctl confdb put --file t k de"))
        self.assertEqual([], self.offered("uvelctl confdb put t k de"))

    def test_endpoints_and_what_is_in_them(self):
        self.assertEqual(["etcd://", "etcds://", "sqlite:"], self.offered("uvelctl confdb -e "))
        self.assertEqual([f"{self.folder}/settings.db"], self.offered(f"uvelctl confdb -e sqlite:{self.folder}/se"))
        get = f"uvelctl confdb --endpoint {self.database} get"
        self.assertEqual(["devm_global", "system_info"], self.offered(f"{get} "))
        self.assertEqual(["sys_name"], self.offered(f"{get} system_info s"))
        self.assertEqual([], self.offered("uvelctl confdb -e sqlite:/nowhere get "))
        self.assertFalse((self.folder / "nowhere").exists())

    def test_what_others_wrote_into_a_database_is_never_run(self):
        self.assertEqual(["\\$\\(touch\\ pwned\\)", "system_mac"],
                         self.offered(f"uvelctl confdb -e {self.database} del devm_global "))
        self.assertFalse((self.folder / "pwned").exists())

    def test_on_a_real_command_line(self):
        """Bash itself at a terminal, which takes the part after a colon for a word: what it completed runs."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.folder)
            os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"], {**ENVIRONMENT, "TERM": "dumb", "PS1": "$ "})
        self.addCleanup(os.close, terminal)
        self.addCleanup(os.waitpid, pid, 0)
        self.addCleanup(os.kill, pid, 9)
        for typed in f"source {COMPLETION}\n", f"uvelctl con\t-e {self.database[:-4]}\t get sys\t\t\n":
            os.write(terminal, typed.encode())
        text = ""
        while "of sys_name" not in text and select.select([terminal], [], [], 20)[0]:
            text += os.read(terminal, 65536).decode()
        self.assertIn("of sys_name", text)


if __name__ == "__main__":
    unittest.main(verbosity=2)

"""A uveld for tests, with what is needed to talk to it. Interfaces come from a scenario unless a test says otherwise."""

import contextlib
import json
import os
import pathlib
import signal
import socket
import subprocess
import time
import unittest

DEVICE = """
device:
  name: edge-1
  interfaces:
    - {index: 7, name: port7, state: up, addresses: [192.0.2.1/24]}
    - {index: 8, name: port8, state: down}
"""


def wait_until(condition, seconds=30, what="waited in vain"):
    """What the condition gave when it was true."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(what() if callable(what) else what)
        time.sleep(0.01)


def free_ports(count):
    with contextlib.ExitStack() as stack:
        probes = [stack.enter_context(socket.socket()) for _ in range(count)]
        for probe in probes:
            probe.bind(("127.0.0.1", 0))
        return [probe.getsockname()[1] for probe in probes]


def mac_of(number):
    digits = f"02{number:010x}"
    return f"{digits[:4]}-{digits[4:8]}-{digits[8:]}"


def log_on_line(number, port=7):
    return f"logon {mac_of(number)} user{number} {port} 0\n"


class Result(unittest.TextTestResult):
    """Tells of a test that fails what its services said."""

    def addError(self, test, error):
        self.tell_logs()
        super().addError(test, error)

    def addFailure(self, test, error):
        self.tell_logs()
        super().addFailure(test, error)

    def startTest(self, test):
        Service.of_this_test.clear()
        super().startTest(test)

    def tell_logs(self):
        for service in Service.of_this_test:
            self.stream.writeln(f"\n---- log of {service.folder}\n{service.last_words()}")


def main():
    unittest.main(testRunner=unittest.TextTestRunner(resultclass=Result, verbosity=2))


class Service:
    """One uveld in a folder of its own. `more` is added to its configuration."""

    of_this_test = []

    def __init__(self, build, folder, more="", module=True):
        Service.of_this_test.append(self)
        self.build, self.folder = pathlib.Path(build), pathlib.Path(folder)
        self.folder.mkdir(exist_ok=True)
        self.process = None
        self.environment, self.prefix = {}, []
        (self.folder / "device.yaml").write_text(DEVICE)
        self.configuration = (f"run_directory: run\nlog: {{file: {self.folder}/uveld.log}}\n"
                              "feeder: {scenario: device.yaml}\n")
        if module:
            self.configuration += f"modules: [{{file: {self.build}/lib/uvel/modules/session_table.so}}]\n"
        self.configuration += more

    def spawn(self):
        (self.folder / "uveld.yaml").write_text(self.configuration)
        with open(self.folder / "stderr", "a") as errors:
            self.process = subprocess.Popen([*self.prefix, self.build / "bin" / "uveld", "--config", self.folder / "uveld.yaml"],
                                            stderr=errors, env={**os.environ, **self.environment})
        return self

    def start(self):
        before = self.log().count("is ready")
        self.spawn()
        wait_until(lambda: self.process.poll() is not None or self.log().count("is ready") > before)
        if self.process.poll() is not None:
            raise AssertionError(f"uveld ended:\n{self.log()}{self.errors()}")
        return self

    def kill(self):
        if self.process is not None:
            with contextlib.suppress(ProcessLookupError):
                self.process.kill()
            self.process.wait()

    def terminate(self, seconds=20):
        """Exit status, and how long it took."""
        begin = time.monotonic()
        self.process.terminate()
        return self.process.wait(seconds), time.monotonic() - begin

    def freeze(self):
        """Returns when all of its threads have stopped, which they do a little after the signal was sent."""
        self.process.send_signal(signal.SIGSTOP)
        threads = pathlib.Path(f"/proc/{self.process.pid}/task")
        wait_until(lambda: all(stat.read_text().rpartition(")")[2].split()[0] == "T" for stat in threads.glob("*/stat")))

    def thaw(self):
        self.process.send_signal(signal.SIGCONT)

    def log(self):
        path = self.folder / "uveld.log"
        return path.read_text() if path.exists() else ""

    def errors(self):
        return (self.folder / "stderr").read_text()

    def last_words(self, lines=60):
        """The end of what it logged and wrote to standard error."""
        with contextlib.suppress(OSError):
            return "\n".join((self.log() + self.errors()).splitlines()[-lines:])
        return "(none)"

    def resident_kilobytes(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmRSS:")))

    def uvelctl(self, *arguments, program=None, **keywords):
        return subprocess.run([program or self.build / "bin" / "uvelctl", "-r", self.folder / "run", *map(str, arguments)],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False, **keywords)

    def rows(self, *view):
        result = self.uvelctl("--json", "show", *view)
        if result.returncode != 0:
            raise AssertionError(f"uvelctl show {view}: {result.stderr}")
        return json.loads(result.stdout)

    def view(self, name):
        """A view of names and values."""
        return {row["name"]: row["value"] for row in self.rows(name)}

    def put(self, table, key, value):
        result = self.uvelctl("confdb", "--endpoint", f"sqlite:{self.folder}/run/configuration.db", "put", table, key, value)
        if result.returncode != 0:
            raise AssertionError(result.stderr)

    def connect(self, name="sessions.sock"):
        client = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        client.settimeout(30)
        client.connect(str(self.folder / "run" / name))
        return client

    def ask(self, line):
        with self.connect() as client:
            client.sendall(line.encode().rstrip(b"\n") + b"\n")
            return client.makefile().readline().rstrip("\n")

    def digest(self):
        return self.ask("digest")

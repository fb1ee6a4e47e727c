#!/usr/bin/env python3
"""The main job on two devices: sessions are logged on at a master, backed up, and taken over when the master dies.

Two uveld run in network namespaces of their own, joined by a veth pair, on real kernel interfaces; with --scenario both
run in the namespace of the caller, on interfaces from a file. Called by ./demo, which builds everything first.
"""

import argparse
import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
PORTS = 4
LINK_PORT = 4711


class DemoFailed(Exception):
    """Something that the demonstration promises did not happen."""


class StepCameFirst(DemoFailed):
    """A step of the scenario was due before everything was done that belongs before it: this machine is slower."""


# ---- screen ----

class Screen:
    def __init__(self):
        self.is_terminal = sys.stdout.isatty()

    def title(self, text):
        print(f"\n\033[1m{text}\033[0m" if self.is_terminal else f"\n{text}", flush=True)

    def line(self, text):
        print(f"  {text}", flush=True)

    def progress(self, what, done, total):
        """One line that fills up; without a terminal only its end is written."""
        if not self.is_terminal and done < total:
            return
        width = 40
        filled = width * done // max(total, 1)
        bar = "█" * filled + "░" * (width - filled)
        end = "\n" if done >= total else ""
        print(f"\r  {what:<26} {bar} {done:>9,} / {total:,}", end=end, flush=True)


SCREEN = Screen()


def run(*command, **keywords):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **keywords)
    if result.returncode != 0:
        raise DemoFailed(f"{' '.join(map(str, command))}: {result.stdout.strip()}")
    return result.stdout


def wait_for(what, condition, seconds=60.0, pause=0.02):
    """Time until the condition gave something true, and what it gave."""
    start = time.monotonic()
    while True:
        value = condition()
        if value:
            return time.monotonic() - start, value
        if time.monotonic() - start > seconds:
            raise DemoFailed(f"{what}: not after {seconds:.0f} seconds")
        time.sleep(pause)


INTERRUPTS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


@contextlib.contextmanager
def uninterrupted():
    """What is interrupted here is so afterwards: nothing is begun that nobody knows of."""
    before = signal.pthread_sigmask(signal.SIG_BLOCK, INTERRUPTS)
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


# ---- a device ----

class Device:
    """One uveld with its run directory, in a namespace or not."""

    def __init__(self, binaries, folder, name, namespace):
        self.binaries, self.folder, self.name, self.namespace = binaries, folder / name, name, namespace
        self.run_directory = self.folder / "run"
        self.process = None
        self.folder.mkdir()

    def inside(self, *command):
        return (["ip", "netns", "exec", self.namespace] if self.namespace else []) + [str(part) for part in command]

    def configure(self, text):
        (self.folder / "uveld.yaml").write_text(text)

    def start(self):
        """The process ends with this one, whatever becomes of it; Ctrl-C does not reach it directly."""
        with open(self.folder / "uveld.log", "a") as log, uninterrupted():
            self.process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "TERM"] +
                self.inside(self.binaries / "bin" / "uveld", "--config", self.folder / "uveld.yaml"),
                stdout=log, stderr=log, start_new_session=True)
        wait_for(f"{self.name} starts", lambda: self.has_ended() or self.is_ready())
        if self.has_ended():
            raise DemoFailed(f"{self.name} did not start:\n{(self.folder / 'uveld.log').read_text()}")

    def has_ended(self):
        return self.process.poll() is not None

    def is_ready(self):
        with contextlib.suppress(OSError):
            return self.digest()
        return None

    def kill(self):
        if self.process and self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        if self.process:
            self.process.wait()

    def end(self):
        if self.process and self.process.poll() is None:
            self.process.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                self.process.wait(10)
        self.kill()

    def uvelctl(self, *arguments):
        return run(self.binaries / "bin" / "uvelctl", "--run-directory", self.run_directory, *arguments)

    def view(self, name):
        """A view with two columns as a dictionary."""
        rows = json.loads(self.uvelctl("--json", "show", name))
        return {row["name"]: row["value"] for row in rows}

    def sessions(self):
        client = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        client.settimeout(30)
        try:
            client.connect(str(self.run_directory / "sessions.sock"))
        except OSError:
            client.close()
            raise
        return client

    def ask(self, line):
        with self.sessions() as client:
            client.sendall(line.encode() + b"\n")
            return client.makefile().readline().strip()

    def digest(self):
        """("digest", number of sessions, their sum)"""
        return tuple(self.ask("digest").split())

    def count(self):
        return int(self.digest()[1])

    def ifindex(self, interface):
        rows = json.loads(self.uvelctl("--json", "show", "interfaces"))
        return next(row["index"] for row in rows if row["name"] == interface)


# ---- log-ons ----

def log_on_line(number, ifindexes):
    mac = f"{0x02000000 + number // 0x10000:08x}{number % 0x10000:04x}"
    address = f"10.{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}"
    return f"logon {mac[:4]}-{mac[4:8]}-{mac[8:]} user{number} {ifindexes[number % len(ifindexes)]} 0 {address}\n"


def log_on(device, numbers, ifindexes, progress=None):
    """Logs users on, many requests on their way at a time. The number of answers that were ok."""
    with device.sessions() as client:
        lines = [log_on_line(number, ifindexes) for number in numbers]

        def send():
            with contextlib.suppress(OSError):  # whoever reads the answers notices
                client.sendall("".join(lines).encode())
        sender = threading.Thread(target=send, daemon=True)
        sender.start()
        accepted = 0
        with client.makefile() as answers:
            for done in range(1, len(lines) + 1):
                accepted += answers.readline() == "ok\n"
                if progress and (done % 500 == 0 or done == len(lines)):
                    progress(done)
        sender.join()
    return accepted


# ---- the two places to run in ----

class Namespaces:
    """Two network namespaces with a link between them and access ports whose other ends play the users' side."""

    def __init__(self):
        self.names = [f"uvel-{os.getpid()}-{letter}" for letter in "ab"]

    def open(self, _folder):
        for name in self.names:
            run("ip", "netns", "add", name)
            run("ip", "-n", name, "link", "set", "lo", "up")
            for port in range(1, PORTS + 1):
                run("ip", "-n", name, "link", "add", f"port{port}", "type", "veth", "peer", "name", f"user{port}")
                run("ip", "-n", name, "link", "set", f"port{port}", "up")
                run("ip", "-n", name, "link", "set", f"user{port}", "up")
        a, b = self.names
        run("ip", "-n", a, "link", "add", "standby", "type", "veth", "peer", "name", "standby", "netns", b)
        for number, name in enumerate(self.names, 1):
            run("ip", "-n", name, "address", "add", f"192.0.2.{number}/24", "dev", "standby")
            run("ip", "-n", name, "link", "set", "standby", "up")

    def close(self):
        for name in self.names:
            subprocess.run(["ip", "netns", "delete", name], stderr=subprocess.DEVNULL, check=False)

    def write_scenarios(self, _folder):
        pass

    def feeder(self, _number):
        return "feeder: netlink"

    def addresses(self):
        return [f"192.0.2.1:{LINK_PORT}", f"192.0.2.2:{LINK_PORT}"]

    def take_port_down(self, device, port):
        run("ip", "-n", device.namespace, "link", "set", f"user{port}", "down")

    takes_down = "ip link set user1 down"
    patience = 60.0

    def refused(self, count):
        return DemoFailed(f"{count} log-ons were refused")


class OnePlace:
    """Both devices in the caller's namespace, with interfaces from a file that change when a step of it is due."""

    names = [None, None]
    takes_down = "a step of the scenario"

    def __init__(self, sessions):
        self.port_down_after = 5 + sessions // 8_000  # seconds; all users have logged on by then

    @property
    def patience(self):
        return 60.0 + self.port_down_after

    def refused(self, count):
        reason = StepCameFirst(f"{count} log-ons were refused: an interface went down {self.port_down_after} s after the start")
        self.port_down_after = 5 + 3 * self.port_down_after
        return reason

    def open(self, _folder):
        pass

    def write_scenarios(self, folder):
        interfaces = "\n".join(f"    - {{index: {10 + port}, name: port{port}, state: up}}" for port in range(1, PORTS + 1))
        device = f"device:\n  name: edge\n  interfaces:\n{interfaces}\n"
        step = f"steps:\n  - at: {self.port_down_after}s\n    put: {{interfaces: [{{index: 11, state: down}}]}}\n"
        (folder / "master.yaml").write_text(device + step)
        (folder / "standby.yaml").write_text(device)

    def close(self):
        pass

    def feeder(self, number):
        return f"feeder: {{scenario: ../{'master' if number == 0 else 'standby'}.yaml}}"

    def addresses(self):
        ports = []
        for _ in range(2):
            with socket.socket() as probe:
                probe.bind(("127.0.0.1", 0))
                ports.append(probe.getsockname()[1])
        return [f"127.0.0.1:{port}" for port in ports]

    def take_port_down(self, device, port):
        pass  # the scenario does


# ---- the demonstration ----

def configuration(number, place, folder, addresses, binaries):
    own, peer = ("a", "b") if number == 0 else ("b", "a")
    return f"""# made by ./demo
run_directory: run
log: {{level: info}}
{place.feeder(number)}
configuration_database: sqlite:{folder}/configuration.db
standby:
  listen: {addresses[number]}
  peer: {addresses[1 - number]}
  certificate: ../keys/{own}.pem
  key: ../keys/{own}.key
  authority: ../keys/authority.pem
  peer_name: {peer}
  role: auto
  priority: {2 - number}
  heartbeat: 100ms
  timeout: 500ms
  takeover: 500ms
  board: {number}
  peer_board: {1 - number}
modules:
  - file: {binaries}/lib/uvel/modules/session_table.so
    settings: {{document: {HERE.parent / 'session_table' / 'sessions.xml'}}}
"""


def start_devices(place, folder, binaries):
    run(binaries / "bin" / "uvelctl", "keys", folder / "keys", "a", "b")
    addresses = place.addresses()
    devices = []
    for number, name in enumerate(("master", "standby")):
        device = Device(binaries, folder, name, place.names[number])
        device.configure(configuration(number, place, folder, addresses, binaries))
        devices.append(device)
    return devices


def show(device, view, rows=6):
    lines = device.uvelctl("show", *view.split()).splitlines()
    for line in lines[:rows + 1]:
        SCREEN.line(line)


def demonstrate(place, folder, binaries, total):
    """Once more, with more time before the scenario's step, where it came too early."""
    for turn in range(1, 4):
        work = folder / str(turn)
        work.mkdir()
        place.write_scenarios(work)
        try:
            return show_all(place, work, binaries, total)
        except StepCameFirst as reason:
            if turn == 3:
                raise
            SCREEN.line(f"{reason}; once more with more time")


def show_all(place, folder, binaries, total):
    master, standby = start_devices(place, folder, binaries)
    try:
        SCREEN.title("1  Two devices come up")
        for device in (master, standby):
            device.start()
        wait_for("the pair finds its roles", lambda: master.view("standby")["active"] and
                 master.view("standby")["backup"] == "real-time" and not standby.view("standby")["active"])
        show(master, "interfaces", 8)
        SCREEN.line("master is active, standby follows, over TLS 1.3")
        ports = [master.ifindex(f"port{port}") for port in range(1, PORTS + 1)]

        SCREEN.title(f"2  {total:,} users log on at the master")
        start = time.monotonic()
        accepted = log_on(master, range(total), ports, lambda done: SCREEN.progress("logged on", done, total))
        seconds = time.monotonic() - start
        if accepted != total:
            raise place.refused(total - accepted)
        SCREEN.line(f"{total / seconds:,.0f} log-ons a second, each answered when the standby had it")

        def backed_up():
            count = standby.count()
            SCREEN.progress("backed up", min(count, total - 1), total)
            return standby.digest() == master.digest()
        late, _ = wait_for("the standby has all sessions", backed_up)
        SCREEN.progress("backed up", total, total)
        SCREEN.line(f"both tables equal {late * 1000:.0f} ms after the last log-on: {' '.join(master.digest())}")

        SCREEN.title("3  An interface goes down for real")
        place.take_port_down(master, 1)
        took, _ = wait_for("sessions of port1 end", lambda: master.count() < total, place.patience)
        wait_for("their end is complete", lambda: master.count() == total - len(range(0, total, PORTS)))
        wait_for("the standby follows", lambda: standby.digest() == master.digest())
        SCREEN.line(f"{place.takes_down}: {total - master.count():,} sessions of port1 ended on both devices"
                    + (f", the first after {took * 1000:.0f} ms" if isinstance(place, Namespaces) else ""))
        show(master, "callbacks 5")

        SCREEN.title("4  The system gets another name in the configuration database")
        master.uvelctl("confdb", "--endpoint", f"sqlite:{folder}/configuration.db", "put", "system_info", "sys_name",
                       "edge-7")
        took, _ = wait_for("both devices know the name", lambda: master.view("device")["name"] == "edge-7" and
                           standby.view("device")["name"] == "edge-7")
        SCREEN.line(f"both devices are called edge-7, {took * 1000:.0f} ms after it was written")

        SCREEN.title("5  The master dies")
        last = master.digest()
        counters = master.view("standby")
        master.kill()
        took, _ = wait_for("the standby takes over", lambda: standby.view("standby")["active"])
        now = standby.digest()
        SCREEN.line(f"kill -9; the standby is active after {took * 1000:.0f} ms")
        SCREEN.line(f"master's table   {' '.join(last)}")
        SCREEN.line(f"standby's table  {' '.join(now)}")
        if now != last:
            raise DemoFailed("the tables differ")
        answer = standby.ask(log_on_line(total, [ports[1]]).strip())
        if answer != "ok alone":
            raise DemoFailed(f"the new master refuses a log-on: {answer}")

        SCREEN.title("What happened")
        SCREEN.line(f"sessions logged on            {accepted:>10,}")
        SCREEN.line(f"changes sent to the standby   {counters['messages_sent']:>10,}")
        SCREEN.line(f"notifications of the host     {standby.view('device')['notifications_delivered']:>10,}")
        SCREEN.line(f"sessions lost by the failure  {int(last[1]) - int(now[1]):>10,}")
    finally:
        with uninterrupted():
            for device in (master, standby):
                device.end()


def clean_up(place, folder, keep):
    """Runs to its end, however impatient somebody is."""
    for number in INTERRUPTS:
        signal.signal(number, signal.SIG_IGN)
    place.close()
    if folder and keep:
        print(f"\nkept: {folder}")
    elif folder:
        shutil.rmtree(folder, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(prog="./demo", description=__doc__.splitlines()[0])
    parser.add_argument("--sessions", type=int, default=100_000, help="users that log on (default 100000)")
    parser.add_argument("--scenario", action="store_true", help="without network namespaces, interfaces from a file")
    parser.add_argument("--keep", action="store_true", help="keep the work folder")
    parser.add_argument("--check-arguments", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--binaries", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if not PORTS <= arguments.sessions <= 200_000:
        parser.error("--sessions takes 4 to 200000")
    if arguments.check_arguments:
        return 0

    def interrupted(*_):
        raise KeyboardInterrupt
    place = OnePlace(arguments.sessions) if arguments.scenario else Namespaces()
    folder = None
    try:
        for number in INTERRUPTS:
            signal.signal(number, interrupted)
        with uninterrupted():
            folder = pathlib.Path(tempfile.mkdtemp(prefix="uvel-demo-"))
        place.open(folder)
        demonstrate(place, folder, arguments.binaries.resolve(), arguments.sessions)
    except DemoFailed as failure:
        print(f"\ndemo: {failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("\ndemo: interrupted", file=sys.stderr)
        return 130
    finally:
        clean_up(place, folder, arguments.keep)
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Two uveld that back each other up: log-ons while one of them dies, freezes or is started anew.

    pair_test.py BUILD_DIR
"""

import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest

from service import Service, free_ports, log_on_line, mac_of, main, wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()


class Client(threading.Thread):
    """Logs users on, one after the other without waiting for answers, until the connection ends. The last one waits for
    `may_end`: until then the client is not through, however slow the test is and however fast the service."""

    def __init__(self, service, numbers):
        super().__init__(daemon=True)
        self.service, self.numbers, self.answers = service, list(numbers), []
        self.may_end = threading.Event()

    def run(self):
        with self.service.connect() as client:
            sender = threading.Thread(target=self.send, args=(client,), daemon=True)
            sender.start()
            try:
                for line in client.makefile():
                    if line.endswith("\n"):
                        self.answers.append(line.rstrip("\n"))
                    if len(self.answers) == len(self.numbers):
                        break
            except OSError:
                pass
            sender.join()

    def send(self, client):
        try:
            for number in self.numbers[:-1]:
                client.sendall(log_on_line(number).encode())
            self.may_end.wait(60)
            client.sendall(log_on_line(self.numbers[-1]).encode())
        except OSError:
            pass

    def promised(self):
        """Users whose log-on was answered as being on both devices."""
        return [number for number, answer in zip(self.numbers, self.answers) if answer == "ok"]


class Case(unittest.TestCase):
    """A pair of devices, a the one that is active first."""

    window = 1 << 24
    timeout = "6s"  # beyond what a busy machine keeps a process waiting

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uveld-pair-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        subprocess.run([BUILD / "bin" / "uvelctl", "keys", self.folder / "keys", "a", "b"], check=True,
                       stdout=subprocess.DEVNULL)
        ports = free_ports(2)
        self.a = self.make("a", "b", ports, 2)
        self.b = self.make("b", "a", ports[::-1], 1)

    def make(self, own, peer, ports, priority):
        service = Service(BUILD, self.folder / own, f"""
standby:
  {{listen: "127.0.0.1:{ports[0]}", peer: "127.0.0.1:{ports[1]}", certificate: ../keys/{own}.pem, key: ../keys/{own}.key,
   authority: ../keys/authority.pem, peer_name: {peer}, priority: {priority}, heartbeat: 100ms, timeout: {self.timeout},
   takeover: 1s, window: {self.window}}}
""")
        self.addCleanup(service.kill)
        return service

    @staticmethod
    def is_in_step(active, standby):
        state = active.view("standby")
        return state["active"] and state["backup"] == "real-time" and standby.view("standby")["backup"] == "real-time"

    def start_both(self):
        for service in (self.a, self.b):
            service.start()
        wait_until(lambda: self.is_in_step(self.a, self.b))

    def log_on(self, service, numbers):
        client = Client(service, numbers)
        client.may_end.set()
        client.run()
        self.assertEqual(len(client.numbers), len(client.answers))
        return client.answers

    def ends_with_equal_digests(self, count):
        wait_until(lambda: self.a.digest() == self.b.digest(), what=lambda: f"{self.a.digest()} and {self.b.digest()}")
        self.assertEqual(str(count), self.a.digest().split()[1])


class Pair(Case):
    # ---- what an answer promises ----

    def test_ok_means_that_the_peer_has_it(self):
        self.start_both()
        self.assertEqual({"ok"}, set(self.log_on(self.a, range(2000))))
        self.assertEqual(self.a.digest(), self.b.digest())
        self.assertEqual("ok", self.a.ask(f"logoff {mac_of(5)}"))
        self.assertEqual("error there is no session of this MAC address", self.b.ask(f"show {mac_of(5)}"))

    def test_without_a_peer_the_answer_says_so(self):
        self.a.start()
        wait_until(lambda: self.a.view("standby")["active"])
        self.assertEqual("ok alone", self.a.ask(log_on_line(1)))

    def test_a_device_on_standby_changes_nothing(self):
        self.start_both()
        self.assertEqual("ok", self.a.ask(log_on_line(1)))
        self.assertEqual("error this device is on standby", self.b.ask(log_on_line(2)))
        self.assertEqual("error this device is on standby", self.b.ask(f"logoff {mac_of(1)}"))
        self.assertEqual(self.a.digest(), self.b.digest())

    # ---- failures ----

    def test_every_log_on_that_was_promised_survives_the_death_of_the_master(self):
        self.start_both()
        clients = [Client(self.a, range(first, first + 20_000)) for first in range(0, 80_000, 20_000)]
        for client in clients:
            client.start()
        wait_until(lambda: all(len(client.answers) > 500 for client in clients))
        self.a.kill()
        for client in clients:
            client.may_end.set()
            client.join(30)
        promised = [number for client in clients for number in client.promised()]
        self.assertGreater(len(promised), 2000)
        self.assertLess(len(promised), 80_000, "it died in the middle")
        wait_until(lambda: self.b.view("standby")["active"])
        missing = [number for number in promised if not self.b_has(number)]
        self.assertEqual([], missing[:10])
        self.assertEqual("ok alone", self.b.ask(log_on_line(100_000)))
        self.a.start()
        wait_until(lambda: self.is_in_step(self.b, self.a))
        self.assertEqual(self.b.digest(), self.a.digest())
        self.assertGreaterEqual(int(self.b.digest().split()[1]), len(promised) + 1)

    def b_has(self, number):
        if not hasattr(self, "asking"):
            self.asking = self.b.connect()
            self.addCleanup(self.asking.close)
            self.told = self.asking.makefile()
        self.asking.sendall(f"show {mac_of(number)}\n".encode())
        return self.told.readline().startswith(f"session {mac_of(number)} user{number} ")

    def test_the_master_goes_on_without_its_standby_and_brings_it_up_to_date(self):
        self.start_both()
        client = Client(self.a, range(30_000))
        client.start()
        wait_until(lambda: len(client.answers) > 500)
        self.b.kill()
        client.may_end.set()
        client.join(30)
        self.assertEqual(30_000, len(client.answers))
        self.assertEqual({"ok", "ok alone"}, set(client.answers))
        self.b.start()
        wait_until(lambda: self.is_in_step(self.a, self.b))
        self.assertEqual("ok", self.a.ask(log_on_line(30_000)))
        self.ends_with_equal_digests(30_001)

    def test_a_frozen_standby_holds_answers_up_no_longer_than_its_time_out(self):
        self.start_both()
        self.b.freeze()
        self.addCleanup(self.b.thaw)
        self.assertEqual("ok alone", self.a.ask(log_on_line(1)))
        self.b.thaw()
        wait_until(lambda: self.a.view("standby")["connected"] and self.a.digest() == self.b.digest())

    def test_sessions_survive_when_the_devices_are_started_anew_one_after_the_other(self):
        self.start_both()
        self.log_on(self.a, range(3000))
        for turn in range(2):
            first, second = (self.a, self.b) if turn == 0 else (self.b, self.a)
            self.assertEqual(0, first.terminate()[0])
            wait_until(lambda: second.view("standby")["active"])
            self.log_on(second, range(3000 + turn * 100, 3100 + turn * 100))
            first.start()
            wait_until(lambda: self.is_in_step(second, first))
            self.ends_with_equal_digests(3100 + turn * 100)

    def test_a_pair_that_is_started_anew_at_once_begins_empty_with_its_settings(self):
        self.start_both()
        for service in (self.a, self.b):
            service.put("system_info", "sys_name", "kept")
        self.log_on(self.a, range(100))
        for service in (self.a, self.b):
            service.process.terminate()
        for service in (self.a, self.b):
            self.assertEqual(0, service.process.wait(20))
        self.start_both()
        self.ends_with_equal_digests(0)
        for service in (self.a, self.b):
            wait_until(lambda: service.view("device")["name"] == "kept")
        self.assertEqual({"ok"}, set(self.log_on(self.a, range(100))))
        self.ends_with_equal_digests(100)


class SmallWindow(Case):
    """All that a batch sends does not fit into the link's memory: it has to wait for the peer."""

    window = 1 << 16
    timeout = "2s"  # it is frozen and waited for

    def test_a_standby_that_dies_in_a_batch_does_not_hold_up_log_ons(self):
        self.a.start()
        wait_until(lambda: self.a.view("standby")["active"])
        self.log_on(self.a, range(20_000))
        for stop in (self.b.kill, self.b.freeze):
            self.b.start()
            wait_until(lambda: "a batch of the peer begins" in self.b.log())
            stop()
            self.assertIn(self.a.ask(log_on_line(50_000)), ("ok alone", "ok"))
            self.assertEqual("ok alone", self.a.ask(f"logoff {mac_of(50_000)}"))
            self.b.kill()
            (self.b.folder / "uveld.log").unlink()
        self.b.start()
        wait_until(lambda: self.is_in_step(self.a, self.b))
        self.ends_with_equal_digests(20_000)


if __name__ == "__main__":
    main()

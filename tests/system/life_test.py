#!/usr/bin/env python3
"""uveld whatever happens to it: asked to end in every state, its database away, its sockets fed with anything.

    life_test.py BUILD_DIR
"""

import pathlib
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from service import Service, free_ports, log_on_line, mac_of, main, wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
STUBBORN = BUILD / "lib" / "uvel" / "test_modules" / "stubborn_module.so"


class Case(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uveld-life-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def make(self, more="", module=True):
        service = Service(BUILD, self.folder / "device", more, module)
        self.addCleanup(service.kill)
        return service

    def ends_in_time(self, service):
        status, seconds = service.terminate()
        self.assertEqual(0, status, service.errors())
        self.assertLess(seconds, 1.5, service.log())  # a second, and what a busy machine adds


class End(Case):
    def test_comes_within_a_second_whatever_a_module_does(self):
        for where in ("start", "run", "stop", "callback"):
            with self.subTest(where):
                service = self.make(f"modules: [{{file: {STUBBORN}, settings: {{where: {where}}}}}]\n", module=False)
                service.spawn()
                wait_until(lambda: "stubborn: begins" in service.log())
                if where in ("stop", "callback"):
                    wait_until(lambda: "is ready" in service.log())
                self.ends_in_time(service)
                told = {"start": "the module stubborn starts", "run": "the module stubborn begins to run",
                        "stop": "the module stubborn stops", "callback": "has ended"}[where]
                self.assertIn(told, service.log())
                shutil.rmtree(service.folder)

    def test_comes_within_a_second_with_a_peer_and_a_database_that_are_not_there(self):
        subprocess.run([BUILD / "bin" / "uvelctl", "keys", self.folder / "keys", "a", "b"], check=True,
                       stdout=subprocess.DEVNULL)
        listen, etcd = free_ports(2)
        service = self.make(f"""
configuration_database: "etcd://127.0.0.1:{etcd}"
standby: {{listen: "127.0.0.1:{listen}", peer: "192.0.2.77:4711", certificate: ../keys/a.pem, key: ../keys/a.key,
          authority: ../keys/authority.pem, peer_name: b}}
""").start()
        wait_until(lambda: service.rows("database")[0]["trouble"])
        self.ends_in_time(service)
        self.assertIn("has ended", service.log())

    def test_comes_while_thousands_of_requests_are_on_their_way(self):
        service = self.make().start()
        with service.connect() as client:
            client.sendall(b"".join(log_on_line(number).encode() for number in range(3000)))
            self.ends_in_time(service)
        self.assertEqual(["configuration.db", "configuration.db-lock", "configuration.db-shm", "configuration.db-wake",
                          "configuration.db-wal", "uveld.pid"], sorted(path.name for path in (service.folder / "run").iterdir()))

    def test_begins_right_after_the_start_of_the_process(self):
        for pause in (0, 0.005, 0.01, 0.02, 0.04):
            service = self.make()
            service.spawn()
            time.sleep(pause)
            service.process.terminate()
            self.assertIn(service.process.wait(20), (0, -15))  # -15: before it was able to take signals
            service.start()
            service.kill()

    def test_is_told_to_systemd_at_once(self):
        path = str(self.folder / "notify")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notify:
            notify.bind(path)
            notify.settimeout(30)
            service = self.make(f"modules: [{{file: {STUBBORN}, settings: {{where: start}}}}]\n", module=False)
            service.environment["NOTIFY_SOCKET"] = path
            service.spawn()
            wait_until(lambda: "stubborn: begins" in service.log())
            self.ends_in_time(service)
            self.assertEqual(b"STOPPING=1", notify.recv(1000), "it never was ready")

    def test_a_log_that_was_moved_is_opened_anew_while_a_module_holds_up_the_start(self):
        service = self.make(f"modules: [{{file: {STUBBORN}, settings: {{where: start}}}}]\n", module=False)
        service.spawn()
        wait_until(lambda: "stubborn: begins" in service.log())
        (service.folder / "uveld.log").rename(service.folder / "old.log")
        service.process.send_signal(1)
        wait_until(lambda: "was opened anew" in service.log())


class DatabaseOutage(Case):
    def name_becomes(self, service, name):
        wait_until(lambda: service.view("device")["name"] == name, what=lambda: f"{service.view('device')}\n{service.log()}")

    def state(self, service):
        return service.rows("database")[0]

    def test_a_file_that_is_removed_and_made_anew(self):
        service = self.make().start()
        service.put("system_info", "sys_name", "before")
        self.name_becomes(service, "before")
        self.assertEqual((True, None, 0), tuple(self.state(service)[key] for key in ("there", "trouble", "outages")))
        for ending in ("", "-wal", "-shm"):
            (service.folder / "run" / f"configuration.db{ending}").unlink()
        wait_until(lambda: not self.state(service)["there"])
        self.assertIn("configuration.db: removed", self.state(service)["trouble"])
        self.assertIn("configuration.db: removed", service.log())
        self.assertEqual("before", service.view("device")["name"], "what is known stays")
        self.assertEqual("ok", service.ask(log_on_line(1)), "it goes on")
        service.put("system_info", "sys_name", "after")
        self.name_becomes(service, "after")
        self.assertEqual((True, 1), (self.state(service)["there"], self.state(service)["outages"]))
        self.assertIn("configuration database of osc: back", service.log())
        self.assertEqual("", service.errors())

    def test_a_file_that_is_replaced(self):
        service = self.make().start()
        service.put("system_info", "sys_name", "first")
        self.name_becomes(service, "first")
        other = self.make()
        other.folder = self.folder / "other"
        (other.folder / "run").mkdir(parents=True)
        other.put("system_info", "sys_name", "second")
        for ending in ("-wal", "-shm"):
            (service.folder / "run" / f"configuration.db{ending}").unlink()
        (other.folder / "run" / "configuration.db").rename(service.folder / "run" / "configuration.db")
        self.name_becomes(service, "second")

    def test_a_writer_that_holds_the_file(self):
        import sqlite3
        service = self.make().start()
        service.put("system_info", "sys_name", "first")
        self.name_becomes(service, "first")
        with sqlite3.connect(service.folder / "run" / "configuration.db", isolation_level=None) as writer:
            writer.execute("BEGIN EXCLUSIVE")
            self.assertEqual("ok", service.ask(log_on_line(1)))
            self.assertEqual("first", service.view("device")["name"])
            writer.execute("ROLLBACK")
        service.put("system_info", "sys_name", "second")
        self.name_becomes(service, "second")

    def test_a_file_that_is_none_at_the_start_and_put_right_later(self):
        service = self.make()
        (service.folder / "run").mkdir()
        (service.folder / "run" / "configuration.db").write_text("no database at all\n" * 100)
        service.start()
        result = service.uvelctl("show", "database")
        self.assertEqual(1, result.returncode)
        self.assertIn("cannot be opened; the log says why", result.stderr)
        self.assertIn("not a database", service.log())
        (service.folder / "run" / "configuration.db").unlink()
        service.put("system_info", "sys_name", "right")
        self.name_becomes(service, "right")
        self.assertTrue(self.state(service)["there"])

    @unittest.skipUnless(shutil.which("etcd"), "no etcd")
    def test_a_cluster_that_is_stopped_and_started(self):
        port, peers = free_ports(2)
        node = Etcd(self.folder / "etcd", port, peers)
        self.addCleanup(node.stop)
        node.start()
        endpoint = f"etcd://127.0.0.1:{port}"
        service = self.make(f"configuration_database: \"{endpoint}\"\n").start()

        def put(name):
            wait_until(lambda: service.uvelctl("confdb", "--endpoint", endpoint, "put", "system_info", "sys_name",
                                               name).returncode == 0)
        put("before")
        self.name_becomes(service, "before")
        node.stop()
        wait_until(lambda: not self.state(service)["there"])
        self.assertIn("configuration database of osc", service.log())
        self.assertEqual("ok", service.ask(log_on_line(1)), "it goes on")
        node.start()
        put("after")
        self.name_becomes(service, "after")
        wait_until(lambda: self.state(service)["there"])


class Etcd:
    def __init__(self, folder, port, peers):
        self.folder, self.url, self.peers, self.process = folder, f"http://127.0.0.1:{port}", f"http://127.0.0.1:{peers}", None

    def start(self):
        self.process = subprocess.Popen(
            ["etcd", "--data-dir", self.folder, "--listen-client-urls", self.url, "--advertise-client-urls", self.url,
             "--listen-peer-urls", self.peers, "--initial-advertise-peer-urls", self.peers,
             "--initial-cluster", f"default={self.peers}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def stop(self):
        if self.process:
            self.process.kill()
            self.process.wait()


class SessionSocket(Case):
    def exchange(self, service, data, seconds=60):
        """Sends, closes the sending side and gives all answers."""
        with service.connect() as client:
            client.settimeout(seconds)
            sender = threading.Thread(target=lambda: (client.sendall(data), client.shutdown(socket.SHUT_WR)))
            sender.start()
            with client.makefile("rb") as answers:
                lines = answers.read().split(b"\n")
            sender.join()
        self.assertEqual(b"", lines.pop(), "every answer has its end")
        return lines

    def test_gives_garbage_a_clear_answer_a_line(self):
        service = self.make().start()
        lines = [b"\x00", b"\xff\xfe\xfd", os.urandom(40).replace(b"\n", b"x"), b"", b"logon", b"x" * 513, b"x" * 100_000,
                 b"logon " + mac_of(1).encode() + b" \xc3\xa4\xc3\xb6 7 0", b"\r\r\r", b"{\"view\": \"queues\"}",
                 b"GET / HTTP/1.1", log_on_line(2).encode().rstrip()]
        answers = self.exchange(service, b"\n".join(lines) + b"\nlogon cut")
        self.assertEqual(len(lines) + 1, len(answers))
        for line, answer in zip(lines[:-1], answers):
            self.assertTrue(answer.startswith(b"error ") and len(answer) < 200, (line[:50], answer))
            self.assertTrue(answer.decode("ascii").isprintable(), answer)
        self.assertEqual([b"ok", b"error the line has no end"], answers[-2:])
        self.assertEqual("digest 1", service.digest().rsplit(" ", 1)[0])

    def test_loses_nothing_of_many_clients_who_write_slowly_or_read_late(self):
        service = self.make().start()
        counts = {}

        def log_on(client_number):
            lines = b"".join(log_on_line(client_number * 1000 + number).encode() for number in range(300))
            with service.connect() as client:
                step = 7 if client_number % 2 else len(lines)
                for begin in range(0, len(lines), step):
                    client.sendall(lines[begin:begin + step])
                client.shutdown(socket.SHUT_WR)
                time.sleep(0.2 if client_number % 3 == 0 else 0)
                counts[client_number] = client.makefile().read().count("ok\n")

        threads = [threading.Thread(target=log_on, args=(number,)) for number in range(40)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(60)
        self.assertEqual({number: 300 for number in range(40)}, counts)
        self.assertEqual("12000", service.digest().split()[1])

    def test_does_not_grow_by_what_it_refuses(self):
        service = self.make()
        # what AddressSanitizer keeps of freed memory is no growth
        service.environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1:thread_local_quarantine_size_kb=64"
        service.start()
        noise = (b"y" * 400 + b"\n") * 2000 + b"z" * 1_000_000 + b"\n"
        self.assertEqual(2001, len(self.exchange(service, noise)))
        before = service.resident_kilobytes()
        for _ in range(20):
            self.assertEqual(2001, len(self.exchange(service, noise)))
        with service.connect() as silent:  # never reads: it is not read from either
            silent.settimeout(0.5)
            try:
                for _ in range(1000):
                    silent.sendall(b"show x\n" * 10_000)
            except TimeoutError:
                pass
            self.assertEqual("0", service.digest().split()[1], "others are served")
        self.assertLess(service.resident_kilobytes() - before, 8192)


if __name__ == "__main__":
    main()

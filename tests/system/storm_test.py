#!/usr/bin/env python3
"""uveld on the kernel's interfaces while they change thousands of times a second: it ends with what the kernel has.

    storm_test.py BUILD_DIR       needs root, for a network namespace
"""

import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time
import unittest

from service import Service, main, wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
CHANGES_A_SECOND = 2000
SECONDS = 3
DEVICES = 60


class Storm:
    """Commands for `ip -batch` that always fit what is there."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.up, self.names, self.addresses, self.made = {}, {}, {}, DEVICES
        for number in range(DEVICES):
            self.make(number)

    def make(self, number):
        self.names[number], self.up[number], self.addresses[number] = f"d{number}", False, set()

    def first(self):
        return [f"link add d{number} type veth peer name p{number}" for number in self.names]

    def next(self):
        number = self.random.choice(list(self.names))
        name = self.names[number]
        kind = self.random.random()
        if kind < 0.5:
            self.up[number] = not self.up[number]
            return f"link set {name} {'up' if self.up[number] else 'down'}"
        if kind < 0.85:
            address = f"10.{number % 250}.{self.random.randrange(3)}.1/24"
            self.addresses[number] ^= {address}
            return f"address {'add' if address in self.addresses[number] else 'delete'} {address} dev {name}"
        if kind < 0.995 and (kind < 0.93 or self.up[number]):
            return f"link set {name} address 02:00:00:00:{self.random.randrange(256):02x}:{number % 256:02x}"
        if kind < 0.995:
            self.names[number] = f"r{number}" if name.startswith("d") else f"d{number}"
            return f"link set {name} name {self.names[number]}"
        self.made += 1
        del self.names[number]
        self.make(self.made)
        return f"link delete {name}\nlink add d{self.made} type veth peer name p{self.made}"


@unittest.skipUnless(os.geteuid() == 0, "needs a network namespace")
class KernelStorm(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uveld-storm-")
        self.addCleanup(temporary.cleanup)
        self.namespace = f"uvel-storm-{os.getpid()}"
        subprocess.run(["ip", "netns", "add", self.namespace], check=True)
        self.addCleanup(subprocess.run, ["ip", "netns", "delete", self.namespace], check=True)
        self.service = Service(BUILD, pathlib.Path(temporary.name) / "device")
        self.service.configuration = self.service.configuration.replace("{scenario: device.yaml}", "netlink")
        self.service.prefix = ["ip", "netns", "exec", self.namespace]
        self.addCleanup(self.service.kill)

    def kernel(self):
        """index: (name, MAC, whether it is up and has a carrier, IPv4 addresses)"""
        text = subprocess.run(["ip", "-n", self.namespace, "-j", "address"], check=True, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL).stdout  # it says so when something changes meanwhile
        return {link["ifindex"]: (link["ifname"], link["address"].replace(":", ""), {"UP", "LOWER_UP"} <= set(link["flags"]),
                                  sorted(f"{address['local']}/{address['prefixlen']}" for address in link["addr_info"]
                                         if address["family"] == "inet"))
                for link in json.loads(text)}

    def model(self):
        return {row["index"]: (row["name"], row["mac"].replace("-", ""), row["line"] == "up",
                               sorted(address for address in row["addresses"] if "." in address))
                for row in self.service.rows("interfaces")}

    def test_ends_with_what_the_kernel_has(self):
        storm = Storm(time.time_ns() % 1000)
        run = subprocess.Popen(["ip", "-n", self.namespace, "-batch", "-"], stdin=subprocess.PIPE, text=True)
        self.addCleanup(run.wait)
        self.addCleanup(run.kill)
        self.addCleanup(run.stdin.close)
        run.stdin.write("\n".join(storm.first()) + "\n")
        run.stdin.flush()
        wait_until(lambda: len(self.kernel()) == 1 + 2 * DEVICES)
        self.service.start()
        self.assertEqual(self.kernel(), self.model())
        begin = time.monotonic()
        for tick in range(SECONDS * 20):
            run.stdin.write("\n".join(storm.next() for _ in range(CHANGES_A_SECOND // 20)) + "\n")
            run.stdin.flush()
            time.sleep(max(0.0, begin + (tick + 1) / 20 - time.monotonic()))
        run.stdin.close()
        self.assertEqual(0, run.wait(60))
        print(f"{SECONDS * CHANGES_A_SECOND / (time.monotonic() - begin):.0f} changes a second", file=sys.stderr)
        wait_until(lambda: self.model() == self.kernel(), 20,
                   what=lambda: str(sorted(set(map(str, self.model().items())) ^ set(map(str, self.kernel().items())))[:6]))
        self.assertEqual({row["refused"] for row in self.service.rows("queues")}, {0})


if __name__ == "__main__":
    main()

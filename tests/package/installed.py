"""Runs on the machine that debian_test.py makes, and throws away, with the packages in /packages: installs them, uses
what is installed, removes it again. Fails with a traceback."""

import contextlib
import json
import os
import pathlib
import re
import socket
import subprocess
import time

PACKAGES = ["libuvelcommon-base1", "libuvelcommon-base-dev", "libuvelhost1", "uveld"]
EXAMPLES = pathlib.Path("/usr/share/doc/uveld/examples")
SESSIONS = "/run/uveld/sessions.sock"


def run(*command, status=0):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    assert result.returncode == status, f"{command} ended with {result.returncode}: {result.stdout}"
    return result.stdout


def wait_until(condition, what):
    end = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < end, f"waited in vain: {what}"
        time.sleep(0.02)


def view(*arguments):
    return json.loads(run("uvelctl", "--json", "show", *arguments))


@contextlib.contextmanager
def running_uveld(*arguments):
    process = subprocess.Popen(["uveld", *arguments])
    try:
        wait_until(lambda: process.poll() is not None or pathlib.Path("/run/uveld/uveld.sock").exists(), "uveld starts")
        assert process.poll() is None, "uveld did not start"
        yield
    finally:
        process.terminate()
        assert process.wait(20) == 0, "uveld did not end well"


def ask(line):
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
        client.connect(SESSIONS)
        client.sendall(line.encode() + b"\n")
        return client.makefile().readline().strip()


def install():
    run("dpkg", "--install", *(str(path) for path in sorted(pathlib.Path("/packages").glob("*.deb"))))
    assert run("dpkg", "--audit") == "", "dpkg finds packages that are not in order"
    for library in "libuvelcommon_base.so.1", "libuvelhost.so.1":
        assert re.search(rf"{library} .*=> /(usr/)?lib/", run("ldconfig", "-p")), f"{library} is not known to the linker"


def the_configuration_as_delivered_works():
    assert run("uveld", "--check-config") == "/etc/uvel/uveld.yaml: correct\n"
    os.makedirs("/var/lib/uvel")  # the unit's StateDirectory
    with running_uveld():
        assert "lo" in [row["name"] for row in view("interfaces")]
        run("uvelctl", "confdb", "--endpoint", "sqlite:/var/lib/uvel/configuration.db", "put", "system_info", "sys_name",
            "edge-7")
        wait_until(lambda: {"name": "name", "value": "edge-7"} in view("device"), "the device takes its name")


def the_scenario_reaches_the_session_table():
    with running_uveld("--config", str(EXAMPLES / "uveld.yaml")):
        assert ask("logon 021a-2b3c-4d5e anna 200 0 192.0.2.7") == "ok"
        assert "sessions: 1" in [row["line"] for row in view("module", "sessions")]
        # its port goes down a second after the start
        wait_until(lambda: sum(row["calls"] for row in view("callbacks") if row["owner"] == "sessions") > 0,
                   "an event of the scenario reaches the module")


def a_program_is_built_on_it():
    source = "/usr/share/doc/libuvelcommon-base-dev/examples/first_steps.c"
    flags = run("pkg-config", "--cflags", "--libs", "uvelcommon_base").split()
    run("gcc", "-std=c11", "-Wall", "-Werror", source, "-o", "/tmp/first_steps", *flags)
    run("/tmp/first_steps")


def the_unit_is_in_order():
    if pathlib.Path("/usr/bin/systemd-analyze").exists():
        told = run("systemd-analyze", "verify", "/lib/systemd/system/uveld.service")
        assert "uveld" not in told, told


def what_the_administrator_wrote_survives_an_upgrade():
    configuration = pathlib.Path("/etc/uvel/uveld.yaml")
    configuration.write_text("log: {level: debug}\n")
    run("dpkg", "--install", *(str(path) for path in pathlib.Path("/packages").glob("uveld_*.deb")))
    assert configuration.read_text() == "log: {level: debug}\n"
    run("dpkg", "--remove", "uveld")
    assert configuration.exists() and not pathlib.Path("/usr/sbin/uveld").exists()


def nothing_stays_behind():
    run("dpkg", "--purge", *PACKAGES)
    left = run("find", "/etc", "/usr", "/lib/systemd", "/var/lib", "-iname", "*uvel*", "-not", "-path", "/var/lib/dpkg/*")
    assert left == "", left


install()
the_configuration_as_delivered_works()
the_scenario_reaches_the_session_table()
a_program_is_built_on_it()
the_unit_is_in_order()
what_the_administrator_wrote_survives_an_upgrade()
nothing_stays_behind()

#!/usr/bin/env python3
"""docs/porting.md: every operation of the host headers is listed, and its example port passes the contract's tests.

    porting_test.py BUILD_DIR
    porting_test.py --write BUILD_DIR    writes the lists of operations anew
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest

from pages import ROOT

PAGE = ROOT / "docs" / "porting.md"
WRITES = "--write" in sys.argv and not sys.argv.remove("--write")
BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PORT = BUILD / "lib" / "host_port" / "libuvelhost.so.1"
BASE = BUILD / "lib" / "libuvelcommon_base.so.1"


def operations():
    """Header to operations, in the order of the header."""
    return {path.name: names for path in sorted((ROOT / "host/include/uvelhost").glob("*.h"))
            if (names := re.findall(r"^UVELHOST_API [^(]*?(\w+)\(", path.read_text(), re.M))}


def names_of(library, kind):
    symbols = subprocess.run(["nm", "-D", kind, "--format=posix", library], stdout=subprocess.PIPE, text=True,
                             check=True).stdout
    return {line.split()[0].split("@")[0] for line in symbols.splitlines()}


def wanted(library):
    """Names that a library leaves to others."""
    return names_of(library, "--undefined-only")


def lists():
    called = wanted(BASE)
    for header, names in operations().items():
        yield f"### {header}\n"
        for title, part in (("The library calls", [name for name in names if name in called]),
                            ("Programs and tests call", [name for name in names if name not in called])):
            if part:
                yield textwrap.fill(f"{title} {', '.join(f'`{name}`' for name in part)}.", 125) + "\n"


def lack_of_the_example():
    everything = {name for names in operations().values() for name in names}
    return f"lacks {len(everything - names_of(PORT, '--defined-only'))} of {len(everything)} operations"


def split_page():
    head, tail = re.fullmatch(r"(.*\n## Operations\n\n<!--.*?-->\n\n)(.*)", PAGE.read_text(), re.S).groups()
    return head, tail


class Page(unittest.TestCase):
    def test_the_lists_name_every_operation_of_every_header_and_whether_the_library_calls_it(self):
        self.assertGreater(sum(map(len, operations().values())), 300)
        self.assertEqual("\n".join(lists()), split_page()[1],
                         f"tests/docs/porting_test.py --write {BUILD} makes the lists anew")

    def test_what_the_library_expects_is_said_of_every_family_that_it_calls(self):
        called = wanted(BASE)
        families = {header for header, names in operations().items() if called & set(names)}
        rows = re.findall(r"^\| (`[^|]*`) \|", split_page()[0], re.M)
        self.assertEqual(families, {name for row in rows for name in re.findall(r"`(\w+\.h)`", row)})

    def test_the_example_says_how_many_operations_there_are(self):
        self.assertIn(f" {lack_of_the_example()}\n", split_page()[0])


class Contract(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="uvelhost-port-")
        self.addCleanup(temporary.cleanup)
        self.folder = temporary.name

    def run_command(self, *command):
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)

    def configure(self, library, *options):
        return self.run_command("cmake", "-G", "Ninja", "-S", ROOT / "tests/host", "-B", self.folder,
                                f"-DUVELHOST_LIBRARY={library}", *options)

    def test_the_example_port_passes_the_tests_of_its_families(self):
        result = self.configure(PORT, f"-DUVELCOMMON_BASE_LIBRARY={BASE}")
        self.assertEqual(0, result.returncode, result.stdout)
        self.assertIn("left out: queue_test.cpp, for want of", result.stdout)
        self.assertNotIn("left out: list_test.cpp", result.stdout)
        everything = {name for names in operations().values() for name in names}
        missing = (wanted(BASE) & everything) - names_of(PORT, "--defined-only")
        self.assertIn(f"calls {len(missing)} of these: qal_assert;", result.stdout)
        built = self.run_command("cmake", "--build", self.folder)
        self.assertEqual(0, built.returncode, built.stdout)
        ran = self.run_command(f"{self.folder}/host_tests")
        self.assertEqual(0, ran.returncode, ran.stdout)
        self.assertIn("HostList", ran.stdout)
        self.assertIn("HostStrings", ran.stdout)
        loaded = self.run_command("ldd", f"{self.folder}/host_tests").stdout
        self.assertIn(f"libuvelhost.so.1 => {PORT}", loaded)

    def test_a_library_that_is_not_there_is_said(self):
        result = self.configure(f"{self.folder}/nowhere.so")
        self.assertNotEqual(0, result.returncode)
        self.assertIn("-DUVELHOST_LIBRARY=FILE", result.stdout)

    def test_a_library_without_any_operation_is_no_port(self):
        result = self.configure(BASE)
        self.assertNotEqual(0, result.returncode)
        self.assertIn("the library has all operations of none of the test files", result.stdout)

    def test_nothing_is_left_out_for_the_whole_host(self):
        result = self.configure(BUILD / "lib" / "libuvelhost.so.1")
        self.assertEqual(0, result.returncode, result.stdout)
        self.assertIn("lacks 0 of", result.stdout)
        self.assertNotIn("left out", result.stdout)


if __name__ == "__main__":
    if WRITES:
        head = re.sub(r"lacks \d+ of \d+ operations", lack_of_the_example(), split_page()[0])
        PAGE.write_text(head + "\n".join(lists()))
    else:
        unittest.main()

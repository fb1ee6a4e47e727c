#!/usr/bin/env python3
"""The Debian packages, made of a build tree: what is in them, what they need, and how they behave on a machine.

    debian_test.py BUILD_DIR SOURCE_DIR LIBRARY_DIR

LIBRARY_DIR is the libraries' folder below /usr. The machine is this one, seen through an overlay in mount, process and
network namespaces of its own: dpkg checks dependencies and runs maintainer scripts as on any other, and nothing that it
does is left when the test ends. Needs root; without it only the packages themselves are looked at.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

LIBRARY_DIR = sys.argv.pop(3)
SOURCE, BUILD = (pathlib.Path(sys.argv.pop(i)).resolve() for i in (2, 1))
VERSION = re.search(r"VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text().split("project(")[1])[1]
NAMES = ["libuvelcommon-base-dev", "libuvelcommon-base1", "libuvelhost1", "uveld"]

# Everything that the machine does is written to memory. The fresh /dev and /run keep it away from real services.
MACHINE = """
set -e
mount -t tmpfs tmpfs "$1"
mkdir "$1/upper" "$1/work" "$1/root" "$1/upper/packages"
cp "$2"/*.deb "$1/upper/packages"
mount -t overlay overlay -o "lowerdir=/,upperdir=$1/upper,workdir=$1/work" "$1/root"
cd "$1/root"
mount -t proc proc proc
mount -t tmpfs tmpfs run
mount -t tmpfs tmpfs tmp
mount --rbind /dev dev
ip link set lo up
rm -f var/lib/man-db/auto-update # or dpkg reads all manual pages of the machine anew
exec chroot . python3 -
"""


def output_of(*command, **keywords):
    result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            check=False, **keywords)
    assert result.returncode == 0, f"{command}: {result.stdout}"
    return result.stdout


def make_packages(folder):
    """debhelper works in the source tree; it gets one that looks like it."""
    tree = folder / "tree"
    tree.mkdir()
    for entry in SOURCE.iterdir():
        if entry.name not in (".git", "build", "debian"):
            (tree / entry.name).symlink_to(entry)
    shutil.copytree(SOURCE / "debian", tree / "debian",
                    ignore=lambda path, names: [name for name in names if name in NAMES or name == ".debhelper"])
    output_of("debian/rules", "binary", cwd=tree,
              env={**os.environ, "UVEL_BUILD_DIR": str(BUILD), "DEB_BUILD_OPTIONS": "noautodbgsym"})


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="package-test-")
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = pathlib.Path(temporary.name)
        make_packages(cls.folder)
        cls.files = {path.name.split("_")[0]: path for path in cls.folder.glob("*.deb")}

    def field(self, package, name):
        return output_of("dpkg-deb", "--field", self.files[package], name).strip()

    def needs(self, package):
        return dict((re.match(r"(\S+)(?: \((.*)\))?$", need).groups()
                     for need in self.field(package, "Depends").split(", ")))

    def content(self, package):
        """Files and links, without the leading slash."""
        listed = output_of("dpkg-deb", "--contents", self.files[package]).splitlines()
        return {re.sub(r"^\./| -> .*", "", line.split(None, 5)[5]) for line in listed if line[0] != "d"}

    # ---- the packages ----

    def test_are_four_of_one_version_for_this_architecture(self):
        self.assertEqual(NAMES, sorted(self.files))
        architecture = output_of("dpkg", "--print-architecture").strip()
        for package, file in self.files.items():
            self.assertEqual(f"{package}_{VERSION}_{architecture}.deb", file.name)
            self.assertEqual((package, VERSION), (self.field(package, "Package"), self.field(package, "Version")))

    def test_need_what_they_are_linked_with(self):
        base, host, uveld = (self.needs(name) for name in NAMES[1:])
        self.assertEqual({"libc6", "libxml2", "libuvelhost1"}, set(base))
        self.assertLessEqual({"libcurl4", "libmnl0", "libsqlite3-0", "libssl3"}, set(host))
        self.assertLessEqual({"libsystemd0", "libuvelcommon-base1", "libuvelhost1"}, set(uveld))
        self.assertEqual({f">= {VERSION}"}, {base["libuvelhost1"], uveld["libuvelhost1"], uveld["libuvelcommon-base1"]})
        self.assertFalse([need for needs in (base, host, uveld) for need in needs if need.endswith("-dev")])
        self.assertEqual({"libuvelcommon-base1": f"= {VERSION}", "libuvelhost1": f"= {VERSION}"},
                         self.needs("libuvelcommon-base-dev"))

    def test_libraries_tell_the_dynamic_linker_and_other_packages(self):
        for package, library in ("libuvelcommon-base1", "libuvelcommon_base"), ("libuvelhost1", "libuvelhost"):
            folder = self.folder / package
            output_of("dpkg-deb", "--control", self.files[package], folder)
            self.assertEqual(f"{library} 1 {package} (>= {VERSION})\n", (folder / "shlibs").read_text())
            self.assertIn("activate-noawait ldconfig", (folder / "triggers").read_text())

    def test_keep_what_the_administrator_writes(self):
        folder = self.folder / "uveld"
        output_of("dpkg-deb", "--control", self.files["uveld"], folder)
        self.assertEqual("/etc/uvel/sessions.xml\n/etc/uvel/uveld.yaml\n", (folder / "conffiles").read_text())

    # ---- what is in them ----

    def documents(self, package):
        return {f"usr/share/doc/{package}/{name}" for name in ("changelog.gz", "copyright")}

    def test_libraries_hold_nothing_but_the_library(self):
        for package, library in ("libuvelcommon-base1", "libuvelcommon_base"), ("libuvelhost1", "libuvelhost"):
            self.assertEqual(self.documents(package) | {f"usr/{LIBRARY_DIR}/{library}.so.{end}" for end in ("1", VERSION)},
                             self.content(package))

    def test_libraries_do_not_say_where_to_look_for_others(self):
        for package in NAMES[1:]:
            folder = self.folder / f"{package}-files"
            output_of("dpkg-deb", "--extract", self.files[package], folder)
            for file in folder.rglob("*.so*"):
                self.assertNotIn("RUNPATH", output_of("readelf", "-d", file), file)

    def test_development_files_are_all_public_headers_and_what_finds_them(self):
        headers = {f"usr/include/{path.relative_to(folder)}" for folder in
                   (*SOURCE.glob("src/*/include"), SOURCE / "host/include", SOURCE / "apps/uveld/include")
                   for path in folder.glob("*/*.h")}
        content = self.content("libuvelcommon-base-dev")
        self.assertEqual(headers, {path for path in content if path.startswith("usr/include/")})
        self.assertLessEqual({f"usr/{LIBRARY_DIR}/{path}" for path in (
            "cmake/uvelcommon_base/uvelcommon_base-config.cmake", "pkgconfig/uvelcommon_base.pc", "pkgconfig/uvelhost.pc",
            "libuvelcommon_base.so", "libuvelhost.so")}, content)

    def test_development_files_bring_the_examples_that_the_documents_build_on(self):
        folder = "usr/share/doc/libuvelcommon-base-dev/examples"
        examples = {f"{folder}/{path.relative_to(SOURCE / 'examples')}" for path in
                    (SOURCE / "examples/first_steps.c", *SOURCE.glob("examples/tutorial/*"), *SOURCE.glob("examples/host_port/*"))
                    if path.name != "CMakeLists.txt"}
        self.assertEqual(examples, {path for path in self.content("libuvelcommon-base-dev") if path.startswith(folder)})

    def test_uveld_brings_what_an_operator_needs(self):
        examples = "usr/share/doc/uveld/examples"
        pages = {f"usr/share/man/man{page[-1]}/{page}.gz"
                 for page in ("uvelctl.1", "uvel-scenario.5", "uveld.yaml.5", "uveld.8")}
        completions = {f"usr/share/bash-completion/completions/{name}" for name in ("uvelctl", "uveld")}
        self.assertEqual(self.documents("uveld") | pages | completions | {
            "etc/uvel/sessions.xml", "etc/uvel/uveld.yaml", "lib/systemd/system/uveld.service", "usr/bin/uvelctl",
            "usr/sbin/uveld", "usr/lib/uvel/modules/session_table.so", f"{examples}/uveld.yaml",
            f"{examples}/scenarios/churn.yaml", f"{examples}/scenarios/edge.yaml"}, self.content("uveld"))

    # ---- what surrounds them ----

    def test_are_built_with_what_check_installs(self):
        build_part = (SOURCE / "tools" / "packages.txt").read_text().split("# check")[0]
        installed = {line for line in build_part.splitlines() if line.endswith("-dev")}
        control = (SOURCE / "debian" / "control").read_text().split("Build-Depends:")[1].split("\nStandards")[0]
        self.assertEqual(installed, {need for need in re.findall(r"[\w.+-]+", control) if need.endswith("-dev")})

    def test_changelog_and_build_tell_the_same_version(self):
        self.assertEqual(VERSION, output_of("dpkg-parsechangelog", "-l", SOURCE / "debian" / "changelog", "-S",
                                            "Version").strip())

    @unittest.skipUnless(shutil.which("lintian"), "lintian is not installed")
    def test_please_lintian(self):
        self.assertEqual("", output_of("lintian", "--allow-root", *self.files.values()))

    @unittest.skipUnless(os.geteuid() == 0, "a machine of its own needs root")
    def test_work_on_a_machine(self):
        machine = self.folder / "machine"
        machine.mkdir()
        command = ["unshare", "--mount", "--net", "--pid", "--fork", "--kill-child", "--mount-proc"]
        if subprocess.run([*command, "true"], stderr=subprocess.DEVNULL, check=False).returncode != 0:
            self.skipTest("namespaces are not allowed here")
        script = (SOURCE / "tests" / "package" / "installed.py").read_text()
        output_of(*command, "sh", "-c", MACHINE, "sh", machine, self.folder, input=script,
                  env={"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
                       "DEBIAN_FRONTEND": "noninteractive"})


if __name__ == "__main__":
    unittest.main(verbosity=2)

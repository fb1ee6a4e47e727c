#!/usr/bin/env python3
"""The exported interface of a library against the one that was published (tests/abi/NAME-VERSION.abi).

  interface.py check LIBRARY          the library has the interface of its baseline
  interface.py selftest NAME          changed interfaces are refused, each with what it asks for
  interface.py renew [--unreleased]   writes the baselines anew where the version allows it (tools/renew-abi-baseline)

A baseline is what libabigail's abidw reads from a library that is made of the public headers alone: every declaration
becomes an empty definition in one C file. So it holds the interface and nothing of the machine or of the sources. The
version is that of the interface: an addition asks for a new minor version, any other change for a new major version,
which is the library's SONAME. Records that only pointers to void carry are not seen here: layouts.py watches them."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
HEADERS = {"libuvelcommon_base": "src/*/include/uvelcommon_base/*.h", "libuvelhost": "host/include/uvelhost/*.h"}
VERSION_NODES = {"libuvelcommon_base": "UVELCOMMON_BASE_1", "libuvelhost": "UVELHOST_1"}
RENEW = "tools/renew-abi-baseline"


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True).stdout


def project_version():
    text = (ROOT / "CMakeLists.txt").read_text()
    return tuple(int(part) for part in re.search(r"^project\(\S+ VERSION (\d+)\.(\d+)", text, re.M).groups())


def baseline_of(name):
    """(path, (major, minor)) of the published interface."""
    (path,) = (ROOT / "tests/abi").glob(f"{name}-*.abi")
    return path, tuple(int(part) for part in path.stem.rsplit("-", 1)[1].split("."))


def include_folders(root):
    return [*sorted(root.glob("src/*/include")), root / "host/include"]


def definitions(name, root):
    """A C file that includes the public headers below root and defines what they declare."""
    headers = sorted(root.glob(HEADERS[name]))
    lines = [f"#include <{header.parent.name}/{header.name}>" for header in headers]
    for header in headers:
        text = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
        for kind, declaration in re.findall(r"^UVEL(?:HOST)?_(API|DATA) ([^;]*);", text, re.M):
            declaration = re.sub(r"\s*__attribute__.*", "", declaration, flags=re.S)
            lines.append(declaration + (" { __builtin_trap(); }" if kind == "API" else ";"))
    return "\n".join(lines) + "\n"


def interface_library(name, root, folder):
    """A library of the interface that the headers below root declare."""
    source, script, library = folder / f"{name}.c", folder / f"{name}.map", folder / f"{name}.so"
    source.write_text(definitions(name, root))
    script.write_text(f"{VERSION_NODES[name]} {{ global: *; }};\n")
    run("gcc", "-std=c11", "-O0", "-gdwarf-4", "-w", "-shared", "-fPIC", "-nostdlib",
        *(f"-I{include}" for include in include_folders(root)), source, f"-Wl,-soname,{name}.so.{project_version()[0]}",
        f"-Wl,--version-script={script}", "-o", library)
    return library




def written(name, folder):
    """The text of a baseline: what abidw says, without what a reader of it takes for granted."""
    text = run("abidw", "--no-corpus-path", "--no-comp-dir-path",
               "--no-show-locs", "--no-elf-needed", "--no-parameter-names", "--type-id-style", "hash",
               interface_library(name, ROOT, folder))
    text = re.sub(r" (visibility|access|mangled-name|alignment-in-bits)='[^']*'", "", text)
    return re.sub(r" path='[^']*/", " path='", re.sub(r"^ +", "", text, flags=re.M))


def differences(baseline, library, *options):
    """What abidiff has to say; empty when there is nothing."""
    done = subprocess.run(["abidiff", "--no-show-locs", "--exported-interfaces-only", *options, baseline, library],
                          capture_output=True, text=True)
    if done.returncode & 3:
        sys.exit(f"abidiff failed: {done.stdout}{done.stderr}")
    return done.stdout if done.returncode else ""


def judge(name, library, published, version):
    """Empty when the library has the published interface; else what differs and what that asks for."""
    step = "The version stands at {}.{}, the baseline at {}.{}: ".format(*version, *published[1])
    broken = differences(published[0], library, "--no-added-syms")
    if broken:
        raised = version[0] > published[1][0]
        ask = "run" if raised else "raise the major version (the SONAME) in CMakeLists.txt and run"
        return f"{broken}{name} lost or changed parts of its interface. {step}{ask} {RENEW}."
    added = differences(published[0], library)
    if added:
        ask = "run" if version > published[1] else "raise the minor version in CMakeLists.txt and run"
        return f"{added}{name} has additions to its interface. {step}{ask} {RENEW}."
    return ""


def check(library):
    name = pathlib.Path(library).name.split(".")[0]
    published, version = baseline_of(name), project_version()
    faults = judge(name, library, published, version)
    print(faults or f"{name} has the interface of version {published[1][0]}.{published[1][1]}")
    return 1 if faults else 0


# Changes that must be refused: where, what is replaced, by what, and the step that is asked for.
CHANGES = {
    "libuvelcommon_base": [
        ("a new field in a structure", "kivo_ordered_table.h", r"(typedef struct \w* ?\{)", r"\1 int lNew;", "major"),
        ("a function less", "kivo_hex.h", r"UVEL_API [^;]*;", "", "major"),
        ("another type of an argument", "kivo_hex.h", r"(UVEL_API [^;]*?)uint32_t (\w+[,)])",
         r"\1uint64_t \2", "major"),
        ("a smaller object", "kivo_settings.h", r"g_aulKivoTid\[\w+\]", "g_aulKivoTid[3]", "major"),
        ("a new function", "kivo_hex.h", r"(UVEL_API )", r"\1void SRVHEX_New(void);\nUVEL_API ", "minor"),
    ],
    "libuvelhost": [
        ("a new field in a structure", "model.h", r"(typedef struct \w* ?\{)", r"\1 int lNew;", "major"),
        ("a function less", "list.h", r"UVELHOST_API [^;]*;", "", "major"),
        ("a new function", "list.h", r"(UVELHOST_API )", r"\1void DLL_New(void);\nUVELHOST_API ", "minor"),
    ],
}


def selftest(name):
    published, failed = baseline_of(name), 0
    for title, header, pattern, replacement, step in CHANGES[name]:
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for include in include_folders(ROOT):
                shutil.copytree(include, root / include.relative_to(ROOT))
            (path,) = root.glob(f"**/{header}")
            text, count = re.subn(pattern, replacement, path.read_text(), count=1)
            path.write_text(text)
            said = judge(name, interface_library(name, root, root), published, published[1])
        good = count == 1 and f"raise the {step} version" in said
        print(f"{title}: {'refused' if good else 'NOT REFUSED AS IT SHOULD BE'}")
        failed += not good
    return 1 if failed else 0


def renew(unreleased):
    status = 0
    for name in HEADERS:
        (path, published), version = baseline_of(name), project_version()
        with tempfile.TemporaryDirectory() as folder:
            text = written(name, pathlib.Path(folder))
            said = judge(name, pathlib.Path(folder, f"{name}.so"), (path, published), version)
        if "raise the" in said and not unreleased:
            print(said)
            status = 1
            continue
        path.unlink()
        path = path.with_name("{}-{}.{}.abi".format(name, *version))
        path.write_text(text)
        print(f"{path.relative_to(ROOT)}: {'renewed' if said else 'as it was'}")
    return status


if __name__ == "__main__":
    if sys.argv[1:2] == ["check"]:
        sys.exit(check(sys.argv[2]))
    if sys.argv[1:2] == ["selftest"]:
        sys.exit(selftest(sys.argv[2]))
    if sys.argv[1:2] == ["renew"]:
        sys.exit(renew(sys.argv[2:] == ["--unreleased"]))
    sys.exit(__doc__)

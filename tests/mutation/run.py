#!/usr/bin/env python3
"""Changes the library at random places and asks whether its tests notice.

  run.py [--seed N...] [--count N] [--build DIR] [--jobs N] [--only REGEX]

Each mutant is one change (sites.py) of one file of src/, compiled into copies of the libraries of a release build that
is there already (unit_tests and fault_tests built), and of the tests that compile the file once more to look inside.
The suites of tests that enter the changed function run against them, the most particular first, until one fails that
passes with the unchanged library, or outlives its time.
A mutant that does not compile, or compiles to the same machine code, is drawn again; so is one that equivalent.txt
lists as making no difference, with its reason. Ends with an error when fewer than 90 % of the mutants are noticed."""
import argparse
import concurrent.futures
import functools
import json
import os
import pathlib
import random
import re
import resource
import shlex
import shutil
import subprocess
import sys
import threading
import time

import equivalents
import sites

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LIBRARIES = ("libuvelcommon_base.so.1.0.0", "libuvelcommon_base_open.so", "libboundscheck_shared.so")
WALL_LIMIT, CPU_LIMIT, MEMORY_LIMIT = 60, 20, 4 << 30  # seconds, seconds, bytes
WANTED = 0.9


class Build:
    """The release build that mutants are made from."""

    def __init__(self, folder):
        self.folder = folder
        self.depends = self.dependencies()
        self.compile = {}  # object below the build folder: (source, command)
        self.probes = {}  # object of tests that includes sources of the library: its suites
        for entry in json.loads((folder / "compile_commands.json").read_text()):
            source = pathlib.Path(entry["file"]).resolve()
            command = re.sub(r"^\S*ccache ", "", entry["command"])
            output = re.search(r" -o (\S+) ", command)[1]
            if self.is_probe(source, output):
                self.probes[output] = set(re.findall(r"^TEST(?:_F)?\((\w+),", source.read_text(), re.M))
            if output in self.probes or source.is_relative_to(ROOT / "src"):
                self.compile[output] = (source.relative_to(ROOT), command)
        self.link = {name: self.link_command(f"lib/{name}") for name in LIBRARIES}
        self.link["unit_tests"] = self.link_command("bin/unit_tests")

    def dependencies(self):
        """{object: files below the root that it is made of}"""
        depends, current = {}, None
        for line in subprocess.check_output(["ninja", "-C", self.folder, "-t", "deps"], text=True).splitlines():
            if not line.startswith(" "):
                current = depends.setdefault(line.split(":")[0], set())
            elif line.strip():
                path = (self.folder / line.strip()).resolve()
                if path.is_relative_to(ROOT):
                    current.add(str(path.relative_to(ROOT)))
        return depends

    def is_probe(self, source, output):
        included = self.depends.get(output, ())
        return source.is_relative_to(ROOT / "tests/unit") and any(re.match(r"src/.*\.cpp$", path) for path in included)

    def link_command(self, target):
        commands = subprocess.check_output(["ninja", "-C", self.folder, "-t", "commands", target], text=True)
        return next(line for line in reversed(commands.splitlines()) if f" -o {target} " in line)

    def objects_of(self, path):
        return [output for output in self.compile if path in self.depends.get(output, ())]


def shell(command, folder):
    return subprocess.run(command, shell=True, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Bench:
    """A copy of the sources and of the libraries that one mutant after the other is made in."""

    COPIED = ("src", "tests/unit")

    def __init__(self, build, folder, flags=""):
        self.build, self.folder, self.flags = build, folder, flags
        shutil.rmtree(folder, ignore_errors=True)
        for copied in self.COPIED:
            shutil.copytree(ROOT / copied, folder / copied)
        (folder / "lib").mkdir()

    def object_path(self, output):
        return self.folder / "objects" / output

    def compile(self, outputs):
        """Compiles objects from the copy of the sources; false when one does not compile."""
        for output in outputs:
            target = self.object_path(output)
            target.parent.mkdir(parents=True, exist_ok=True)
            command = self.build.compile[output][1]
            for copied in self.COPIED:
                command = command.replace(f"{ROOT / copied}/", f"{self.folder / copied}/")
            command = re.sub(r" -o \S+ ", f" -w -Wno-error -g0 {self.flags} -o {target} ", command)
            command = command.replace(" -MD ", " ").replace(f" -MF {output}.d", "").replace(f" -MT {output}", "")
            if shell(command, self.build.folder).returncode:
                return False
        return True

    def links(self, outputs, extra=""):
        """Links what the objects are part of; returns the unit tests' program to run, None when nothing links."""
        for name in LIBRARIES:
            (self.folder / "lib" / name).unlink(missing_ok=True)
        program = self.build.folder / "bin/unit_tests"
        for name, command in self.build.link.items():
            bundled = [str(self.object_path(o)) for o in outputs if "/boundscheck.dir/" in o]
            changed = command
            for output in outputs:
                changed = changed.replace(f" {output} ", f" {self.object_path(output)} ")
            if bundled:
                changed = changed.replace(" src/libboundscheck.a ", f" {' '.join(bundled)} src/libboundscheck.a ")
            if changed == command:
                continue
            folder = self.folder / ("lib" if name in LIBRARIES else "")
            changed = re.sub(r" -o \S+ ", f" {extra} -o {folder / name} ", changed)
            if shell(changed.split(" && cmake")[0], self.build.folder).returncode:
                return None
            if name not in LIBRARIES:
                program = folder / name
        soname = self.folder / "lib/libuvelcommon_base.so.1"
        soname.unlink(missing_ok=True)
        if (self.folder / "lib" / LIBRARIES[0]).exists():
            soname.symlink_to(LIBRARIES[0])
        return program


def limits():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_LIMIT, CPU_LIMIT))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(program, test, libraries, trace=None):
    """'' when the test passes, else 'failed' or 'time'."""
    environment = dict(os.environ, LD_LIBRARY_PATH=str(libraries), UVEL_SOURCE_DIR=str(ROOT))
    if trace:
        environment["UVEL_TRACE"] = str(trace)
    process = subprocess.Popen([program, "--gtest_fail_fast", f"--gtest_filter={test}"], env=environment, preexec_fn=limits,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        code = process.wait(WALL_LIMIT)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return "time"
    return "" if code == 0 else "time" if code in (-24, -9) else "failed"


def suites_of(program):
    """{suite with its dot: tests}"""
    suites = {}
    for line in subprocess.check_output([program, "--gtest_list_tests"], text=True).splitlines():
        name = line.split("#")[0].rstrip()
        if not name.startswith(" "):
            tests = suites.setdefault(name, [])
        elif "DISABLED_" not in name:
            tests.append(name.strip())
    return suites


class Trace:
    """Which suite of tests enters which function: a library that writes it down, and one run of every suite. Suites whose
    tests each need a process of their own are taken test by test."""

    def __init__(self, build, folder, jobs):
        bench = Bench(build, folder, "-O0 -fno-inline -finstrument-functions")
        tracer = folder / "trace.o"
        subprocess.check_call(["gcc", "-O1", "-fPIC", "-c", ROOT / "tests/mutation/trace.c", "-o", tracer])
        outputs = [output for output in build.compile if "/boundscheck" not in output and output not in build.probes]
        bench.flags += " -g1 -gdwarf-4"  # addr2line misreads files of version 5
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            if not all(pool.map(lambda output: bench.compile([output]), outputs)):
                sys.exit("the library for tracing does not compile")
        if not bench.links(outputs, str(tracer)):
            sys.exit("the library for tracing does not link")
        self.programs = {"unit": build.folder / "bin/unit_tests", "fault": build.folder / "bin/fault_tests"}
        self.names = {name: self.functions(folder / "lib" / name) for name in LIBRARIES[:2]}
        self.tests = {}  # (kind, filter of tests): (set of (path, line of the function), seconds)
        suites = [(kind, *item) for kind, program in self.programs.items() for item in suites_of(program).items()]
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            list(pool.map(lambda item: self.run_suite(folder, *item), suites))
        self.starts = {}  # path: [(line, function)]
        for table in self.names.values():
            for path, line, function in table.values():
                self.starts.setdefault(path, set()).add((line, function))

    @staticmethod
    def functions(library):
        """{offset: (path, line, name)}"""
        symbols = subprocess.check_output(["nm", "--defined-only", library], text=True).splitlines()
        offsets = [line.split()[0] for line in symbols if line.split()[1] in "tTwW"]
        lines = subprocess.check_output(["addr2line", "-f", "-C", "-e", library, *offsets], text=True).splitlines()
        table = {}
        for offset, name, place in zip(offsets, lines[::2], lines[1::2]):
            path, _, line = place.split(" ")[0].rpartition(":")
            match = re.search(r"/src/(src/.*|(common|common_adp|event|diag)/.*)$", os.path.normpath(path))
            if match and line.isdigit():
                inside = match[1] if match[1].startswith("src/") else "src/" + match[1]
                table[int(offset, 16)] = (inside, int(line), name.split("(")[0].split(".")[0])
        return table

    def run_suite(self, folder, kind, suite, tests):
        if not self.run(folder, kind, suite + "*"):
            for test in tests:
                self.run(folder, kind, suite + test)

    def run(self, folder, kind, test):
        trace, begin = folder / f"{threading.get_ident()}.trace", time.monotonic()
        trace.unlink(missing_ok=True)
        result = passes(self.programs[kind], test, folder / "lib", trace)
        table = self.names[LIBRARIES[0 if kind == "unit" else 1]]
        if result:
            return False
        entered = {int(line, 16) for line in trace.read_text().split()} if trace.exists() else set()
        self.tests[kind, test] = ({table[at][:2] for at in entered if at in table}, time.monotonic() - begin)
        return True

    def function_at(self, path, source, line):
        """(line, name) of the function that encloses a line: the nearest before it that has not ended; or None."""
        start = max((start for start in self.starts.get(path, ()) if start[0] <= line), default=None)
        ended = start and any(text.startswith("}") for text in source.splitlines()[start[0] - 1:line - 1])
        return None if ended else start

    def choose(self, build, path, function):
        """Tests for a change: those that enter its function; where no function encloses it, those that enter any function
        of what includes the file. First those that look inside, then those that enter little else, and are quick."""
        if function:
            here = {(path, function[0])}
        else:
            files = {str(build.compile[output][0]) for output in build.objects_of(path)} | {path}
            here = {(file, start[0]) for file in files for start in self.starts.get(file, ())}
        bundled = path.startswith("src/boundscheck")
        inside = {suite for output in build.objects_of(path) for suite in build.probes.get(output, ())}
        chosen = []
        for test, (entered, seconds) in self.tests.items():
            if test[1].split(".")[0] in inside:
                chosen.append((0, test))
            elif bundled and "Boundscheck" in test[1]:
                chosen.append((seconds, test))
            elif entered & here:
                chosen.append(((10 + 100 * seconds) * len(entered) / len(entered & here), test))
        # a table without functions is seen by nobody knows whom
        chosen = chosen or [(seconds, test) for test, (_, seconds) in self.tests.items()]
        return [test for _, test in sorted(chosen)]


class Sample:
    def __init__(self, build, folder, trace, options, seed):
        self.build, self.trace, self.options = build, trace, options
        self.random, self.lock = random.Random(seed), threading.Lock()
        self.sources, self.pools = {}, {kind: [] for kind in sites.KINDS}
        for file in sorted([*ROOT.glob("src/**/*.cpp"), *ROOT.glob("src/**/*.h")]):
            path = str(file.relative_to(ROOT))
            if "/include/" in path or not re.search(options.only, path):
                continue
            self.sources[path] = file.read_text()
            for mutant in sites.find(path, self.sources[path]):
                self.pools[mutant.kind].append(mutant)
        self.harmless = equivalents.read(ROOT / "tests/mutation/equivalent.txt")
        self.benches, self.folder = [], folder
        self.outcome = {"killed": 0, "time": 0, "survived": [], "refused": 0, "same": 0, "listed": 0}

    @functools.lru_cache(maxsize=None)
    def plain_objects(self, path):
        """The machine code of what a file is part of, unchanged."""
        with self.lock_plain:
            bench = Bench(self.build, self.folder / "plain")
            outputs = self.build.objects_of(path)
            return {o: bench.object_path(o).read_bytes() for o in outputs} if bench.compile(outputs) else {}

    lock_plain = threading.Lock()

    def draw(self):
        with self.lock:
            pool = self.pools[self.random.choice([kind for kind in sites.KINDS if self.pools[kind]])]
            return pool.pop(self.random.randrange(len(pool)))

    def try_one(self, bench):
        """Draws until there is a mutant that counts; returns what became of it."""
        while True:
            mutant = self.draw()
            source = self.sources[mutant.path]
            line = mutant.line(source)
            function = self.trace.function_at(mutant.path, source, line)
            key = equivalents.Key(mutant.path, function[1] if function else "(file)", mutant.source_line(source),
                                  mutant.change(source))
            if equivalents.covers(self.harmless, key):
                self.outcome["listed"] += 1
                continue
            copy = bench.folder / mutant.path
            copy.write_text(mutant.apply(source))
            try:
                outputs = self.build.objects_of(mutant.path)
                if not outputs or not bench.compile(outputs):
                    self.outcome["refused"] += 1
                    continue
                plain = self.plain_objects(mutant.path)
                different = [o for o in outputs if bench.object_path(o).read_bytes() != plain.get(o)]
                program = bench.links(different) if different else None
                if not program:
                    self.outcome["same" if not different else "refused"] += 1
                    continue
                return key, line, *self.judge(bench, mutant.path, function, program)
            finally:
                copy.write_text(source)

    def judge(self, bench, path, function, program):
        tests = self.trace.choose(self.build, path, function)
        for kind, test in tests:
            used = program if kind == "unit" else self.trace.programs[kind]
            fault = passes(used, test, bench.folder / "lib")
            if not fault:
                continue
            plain = passes(self.trace.programs[kind], test, self.build.folder / "lib")
            if not plain or (plain == "time" and fault == "failed"):  # slow on a loaded machine, but it did not fail
                return ("time" if fault == "time" else "killed"), test
        return "survived", f"{len(tests)} suites"

    def worker(self, number):
        bench = Bench(self.build, self.folder / f"bench{number}")
        while True:
            with self.lock:
                if self.left == 0:
                    return
                self.left -= 1
            key, line, result, by = self.try_one(bench)
            with self.lock:
                if result == "survived":
                    self.outcome["survived"].append((key, line, by))
                else:
                    self.outcome[result] += 1
                print(f"{result:8} {key.path}:{line} {key.change}   [{by}]", flush=True)

    def run(self):
        self.left = self.options.count
        with concurrent.futures.ThreadPoolExecutor(self.options.jobs) as pool:
            for done in [pool.submit(self.worker, number) for number in range(self.options.jobs)]:
                done.result()
        return self.outcome


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=[1], nargs="+", help="one sample for each")
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", default="", help="regular expression of the files to change")
    options = parser.parse_args()
    begin = time.monotonic()
    build = Build(options.build.resolve())
    folder = build.folder / "mutation"
    trace = Trace(build, folder / "trace", options.jobs)
    print(f"{len(trace.tests)} suites, {sum(map(len, trace.starts.values()))} functions, "
          f"{time.monotonic() - begin:.0f} s", flush=True)
    return max([judged(Sample(build, folder, trace, options, seed), seed, options.count) for seed in options.seed])


def judged(sample, seed, count):
    """Runs a sample and says what came out; 1 when too few mutants were noticed."""
    begin, outcome = time.monotonic(), sample.run()
    survived = outcome["survived"]
    for key, line, by in sorted(survived, key=lambda item: item[0].path):
        print(f"\nsurvived {by} at line {line}:\n{equivalents.written(key)}")
    share = (count - len(survived)) / count
    print(f"\nseed {seed}: {count} mutants, {count - len(survived)} noticed ({100 * share:.0f} %), "
          f"{outcome['time']} of them by their time; {len(survived)} survived; drawn again: {outcome['refused']} did not "
          f"compile, {outcome['same']} gave the same code, {outcome['listed']} listed; {time.monotonic() - begin:.0f} s")
    return 0 if share >= WANTED else 1


if __name__ == "__main__":
    sys.exit(main())

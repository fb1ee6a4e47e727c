#!/usr/bin/env python3
"""All documents: what they link to, name and tell people to type is there.

    documents_test.py BUILD_DIR
"""

import functools
import os
import pathlib
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as xml

from pages import ROOT, documents

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
FOLDERS = {path.name for path in ROOT.iterdir() if path.is_dir() and not path.name.startswith(".") and path.name != "build"}
PROGRAMS = ("uveld", "uvelctl", "./demo", "./check", "cmake", "ctest", "python3")
# what users make
FOREIGN = {"flaps.so"}
FILES = [path for top in ROOT.iterdir() if top.name not in ("build", ".git")
         for path in ([top] if top.is_file() else top.rglob("*")) if path.is_file()]


def without_code(text):
    return re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)


def inline_code(text):
    """What stands between backticks, in sentences and tables."""
    return re.findall(r"`([^`\n]+)`", without_code(text))


def command_lines(text):
    """What people are told to type: indented blocks, lines after "$ ", and inline code that begins with a program."""
    blocks = [line for block in re.findall(r"(?:^|\n\n)((?:    .*\n)+)", without_code(text)) for line in block.splitlines()]
    shells = re.findall(r"^\$ (.*)$", text, re.M)
    for line in [*blocks, *shells, *inline_code(text)]:
        for command in re.split(r"&&|\|", line.split(" #")[0]):
            words = [word for word in command.split() if not re.fullmatch(r"[A-Z_]+=\S*", word)]
            if words and (words[0] in PROGRAMS or re.fullmatch(r"(tools|bench|tests)/[^*]+", words[0])):
                yield words


def anchors(path):
    headings = re.findall(r"^#+ (.*)$", without_code(path.read_text()), re.M)
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


@functools.cache
def help_of(*command):
    """What a program says with --help; empty when there is no such subcommand."""
    result = subprocess.run([BUILD / "bin" / command[0], *command[1:], "--help"], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False)
    return result.stdout if result.returncode == 0 else ""


@functools.cache
def sources():
    """The text of all sources."""
    return "\n".join(path.read_text(errors="replace") for path in FILES if path.stat().st_size < 300_000
                     and path.suffix in (".h", ".c", ".cpp", ".py", ".sh", ".txt", ".cmake", ""))


@functools.cache
def words_of_sources():
    return set(re.findall(r"\w+", sources()))


class EveryDocument(unittest.TestCase):
    """Each test goes through all documents and lists everything that is wrong."""

    def setUp(self):
        self.wrong = []

    def tearDown(self):
        self.assertEqual([], self.wrong)

    def complain(self, document, what):
        self.wrong.append(f"{document.relative_to(ROOT)}: {what}")

    def each(self, find, at_least=10):
        seen = 0
        for document in documents():
            for thing in find(document.read_text()):
                seen += 1
                yield document, thing
        self.assertGreaterEqual(seen, at_least)

    def test_links_lead_somewhere(self):
        for document, target in self.each(lambda text: re.findall(r"\]\(([^)\s]+)\)", without_code(text))):
            if re.match(r"\w+:", target):
                continue
            path, _, anchor = target.partition("#")
            goal = document.parent / path if path else document
            if not goal.exists():
                self.complain(document, f"no file {target}")
            elif anchor and anchor not in anchors(goal):
                self.complain(document, f"no heading {target}")

    def test_paths_in_the_tree_exist(self):
        for document, code in self.each(inline_code):
            path = code.split("(")[0].rstrip("/")
            if re.fullmatch(r"[\w.*/\-]+", path) and "/" in path and path.split("/")[0] in FOLDERS:
                if not list(ROOT.glob(path)):
                    self.complain(document, code)

    def test_named_files_exist(self):
        names = {path.name for path in [*FILES, *BUILD.glob("lib/**/*.so")]}
        for document, code in self.each(inline_code):
            for name in re.findall(r"(?<![\w/.*<\-])([a-z]\w*\.(?:h|c|cpp|py|sh|md|cmake|yaml|so))\b", code):
                if name not in names and name not in FOREIGN:
                    self.complain(document, code)

    def test_included_headers_exist(self):
        for document, header in self.each(lambda text: re.findall(r"<(uvel\w+/\w+\.h)>", text), 4):
            if not any(str(path).endswith(f"/include/{header}") for path in FILES):
                self.complain(document, header)

    def test_identifiers_are_those_of_the_code(self):
        pattern = r"(?:KIVO|UVELD?|UVELHOST|UVELCOMMON|QAL|MDL|CHI|CBUF|YSB|SRV\w*|NAC|HA|IPC|DLL|IF|L2IF|DB|SCN|NLF|g)_\w+|Ysb\w+"
        for document, code in self.each(inline_code):
            for name, star in re.findall(rf"(?<![\w*])({pattern})(\*?)(?![\w*])", code):
                if name not in words_of_sources() and not (star and any(word.startswith(name) for word in words_of_sources())):
                    self.complain(document, code)

    def test_commands_have_their_options(self):
        for document, words in self.each(command_lines):
            for problem in self.problems(words):
                self.complain(document, f"{' '.join(words)}: {problem}")

    def problems(self, words):
        program, rest = words[0], words[1:]
        options = [word.split("=")[0] for word in rest if re.match(r"--?[A-Za-z]", word)]
        if program in ("uveld", "uvelctl"):
            yield from self.unknown_in_help(program, rest, options)
        elif program in ("./demo", "./check"):
            known = (ROOT / program).read_text() + (ROOT / "examples/demo/demo.py").read_text()
            yield from (option for option in options if option not in known)
        elif program in ("cmake", "ctest"):
            yield from self.unknown_to_cmake(rest)
        else:
            path = rest[0] if program == "python3" else program
            if not (ROOT / path).exists():
                yield f"no file {path}"
            else:
                yield from (option for option in options if option not in (ROOT / path).read_text())

    def unknown_in_help(self, program, rest, options):
        said, path = help_of(program), [program]
        for word in (word for word in rest if re.fullmatch(r"[a-z]+", word)):
            more = help_of(*path, word)
            if more and more != help_of(*path):
                path.append(word)
                said += more
        if program == "uvelctl" and len(path) == 1 and any(not word.startswith("-") for word in rest):
            yield "no such subcommand"
        yield from (option for option in options if not re.search(rf"(?<![\w-]){re.escape(option)}(?![\w-])", said))
        if path[1:] in (["show"], ["watch"]):
            views = re.findall(r"[a-z]+", re.search(r"view TEXT REQUIRED (.*)", said)[1])
            yield from (f"no view {word}" for word in rest[rest.index(path[1]) + 1:][:1]
                        if re.fullmatch(r"[a-z]+", word) and word not in views)

    def unknown_to_cmake(self, rest):
        for option, value in zip(rest, rest[1:]):
            if option == "--preset" and f'"name": "{value}"' not in (ROOT / "CMakePresets.json").read_text():
                yield f"no preset {value}"
            if option == "-S" and not (ROOT / value / "CMakeLists.txt").exists():
                yield f"no project {value}"
        for name in (found[1] for found in (re.match(r"-D(UVEL\w+)=", word) for word in rest) if found):
            if f"set({name} " not in sources() and f"option({name} " not in sources():
                yield f"no setting {name}"

    def test_named_tests_are_in_the_build(self):
        lists = "\n".join(path.read_text() for path in FILES if path.name == "CMakeLists.txt")
        for document, name in self.each(lambda text: [code for code in inline_code(text)
                                                      if re.fullmatch(r"(abi|docs|package|system)\.[a-z_.]+\*?", code)], 5):
            start = re.sub(r"(\.\*|\.uvel\w+)$", "", name)
            if f"NAME {start}" not in lists and f"uvel_add_document_test({name[len('docs.'):]} " not in lists:
                self.complain(document, name)

    def test_environment_variables_are_read_somewhere(self):
        for document, name in self.each(lambda text: re.findall(r"\b(UVEL[A-Z]*_[A-Z_]*[A-Z])\b", text)):
            if name not in words_of_sources():
                self.complain(document, name)


class Readme(unittest.TestCase):
    def setUp(self):
        text = (ROOT / "README.md").read_text()
        self.text = text
        self.named = set(re.findall(r"`([\w./]+)`", " ".join(re.findall(r"^\| (`.*?) \|", text[text.index("## Map"):], re.M))))

    def test_the_map_names_every_top_level_folder_and_what_stands_in_the_large_ones(self):
        for folder in sorted(FOLDERS):
            self.assertTrue(any(name.split("/")[0] == folder for name in self.named), folder)
        for large in ("src", "host", "apps", "examples", "tests"):
            for path in (ROOT / large).iterdir():
                if path.is_dir() and not path.name.startswith("__"):
                    self.assertTrue(any(name == f"{large}/{path.name}" or name.startswith(f"{large}/{path.name}/")
                                        for name in self.named), path)

    def test_every_document_is_linked(self):
        for path in ROOT.glob("docs/*.md"):
            self.assertIn(f"(docs/{path.name})", self.text)

    def test_the_picture_shows_every_title_of_the_demonstration(self):
        picture = xml.parse(ROOT / "docs/demo.svg").getroot()
        shown = "\n".join("".join(node.itertext()) for node in picture.iter("{http://www.w3.org/2000/svg}text"))
        titles = re.findall(r'SCREEN\.title\(f?"(?:\d  )?(.*?)"\)', (ROOT / "examples/demo/demo.py").read_text())
        self.assertGreater(len(titles), 5)
        for title in titles:
            for part in re.split(r"\{.*?\}", title):
                self.assertIn(part, shown)


class Operating(unittest.TestCase):
    def test_the_views_are_those_of_uvelctl(self):
        offered = re.search(r"view TEXT REQUIRED +(.*)", help_of("uvelctl", "show"))[1].split(", ")
        text = (ROOT / "docs/operating.md").read_text()
        rows = re.findall(r"^\| (`.*?) \| ", text[text.index("| view |"):text.index("## A pair")], re.M)
        described = [view.replace("\\", "") for row in rows for view in re.findall("`([^`]+)`", row)]
        self.assertEqual(sorted(offered), sorted(described))


class Architecture(unittest.TestCase):
    def test_the_picture_names_every_folder_of_library_and_host(self):
        text = (ROOT / "docs/architecture.md").read_text()
        picture = re.search(r"^```$(.*?)^```$", text, re.M | re.S)[1]
        for path in [*(ROOT / "src").iterdir(), *(ROOT / "host").iterdir()]:
            if path.is_dir() and path.name not in ("include", "boundscheck", "yaml"):
                self.assertRegex(picture, rf"\b{path.parent.name}/{path.name}\b")

    def test_the_count_of_hooks_is_that_of_the_table(self):
        (count,) = re.findall(r"each of the (\d+) hooks", (ROOT / "docs/architecture.md").read_text())
        self.assertIn(f"#define KIVO_HOOK_COUNT {count}U", sources())


if __name__ == "__main__":
    os.chdir(ROOT)
    unittest.main()

#!/usr/bin/env python3
"""The manual pages say what the programs say of themselves, and are well-formed.

    manual_pages_test.py BUILD_DIR
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from pages import ROOT

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PAGES = [ROOT / "docs/man/uveld.8", ROOT / "docs/man/uvelctl.1", BUILD / "docs/uveld.yaml.5", BUILD / "docs/uvel-scenario.5"]


def output_of(*command):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False).stdout


# ---- what a program says with --help ----

def help_of(program, *command):
    return output_of(BUILD / "bin" / program, *command, "--help")


def options_in_help(text):
    return {option for line in re.findall(r"^  (-\S+)", text, re.M) for option in line.split(",")}


def commands_in_help(text):
    return re.findall(r"^  (\w+)", text.split("Subcommands:\n")[1], re.M) if "Subcommands:" in text else []


def all_commands(program):
    """Help of every command, by its words."""
    found, waiting = {}, [()]
    while waiting:
        command = waiting.pop()
        found[" ".join(command)] = text = help_of(program, *command)
        waiting += [(*command, name) for name in commands_in_help(text)]
    return found


# ---- what a page says ----

def options_in_page(text):
    """Of the lists of options: "-c", "--config" of ".It Fl c , Fl -config Ar file"."""
    return {"-" + option for line in re.findall(r"^\.It (Fl .*)$", text, re.M)
            for option in re.findall(r"Fl (\S+)", line)}


def sections_of(page):
    """Text of every subsection by its name, of the rest by ""."""
    parts = re.split(r"^\.(Ss .*|Sh .*)$", page.read_text(), flags=re.M)
    sections = {"": parts[0]}
    for title, body in zip(parts[1::2], parts[2::2]):
        name = title[3:] if title.startswith("Ss ") else ""
        sections[name] = sections.get(name, "") + body
    return sections


class Programs(unittest.TestCase):
    def test_uveld_has_the_options_of_its_page(self):
        options = options_in_help(help_of("uveld"))
        self.assertIn("--check-config", options)
        self.assertEqual(options, options_in_page(PAGES[0].read_text()))

    def test_uvelctl_has_the_commands_and_options_of_its_page(self):
        commands, sections = all_commands("uvelctl"), sections_of(PAGES[1])
        self.assertIn("confdb put", commands)
        for command, text in commands.items():
            options = options_in_help(text) - (options_in_help(commands[""]) if command else set())
            self.assertEqual(options, options_in_page(sections.get(command, "")), command)
            if not commands_in_help(text):
                self.assertIn(command, sections)
        self.assertLessEqual(set(sections), set(commands))

    def test_uvelctl_has_the_views_of_its_page(self):
        (views,) = re.findall(r"view TEXT REQUIRED +(.*)", help_of("uvelctl", "show"))
        listed = re.findall(r"^\.It Cm (\w+)(?: Op)?(?: Cm| Ar)?(.*)$", sections_of(PAGES[1])["show"], re.M)
        self.assertEqual(sorted(view.split()[0] for view in views.split(", ")), [name for name, _ in listed])


class Configuration(unittest.TestCase):
    """uveld names the keys that it knows where it finds one that it does not."""

    def known_keys(self, text):
        with tempfile.NamedTemporaryFile("w", suffix=".yaml") as file:
            file.write(text)
            file.flush()
            told = output_of(BUILD / "bin" / "uveld", "--check-config", "--config", file.name)
        return set(re.search(r"one of the keys (.*), found", told)[1].split(", "))

    def test_has_the_keys_of_its_document(self):
        text = (ROOT / "docs" / "configuration.md").read_text()
        before, standby = text.split("\n## standby\n")
        documented = [set(re.findall(r"`([^`]+)`", row)) for row in re.findall(r"^\| (`.*?) \|", before, re.M)]
        documented = set().union(*documented)
        documented |= {f"standby.{key}" for row in re.findall(r"^\| (`.*?) \|", standby, re.M)
                       for key in re.findall(r"`([^`]+)`", row)}
        known = self.known_keys("x: 1")
        for key, form in (("log", "log: {x: 1}"), ("process", "process: {x: 1}"), ("feeder", "feeder: {x: 1}"),
                          ("feeder.netlink", "feeder: {netlink: {x: 1}}"), ("standby", "standby: {x: 1}"),
                          ("modules[]", "modules: [{x: 1}]")):
            known |= {f"{key}.{name}" for name in self.known_keys(form)}
        # those that hold nothing but keys of their own
        self.assertEqual(known - {"log", "process", "feeder.netlink"}, documented)


class Pages(unittest.TestCase):
    def test_are_well_formed(self):
        for page in PAGES:
            self.assertEqual("", output_of("mandoc", "-T", "lint", "-W", "warning", page))

    def test_of_files_hold_all_of_their_document(self):
        """Every word in code style of the document is in the page."""
        for page, document in zip(PAGES[2:], ("configuration.md", "scenarios.md")):
            shown = " ".join(re.sub(r".\x08", "", output_of("mandoc", "-T", "ascii", "-O", "width=500", page)).split())
            words = re.findall(r"`([^`\n]+)`", (ROOT / "docs" / document).read_text())
            self.assertGreater(len(words), 50)
            self.assertEqual([], [word for word in words if word not in shown], page)

    def test_a_document_of_all_forms_becomes_a_page(self):
        document = ("# Title\n\nOne. Two `a\\b`.\n\n.dot\n\n## Part\n\n| key | value | without it |\n|---|---|---|\n"
                    "| `k` | what [it](x.md) is | 1 |\n| `l` | a \\| b | |\n\n- item\n  goes on\n- **second**\n\n"
                    "    .code\n\n```yaml\nx: 1\n\ny: 2\n```\n")
        with tempfile.TemporaryDirectory() as folder:
            source, page = pathlib.Path(folder, "document.md"), pathlib.Path(folder, "name.5")
            source.write_text(document)
            output_of(sys.executable, ROOT / "docs/man/page_from_markdown.py", source, page, "Day", "what it is",
                      "other.5", "uveld.8")
            made = page.read_text()
        self.assertEqual("""\
.Dd Day
.Dt NAME 5
.Os
.Sh NAME
.Nm name
.Nd what it is
.Sh DESCRIPTION
One.
Two \\fBa\\eb\\fR.
.Pp
\\&.dot
.Sh PART
.Bl -tag -width Ds
.It \\fBk\\fR
what it is
(without it: 1)
.It \\fBl\\fR
a | b
.El
.Bl -bullet
.It
item goes on
.It
\\fIsecond\\fR
.El
.Bd -literal -offset indent
\\&.code
.Ed
.Bd -literal -offset indent
x: 1

y: 2
.Ed
.Sh SEE ALSO
.Xr other 5 ,
.Xr uveld 8
""", made)


if __name__ == "__main__":
    unittest.main(verbosity=2)

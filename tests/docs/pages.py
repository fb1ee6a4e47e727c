"""Reading of the documents, for their tests."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def documents():
    return sorted([ROOT / "README.md", *ROOT.glob("docs/*.md"), *ROOT.glob("examples/**/*.md")])


def marked_blocks(document):
    """(kind, name, lines) of every code block below a comment `<!-- kind: name -->`, in the order of the page."""
    text = (ROOT / document).read_text()
    return [(kind, name, body.splitlines())
            for kind, name, body in re.findall(r"^<!-- (\w+): (\S+) -->\n```\w*\n(.*?)^```$", text, re.M | re.S)]

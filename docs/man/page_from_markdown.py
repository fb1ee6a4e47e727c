#!/usr/bin/env python3
"""Makes a manual page (mdoc) of a document, so that both say the same.

    page_from_markdown.py DOCUMENT FOLDER/NAME.SECTION DATE DESCRIPTION SEE_ALSO...

Understands what our documents use: paragraphs, sections, tables, code, lists. A table becomes a list with a tag: the first
column is the tag, a third one follows the second with its title. SEE_ALSO are NAME.SECTION.
"""

import pathlib
import re
import sys


def text_of(markdown):
    """Inline marks as fonts; nothing in it is taken for a request or an escape."""
    markdown = markdown.replace("\\|", "|").replace("\\", "\\e")
    markdown = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", markdown)
    markdown = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", markdown)
    markdown = re.sub(r"\*\*([^*]*)\*\*", r"\\fI\1\\fR", markdown)
    return re.sub(r"^([.'])", r"\\&\1", markdown)


def sentences(markdown):
    """A line for each, as mdoc wants it."""
    return [text_of(part) for part in re.split(r"(?<=[a-z)`][.:;]) +", markdown.strip()) if part]


def verbatim(lines):
    escaped = [re.sub(r"^([.'])", r"\\&\1", line.replace("\\", "\\e")) for line in lines]
    return [".Bd -literal -offset indent", *escaped, ".Ed"]


def cells(row):
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", row.strip().strip("|"))]


def table(rows):
    titles = cells(rows[0])
    lines = [".Bl -tag -width Ds"]
    for row in rows[2:]:
        tag, what, *more = cells(row)
        lines += [f".It {text_of(tag)}", *sentences(what)]
        lines += [text_of(f"({title}: {cell})") for title, cell in zip(titles[2:], more) if cell]
    return lines + [".El"]


def items(block):
    lines = [".Bl -bullet"]
    for item in re.split(r"(?m)^- ", "\n".join(block))[1:]:
        lines += [".It", *sentences(" ".join(item.split()))]
    return lines + [".El"]


def blocks(document):
    """Runs of lines without an empty one between them; fenced code is one, and loses its fences."""
    block, fenced = [], False
    for line in [*document.splitlines(), ""]:
        if line.startswith("```"):
            if fenced:
                yield "code", block
            block, fenced = [], not fenced
        elif fenced or line:
            block.append(line)
        elif block:
            yield ("code" if block[0].startswith("    ") else "text"), block
            block = []


def body(document):
    lines = [".Sh DESCRIPTION"]
    for kind, block in blocks(document):
        after_title = lines[-1].startswith(".Sh")
        if kind == "code":
            lines += verbatim(line.removeprefix("    ") for line in block)
        elif block[0].startswith(("# ", "<!--")):
            continue
        elif block[0].startswith("## "):
            lines.append(f".Sh {block[0][3:].upper()}")
        elif block[0].startswith("|"):
            lines += table(block)
        elif block[0].startswith("- "):
            lines += items(block)
        else:
            lines += ([] if after_title else [".Pp"]) + sentences(" ".join(block))
    return lines


def main():
    document, page, date, description, *see_also = sys.argv[1:]
    name, section = pathlib.Path(page).name.rsplit(".", 1)
    content = body(pathlib.Path(document).read_text(encoding="utf-8"))
    head = [f".Dd {date}", f".Dt {name.upper()} {section}", ".Os", ".Sh NAME", f".Nm {name}", f".Nd {description}"]
    others = [".Xr " + " ".join(other.rsplit(".", 1)) for other in see_also]
    tail = [".Sh SEE ALSO", " ,\n".join(others)]
    pathlib.Path(page).write_text("\n".join(head + content + tail) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()

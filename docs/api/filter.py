#!/usr/bin/env python3
"""filter.py HEADER: the header as Doxygen wants it, so that headers need no marks for it. It reads comments as people do:

- the first comment of a file is about the file;
- a comment directly above declarations is about all of them up to an empty line, a closing brace or another comment,
  except those that have one of their own behind them;
- a comment behind a declaration is about that;
- a comment with an empty line below it, or with dashes, is about nothing in particular.

Paragraphs that are indented are shown as they stand.
"""

import pathlib
import re
import sys


def comment_at(lines, start):
    """Index of the line in which the comment ends."""
    end = start
    while "*/" not in lines[end]:
        end += 1
    return end


def text_of(lines):
    """The comment's text; what is indented by four becomes verbatim."""
    text = "\n".join(lines).strip()
    text = re.sub(r"^/\*\s?|\s*\*/$", "", text)
    plain = [re.sub(r"^\s*\* ?", "", line) for line in text.split("\n")]
    result, inside = [], False
    for line in plain:
        indented = line.startswith("    ")
        if indented and not inside:
            result.append("@code{.c}")
        if inside and line and not indented:
            result.append("@endcode")
        inside = indented or (inside and not line)
        result.append(line if inside else re.sub(r"([<>&@\\#])", r"\\\1", line))
    return "\n".join(result + (["@endcode"] if inside else []))


def is_declaration(line):
    """The first line of something that may have a comment."""
    return bool(line.strip()) and not re.match(r"\s*(#(?!define)|[{}]|/\*|extern \"C\")", line)


def last_line_of(lines, start):
    """Index of the line in which a declaration ends, or its members begin."""
    end = start
    if lines[start].startswith("#define"):
        while lines[end].endswith("\\"):
            end += 1
    else:
        while not lines[end].rstrip().endswith((";", "{")):
            end += 1
    return end


def filtered(lines):
    result, about, at, first = [], None, 0, True
    while at < len(lines):
        line = lines[at]
        if line.lstrip().startswith("/*"):
            end = comment_at(lines, at)
            text = text_of(lines[at:end + 1])
            followed = end + 1 < len(lines) and lines[end + 1].strip() != ""
            if first:
                result.append(f"/** @file\n{text}\n*/")
            about = text if followed and not first and not text.startswith("----") else None
            first, at = False, end + 1
            continue
        behind = re.search(r"^(.*\S)\s*/\*(?!\*) *(.*)$", line)
        if behind:
            end = comment_at(lines, at)
            text = text_of(["/* " + behind[2], *lines[at + 1:end + 1]])
            result.append(f"{behind[1]} /**< {text} */")
            at = end + 1
            if "{" in behind[1]:
                about = None
            continue
        if not line.strip() or re.match(r"\s*}", line):
            about = None
        elif about is not None and is_declaration(line):
            result.append(f"/** {about} */")
            end = last_line_of(lines, at)
            result += lines[at:end + 1]
            if "{" in lines[end]:
                about = None
            at = end + 1
            continue
        elif re.search(r"Reserved\d*(\[\w+\])?;$", line):
            line = line.replace(";", "; /**< Reserved. */", 1)
        result.append(line)
        at += 1
    return result


if __name__ == "__main__":
    print("\n".join(filtered(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8").split("\n"))))

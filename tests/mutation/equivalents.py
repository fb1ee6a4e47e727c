"""Mutants that make no difference anybody could see: equivalent.txt, one paragraph each.

    src/.../file.cpp: Function
    the line of the source
    what is changed                     several changes are parted by "; ", * stands for any change of the line
    = why it makes no difference

Line numbers are left out on purpose: the list stays true while other lines come and go."""
from typing import NamedTuple


class Key(NamedTuple):
    path: str
    function: str
    line: str
    change: str


def read(path):
    keys = set()
    for paragraph in path.read_text().split("\n\n"):
        lines = [line for line in paragraph.splitlines() if line and not line.startswith("#")]
        if not lines:
            continue
        if len(lines) < 4 or not lines[3].startswith("= "):
            raise SystemExit(f"{path}: a paragraph without its four parts:\n{paragraph}")
        file, function = lines[0].split(": ", 1)
        keys.update(Key(file, function, lines[1], change) for change in lines[2].split("; "))
    return keys


def covers(keys, key):
    return key in keys or key._replace(change="*") in keys


def written(key):
    return f"{key.path}: {key.function}\n{key.line}\n{key.change}\n= "

"""Where a source file can be changed so that its tests should notice, and how.

Changes: comparisons flipped or moved by one, logic and arithmetic turned round, numbers off by one, checks dropped (a
condition that is always or never true), constants swapped for others of the file, calls dropped."""
import re
from dataclasses import dataclass

OPPOSITES = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
             "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "<<": (">>",),
             ">>": ("<<",), "&": ("|",), "|": ("&",), "+=": ("-=",), "-=": ("+=",), "|=": ("&=",), "&=": ("|=",)}
KINDS = ("comparison", "logic", "arithmetic", "number", "check", "constant", "call")
NOT_CALLS = {"if", "for", "while", "switch", "return", "sizeof", "static_assert", "asm", "template", "decltype", "do"}


@dataclass(frozen=True)
class Mutant:
    kind: str
    path: str  # below the root
    start: int  # of the replaced text
    end: int
    text: str  # what stands there instead

    def apply(self, source):
        return source[:self.start] + self.text + source[self.end:]

    def line(self, source):
        return source.count("\n", 0, self.start) + 1

    def source_line(self, source):
        begin = source.rfind("\n", 0, self.start) + 1
        return source[begin:source.find("\n", self.start)].strip()

    def change(self, source):
        """As people read it; the how manyth of the line when it is not the first."""
        begin = source.rfind("\n", 0, self.start) + 1
        old = re.sub(r"\s+", " ", source[self.start:self.end])
        before = len(re.findall(r"(?<!\w)" + re.escape(old) + r"(?!\w)", source[begin:self.start]))
        place = f" ({before + 1}.)" if before else ""
        return f"{old}{place} -> {self.text or 'nothing'}"


def blanked(source):
    """The source with comments, texts, first lines of directives and static assertions blanked, every other character in its place."""
    blank = lambda match: re.sub(r"[^\n]", " ", match[0])
    source = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', blank, source, flags=re.S)
    source = re.sub(r"^#[^\n]*", blank, source, flags=re.M)
    source = re.sub(r"^ *(template )?<[^;{}()]*>\n", blank, source, flags=re.M)
    return re.sub(r"\bstatic_assert\([^;]*;", blank, source)


def closing(text, opening):
    depth = 0
    for at in range(opening, len(text)):
        depth += {"(": 1, ")": -1}.get(text[at], 0)
        if depth == 0:
            return at
    return None


def find(path, source):
    """All mutants of a file."""
    text, found = blanked(source), []

    def add(kind, start, end, new):
        found.append(Mutant(kind, path, start, end, new))

    for match in re.finditer(r"(?<= )(?:[<>]=?|[=!]=|&&|\|\||[-+*/&|]=?|<<|>>)(?=[ \n])", text):
        kind = {"&&": "logic", "||": "logic"}.get(match[0], "comparison" if match[0][0] in "<>=!" else "arithmetic")
        for new in OPPOSITES.get(match[0], ()):
            add("arithmetic" if match[0] in ("<<", ">>") else kind, *match.span(), new)
    for match in re.finditer(r"(?<![\w)])!(?=[\w(])", text):
        add("logic", *match.span(), "")
    for match in re.finditer(r"\+\+|--", text):
        add("arithmetic", *match.span(), "--" if match[0] == "++" else "++")
    for match in re.finditer(r"(?<![\w.])(0x[0-9A-Fa-f]+|\d+)([uUlL]*)(?![\w.])", text):
        value = int(match[1], 0)
        for new in {value + 1, max(value - 1, 0)} - {value}:
            add("number", *match.span(), (f"0x{new:X}" if match[1].startswith("0x") else str(new)) + match[2])
    for match in re.finditer(r"\bif \(", text):
        end = closing(text, match.end() - 1)
        if end and not re.search(r"[^=!<>]=[^=]|;", text[match.end():end]):
            for new in ("true", "false"):
                add("check", match.end(), end, new)
    constants = sorted(set(re.findall(r"(?<![\w.>#])[A-Z][A-Z0-9]*_[A-Z0-9_]+\b(?![(\w])", text)))
    constants = [name for name in constants if not re.search(r"_[SEH]$", name)]
    for match in re.finditer(r"(?<![\w.>#])[A-Z][A-Z0-9]*_[A-Z0-9_]+\b(?![(\w])", text):
        if match[0] in constants:
            for new in constants:
                if new != match[0]:
                    add("constant", *match.span(), new)
    for match in re.finditer(r"\b(true|false)\b", text):
        add("constant", *match.span(), "false" if match[0] == "true" else "true")
    for match in re.finditer(r"(?<=[;{})\n])(\s+)((?:\(void\))?([A-Za-z_][\w:]*(?:(?:\.|->)\w+)?) ?\()", text):
        end = closing(text, match.end() - 1)
        before = text[:match.start(2)].rstrip()
        if match[3] in NOT_CALLS or not end or text[end + 1] != ";" or not re.search(r"([;{})]|\belse)$", before):
            continue
        add("call", match.start(2), end + 1, "")
    return found

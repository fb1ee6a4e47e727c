#!/usr/bin/env python3
"""docs/records.md: layouts of the public structures, headers and objects are those that compiler and library have.

    records_test.py COMPILER BUILD_DIR
    records_test.py --write COMPILER BUILD_DIR    writes the tables anew; meanings that no header has are kept

Sizes and offsets come from a program that is compiled from the headers; which structures there are also from their
debug information, so that none is forgotten. Positions in the channel's headers come from headers that the built
library writes.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from pages import ROOT

sys.path.append(str(ROOT / "tests/abi"))
import layouts  # noqa: E402

PAGE = ROOT / "docs" / "records.md"
WRITES = "--write" in sys.argv and not sys.argv.remove("--write")
COMPILER = sys.argv.pop(1)
BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
INCLUDES = [*sorted(ROOT.glob("src/*/include")), ROOT / "host/include", ROOT / "apps/uveld/include"]
HEADERS = sorted((path for include in INCLUDES for path in include.glob("*/*.h")),
                 key=lambda path: (path.parent.name, path.name))
MARK = "<!-- What follows is checked against headers and library; tests/docs/records_test.py --write makes it. -->\n"


def one_line(comment):
    return " ".join(re.sub(r"^\s*\* ?", "", comment or "", flags=re.M).split())


# ---- what the headers say ----

def fields(body):
    """(type, name, meaning) of the members of a structure."""
    pattern = r"\s*(?:/\*(?P<above>(?:(?!\*/).)*)\*/\s*)?(?P<declaration>[^;/]+);[ \t]*(?:/\*(?P<behind>(?:(?!\*/).)*)\*/)?"
    for found in re.finditer(pattern, body, re.S):
        declaration = " ".join(found["declaration"].split())
        function = re.fullmatch(r"(.*)\(\*(\w+)\)(\(.*\))", declaration)
        if function:
            kind, name = f"{function[1]}(*){function[3]}", function[2]
        else:
            kind, stars, name, dimension = re.fullmatch(r"(.*?) (\**)(\w+)(\[.*\])?", declaration).groups()
            kind = kind + (" " + stars if stars else "") + (dimension or "")
        yield kind, name, one_line(found["behind"] or found["above"])


def structures():
    """(header, name, what it is, fields) of every structure, in the order of the headers."""
    comment = r"(?:/\*(?P<what>(?:(?!\*/).)*)\*/\n)?"
    for header in HEADERS:
        text = header.read_text()
        for found in re.finditer(comment + r"(?:typedef )?struct ?(?P<tag>\w*) \{\n(?P<body>.*?)^\}(?P<name> \w+)?;", text,
                                 re.M | re.S):
            name = (found["name"] or f" {found['tag']}_S").strip()
            what = one_line(found["what"])
            yield f"{header.parent.name}/{header.name}", name, "" if what.startswith("----") else what, \
                list(fields(found["body"]))


def objects():
    """(header, type, name, dimension, meaning) of every exported object."""
    for header in HEADERS:
        for above, kind, name, dimension, behind in re.findall(
                r"(?:^/\*((?:(?!\*/).)*)\*/\n)?^UVEL(?:HOST)?_DATA ([^;\n]*?)(\w+)(\[[^;\n]*\])?;(?: */\*([^\n]*?)\*/)?",
                header.read_text(), re.M | re.S):
            yield f"{header.parent.name}/{header.name}", kind.strip(), name, dimension, one_line(behind or above)


def events():
    """Rows of the table of events in the head of kivo_event_records.h."""
    text = (ROOT / "src/common_adp/include/uvelcommon_base/kivo_event_records.h").read_text()
    head = text[text.index(" *     id "):]
    titles, *lines = head[:head.index(" *\n")].splitlines()
    starts = [titles.index(title) for title in ("id ", "sub-event", "way", "record", "comes from")]
    for line in lines:
        yield [line[start:end].strip() for start, end in zip(starts, [*starts[1:], None])]


# ---- what the compiler and the library say ----

def run(*command):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, text=True, check=True).stdout


def output_of(lines, *link):
    """Runs a C program that includes every public header."""
    text = "".join(f"#include <{header.parent.name}/{header.name}>\n" for header in HEADERS)
    text += "#include <stdio.h>\n#include <string.h>\n" + "\n".join(lines) + "\n"
    with tempfile.TemporaryDirectory() as folder:
        source, program = pathlib.Path(folder, "layout.c"), pathlib.Path(folder, "layout")
        source.write_text(text)
        subprocess.run([COMPILER, "-std=c11", "-w", *(f"-I{include}" for include in INCLUDES), source, *link,
                        "-o", program], check=True)
        return run(program).split("\n")[:-1]


def measured():
    """{(structure, field or None): (offset, size)}"""
    lines = ["int main(void) {"]
    for _, name, _, members in structures():
        lines.append(f'printf("{name} - 0 %zu\\n", sizeof({name}));')
        lines += [f'printf("{name} {field} %zu %zu\\n", offsetof({name}, {field}), sizeof((({name} *)0)->{field}));'
                  for _, field, _ in members]
    rows = [line.split() for line in output_of([*lines, "return 0; }"])]
    return {(name, None if field == "-" else field): (int(at), int(size)) for name, field, at, size in rows}


CHANNEL_PROGRAM = r"""
static void Hook(uint32_t ulId, void *pFunction) {
    KIVO_HOOK pfHook = (KIVO_HOOK)pFunction;
    KIVOShell_SetHookFunc(ulId, &pfHook);
}

/* Where the header differs after one field of the record has become all ones, and over how many bytes. */
static void Find(uint32_t ulBack, const char *pszField, size_t at, size_t size) {
    uint32_t ulHead = CHI_GetMsgHeadLen(ulBack), i, ulFirst = 0, ulCount = 0;
    void *pPlain, *pSet;
    CHI_MSG_INFO_S stInfo = {.ulMsgType = 1};
    CBUF_Alloc(ulBack, &pPlain, 4);
    CBUF_Alloc(ulBack, &pSet, 4);
    CHI_SetMsgInfo(ulBack, pPlain, &stInfo);
    stInfo = (CHI_MSG_INFO_S){.ulMsgType = 1};
    if (at == offsetof(CHI_MSG_INFO_S, ulMsgType))
        stInfo.ulMsgType = 2;
    else
        memset((char *)&stInfo + at, 0xFF, size);
    CHI_SetMsgInfo(ulBack, pSet, &stInfo);
    const uint8_t *pucA = (uint8_t *)CBUF_C2D(ulBack, pPlain) - ulHead, *pucB = (uint8_t *)CBUF_C2D(ulBack, pSet) - ulHead;
    for (i = 0; i < ulHead; ++i) {
        if (pucA[i] != pucB[i]) {
            ulFirst = ulCount++ == 0 ? i : ulFirst;
        }
    }
    printf("head %u %s %u %u\n", ulBack, pszField, ulFirst, ulCount);
    CBUF_Free(ulBack, pPlain);
    CBUF_Free(ulBack, pSet);
}

int main(void) {
    CHI_Init();
    Hook(KIVO_HOOK_YSB_SMBUF_CREATE, YSB_Adapt_Smbuf_Create);
    Hook(KIVO_HOOK_YSB_SMBUF_DESTROY, YSB_Adapt_Smbuf_Destroy);
    Hook(KIVO_HOOK_YSB_SMBUF_M2D, YSB_Adapt_Smbuf_M2D);
    for (uint32_t ulBack = CHI_BACK_HA; ulBack <= CHI_BACK_YSB; ++ulBack) {
        printf("bytes %u %u\n", ulBack, CHI_GetMsgHeadLen(ulBack));
@FIELDS@
    }
    for (uint32_t ulType = 0; ulType < CHI_TYPE_COUNT; ++ulType)
        printf("types %u %u %u %u\n", ulType, CHI_MsgC2P(0, ulType), CHI_MsgC2P(1, ulType), CHI_MsgC2P(2, ulType));
    for (uint32_t ulBack = 0; ulBack < 2; ++ulBack)
        for (uint32_t ulType = 0; ulType < 0x10000; ++ulType)
            if (CHI_MsgP2C(ulBack, ulType) != CHI_NOT_CARRIED)
                printf("back %u %u %u\n", ulBack, CHI_MsgP2C(ulBack, ulType), ulType);
    return 0;
}
"""


def channel():
    """What a program says that lets the library write channel headers: lines as lists of words."""
    members = [field for _, name, _, found in structures() if name == "CHI_MSG_INFO_S" for _, field, _ in found]
    calls = "\n".join(f'        Find(ulBack, "{field}", offsetof(CHI_MSG_INFO_S, {field}), '
                      f"sizeof(((CHI_MSG_INFO_S *)0)->{field}));" for field in members)
    libraries = BUILD / "lib"
    return [line.split() for line in output_of([CHANNEL_PROGRAM.replace("@FIELDS@", calls)], f"-L{libraries}",
                                               "-luvelcommon_base", "-luvelhost", f"-Wl,-rpath,{libraries}")]


def object_sizes():
    sizes = {}
    for library in ("libuvelcommon_base.so.1", "libuvelhost.so.1"):
        for line in run("nm", "-D", "-S", "--defined-only", BUILD / "lib" / library).splitlines():
            words = line.split()
            if len(words) == 4 and words[2] in "BDR":
                sizes[words[3].split("@")[0]] = int(words[1], 16)
    return sizes


# ---- the page ----

def table(titles, rows):
    rows = [[str(cell).replace("|", "\\|") for cell in row] for row in rows]
    return "\n".join(["| " + " | ".join(titles) + " |", "|" + "---|" * len(titles),
                      *("| " + " | ".join(row) + " |" for row in rows)]) + "\n"


def known_meanings(text):
    """{(structure, field): meaning} of the page as it is; for structures themselves the field is empty."""
    meanings = {}
    for name, what, body in re.findall(r"^### `(\w+)`, \d+ bytes\n\n(?:([^|\n].*)\n\n)?((?:\|.*\n)+)", text, re.M):
        meanings[name, ""] = what
        for field, meaning in re.findall(r"`(\w+)` \| ([^|]*?) *\|$", body, re.M):
            meanings[name, field] = meaning
    for name, meaning in re.findall(r"^\| `(g_\w+)` \|.*\| ([^|]*?) *\|$", text, re.M):
        meanings["object", name] = meaning
    return meanings


def channel_part():
    said = channel()
    length = {int(words[1]): words[2] for words in said if words[0] == "bytes"}
    yield "## Headers of the hot-standby channel\n"
    yield ("In host byte order; both devices of a pair have the same one. What lies between these fields belongs to the "
           "service.\n\nA header in front of a payload, from a `CHI_MSG_INFO_S`:\n")
    for back, service in enumerate(("HA", "HSB", "YSB")):
        found = sorted((int(at), int(size), field) for kind, number, *rest in said if kind == "head"
                       for field, at, size in [rest] if int(number) == back and int(size))
        # a type that is set in two bytes differs in one
        rows = [(at, 2 if field == "ulMsgType" else size, f"`{field}`") for at, size, field in found]
        if service == "YSB":
            rows.append((44, 4, "`ulFragment`, written by the service"))
        yield f"### Header of {service}, {length[back]} bytes\n"
        yield table(("offset", "size", "field of the record"), rows)
    yield "### Message types\n\nThe channel's own type, what is sent for it, and what is understood as it; \"-\" is not carried:\n"
    understood = {(int(back), int(kind)): [] for what, back, kind, _ in (w for w in said if w[0] == "back")}
    for what, back, kind, number in (w for w in said if w[0] == "back"):
        understood[int(back), int(kind)].append(number)
    rows = []
    for _, kind, *sent in (words for words in said if words[0] == "types"):
        shown = ["-" if number == "4294967295" else number for number in sent]
        back = [", ".join(understood.get((service, int(kind)), ["-"])) for service in (0, 1)]
        rows.append((kind, shown[0], back[0], shown[1], back[1], shown[2]))
    yield table(("type", "HA sends", "HA receives", "HSB sends", "HSB receives", "YSB"), rows)


def generated(meanings):
    sizes, data = measured(), object_sizes()
    yield "## Events\n\nWhich record an event carries. \"now\" events run on the host's thread, \"queue\" events on the event task.\n"
    yield table(("event", "sub-event", "way", "record", "comes from"), events())
    yield from channel_part()
    yield "## Exported objects\n"
    yield table(("object", "header", "type", "bytes", "meaning"),
                [(f"`{name}`", f"`{header}`", f"`{kind}{dimension}`", data[name],
                  meaning or meanings.get(("object", name), "")) for header, kind, name, dimension, meaning in objects()])
    last = None
    for header, name, what, members in structures():
        if header != last:
            yield f"## `{header}`\n"
            last = header
        yield f"### `{name}`, {sizes[name, None][1]} bytes\n"
        what = what or meanings.get((name, ""), "")
        if what:
            yield what + "\n"
        yield table(("offset", "size", "type", "field", "meaning"),
                    [(*sizes[name, field], f"`{kind}`", f"`{field}`", meaning or meanings.get((name, field), ""))
                     for kind, field, meaning in members])


def split_page():
    head, tail = PAGE.read_text().split(MARK)
    return head, tail


class Records(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = split_page()[1]

    def test_the_page_is_what_headers_compiler_and_library_say(self):
        self.maxDiff = 4000
        self.assertEqual("\n" + "\n".join(generated(known_meanings(self.page))), self.page,
                         f"tests/docs/records_test.py --write {COMPILER} {BUILD} makes the tables anew")

    def test_no_structure_and_no_field_of_the_debug_information_is_missing(self):
        found = layouts.structures(COMPILER, HEADERS)
        self.assertGreater(len(found), 80)
        named = {name: [field for _, field, _ in members] for _, name, _, members in structures()}
        # a structure that is declared by its tag has the tag as its name there
        self.assertEqual({name if name.endswith("_S") or name in named else f"{name}_S": [field for field, _ in members]
                          for name, (_, _, members) in found.items()}, named)

    def test_every_object_of_the_libraries_is_there(self):
        self.assertEqual(set(object_sizes()), {name for _, _, name, _, _ in objects()})

    def test_every_field_and_every_object_has_a_meaning(self):
        self.assertEqual([], [line for line in self.page.splitlines() if line.endswith(("|  |", "| |"))],
                         "a comment in the header or a word in the page")


if __name__ == "__main__":
    if WRITES:
        head, tail = split_page()
        PAGE.write_text(head + MARK + "\n" + "\n".join(generated(known_meanings(tail))))
    else:
        unittest.main()

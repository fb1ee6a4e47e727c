#!/usr/bin/env python3
"""layouts.py [--missing] COMPILER ROOT HEADER...: every structure of the public headers has its layout asserted.

Size and the offset of every field stand in a static_assert of a file below ROOT/src or ROOT/host, so that a change
does not compile. The structures come from the debug information of a file that includes the headers, not from reading
them. With --missing the assertions to be added are printed, header by header."""
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml


def structures(compiler, headers):
    """{name: (header, size, [(field, offset)])} of what the headers define."""
    roots = sorted({str(header.parent.parent) for header in headers})
    lines = [f"#include <{header.parent.name}/{header.name}>" for header in headers]
    with tempfile.TemporaryDirectory() as folder:
        source, library = pathlib.Path(folder, "headers.c"), pathlib.Path(folder, "headers.so")
        source.write_text("\n".join(lines + ["int nothing;"]) + "\n")
        subprocess.run([compiler, "-std=c11", "-g", "-fno-eliminate-unused-debug-types", "-shared", "-fPIC",
                        *(f"-I{root}" for root in roots), source, "-o", library], check=True)
        text = subprocess.run(["abidw", "--load-all-types", library], check=True, capture_output=True, text=True).stdout
    found = {}
    known = {str(header.resolve()): header for header in headers}
    for node in [*xml.fromstring(text).iter("class-decl"), *xml.fromstring(text).iter("union-decl")]:
        header = known.get(str(pathlib.Path(node.get("filepath", "")).resolve()))
        if not header or node.get("is-declaration-only") == "yes" or node.get("is-anonymous") == "yes":
            continue
        fields = [(member.find("var-decl").get("name"), int(member.get("layout-offset-in-bits", 0)) // 8)
                  for member in node.iter("data-member")]
        found[node.get("name")] = (header, int(node.get("size-in-bits")) // 8, fields)
    return found


def assertions(root):
    """What the static_asserts of the sources say, as a set of normalised comparisons."""
    said = set()
    for folder in ("src", "host"):
        for path in [*root.glob(f"{folder}/**/*.cpp"), *root.glob(f"{folder}/**/*.h")]:
            for condition in re.findall(r"static_assert\((.*?)\);", path.read_text(), re.S):
                said.update(re.sub(r"\s", "", part) for part in condition.split("&&"))
    return {re.sub(r',"[^"]*"$', "", part) for part in said}


def main(arguments):
    show = arguments[0] == "--missing"
    compiler, root, *headers = arguments[1:] if show else arguments
    found = structures(compiler, [pathlib.Path(header) for header in headers])
    said = assertions(pathlib.Path(root))
    missing = {}
    for name, (header, size, fields) in found.items():
        wanted = [f"sizeof({name}) == {size}", *(f"offsetof({name}, {field}) == {at}" for field, at in fields)]
        lacking = [text for text in wanted if text.replace(" ", "") not in said]
        if lacking:
            missing.setdefault(header.name, []).extend(lacking)
    for header, texts in sorted(missing.items()):
        print(f"{header}:", *(f"static_assert({text});" for text in texts), sep="\n    ")
    asserted = sum(len(fields) + 1 for _, _, fields in found.values())
    print(f"{len(found)} structures, {asserted} sizes and offsets, {sum(map(len, missing.values()))} not asserted")
    return 0 if len(found) > 50 and not missing else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/env python3
"""Every exported function that can come to allocate is called by the sweeps.

Usage: reach.py LIBRARY PROGRAM

Reads the library's machine code: a function leads to what it calls, jumps to or takes the address of. Those exported
functions from which a way leads to an allocation must be among the undefined symbols of the program.
"""

import re
import subprocess
import sys
from collections import defaultdict

# What gives memory: the host's memory, messages and hash tables, and the documents of libxml2.
SOURCES = {
    "QAL_MemAlloc", "QAL_MemAlloc_F", "QAL_MemReAlloc", "QAL_HandleInitialize",
    "IPC_AllocMsg_X", "LITE_HASH_CreateWithListCurr", "LITE_HASH_AddNode",
    "xmlReadMemory", "xmlCtxtReadMemory", "xmlNewParserCtxt", "xmlCopyNode", "xmlNodeGetContent",
}  # fmt: skip

# All that they are told of goes out at once, but a compiler that does not see through their tables of events leaves the
# road to the queue in their code.
AT_ONCE = {"KIVO_Adapt_BdEvtCB", "KIVO_Adapt_IPEvtCB"}


def output_of(*command: str) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def calls_of(library: str) -> dict[str, set[str]]:
    """For each function, the functions that its code names."""
    calls: dict[str, set[str]] = defaultdict(set)
    function = ""
    for line in output_of("objdump", "-d", "--no-show-raw-insn", library).splitlines():
        if head := re.match(r"^[0-9a-f]+ <([^>]+)>:$", line):
            function = head[1].removesuffix("@plt")
        else:
            for name in re.findall(r"<([A-Za-z_][\w.@]*)", line):
                calls[function].add(re.sub(r"@.*", "", name))
    return calls


def reaching(calls: dict[str, set[str]], targets: set[str]) -> set[str]:
    """The functions from which a way leads to one of the targets."""
    callers = defaultdict(set)
    for function, called in calls.items():
        for name in called:
            callers[name].add(function)
    found, waiting = set(targets), list(targets)
    while waiting:
        for caller in callers[waiting.pop()] - found:
            found.add(caller)
            waiting.append(caller)
    return found


def symbols_of(binary: str, *options: str) -> set[str]:
    return {line.split()[-1].split("@")[0] for line in output_of("nm", "-D", *options, binary).splitlines()}


def main() -> int:
    library, program = sys.argv[1:3]
    reached = reaching(calls_of(library), SOURCES)
    exported = symbols_of(library, "--defined-only")
    wanted = sorted((exported & reached) - AT_ONCE)
    missing = [name for name in wanted if name not in symbols_of(program, "--undefined-only")]
    for name in missing:
        print(f"{name} can allocate, and no scenario calls it")
    print(f"{len(wanted)} of {len(exported)} exported names can allocate, {len(wanted) - len(missing)} are swept")
    return 1 if missing or len(wanted) < 50 else 0


if __name__ == "__main__":
    sys.exit(main())

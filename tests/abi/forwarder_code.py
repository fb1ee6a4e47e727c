#!/usr/bin/env python3
"""forwarder_code.py LIBRARY HOOK_TABLE: every plain forwarder is a load, a test, a branch and a jump.

At most six instructions with the empty-slot answer, the slot loaded straight from the table (no global offset table),
no stack frame. Forwarders that cut an argument in a register may have one more instruction for each. The same is asked
of those with rules of their own that every packet or message passes; these may look at an argument besides, or choose
what they jump to without a branch."""
import re
import subprocess
import sys

library, table = sys.argv[1:3]
text = open(table).read()
plain = re.findall(r"X\([ \d]+,[ \d]+, (\w+),\s+PLAIN,\s+[\w *]+,\s+\w+,\s+(\w+),", text)
trace = [(name, "WORDS") for name in re.findall(r"X\([ \d]+, (BTRC_\w+),", text)]
assert len(plain) == 78 and len(trace) == 20, (len(plain), len(trace))

cuts = {"VLAN": 1, "VLAN_BITMAP": 1, "VLAN_IFINDEX": 1, "WORDS_2ND_U16": 1, "WORDS_1ST_2ND_U16": 2, "WORDS_3RD_U8": 1,
        "OUTPUT_CHANNEL": 1, "WORDS_2ND_U32": 1}

# forwarders with rules of their own, and how many more instructions these take
looks = {"KIVO_YSB_Smbuf_Destroy": 2, "KIVO_YSB_IsActiveStatus": 3, "KIVO_IF_QosL2BNGTransmit": 0}
assert all(re.search(rf" {name},\s+OWN,", text) for name in looks)

functions = {}
name = None
for line in subprocess.run(["objdump", "-d", "--no-show-raw-insn", library], capture_output=True, text=True,
                           check=True).stdout.splitlines():
    if match := re.match(r"[0-9a-f]+ <([^>]+)>:$", line):
        name = match[1].split("@")[0]
        functions[name] = []
    elif name and (match := re.match(r"\s+[0-9a-f]+:\s+(.*?)\s*(#.*)?$", line)):
        functions[name].append((match[1], match[2] or ""))

bad = 0
watched = plain + trace + [(name, "") for name in looks]
for name, arguments in watched:
    if arguments == "WORDS_7TH_U16":  # cuts an argument that lies in memory, which not every compiler does in place
        continue
    code = [(insn, note) for insn, note in functions[name] if not re.match(r"(data16|cs |nop|xchg\s+%ax,%ax)", insn)]
    faults = []
    if len(code) > 6 + cuts.get(arguments, 0) + looks.get(name, 0):
        faults.append(f"{len(code)} instructions")
    if not re.match(r"mov\s+0x[0-9a-f]+\(%rip\),%r\w+$", code[0][0]) or not re.search(r"g_st(KIVO|Btrc)Pub", code[0][1]):
        faults.append("it does not begin with loading the slot")
    first = " ".join(insn.split()[0] for insn, _ in code[1:4])
    if not re.match(r"test j|test lea cmov|lea test cmov", first):
        faults.append("no test and branch")
    if not any(re.match(r"jmp\s+\*%r", insn) for insn, _ in code):
        faults.append("no jump to the hook")
    if any(re.match(r"(push|pop|call|sub\s.*%rsp|enter|leave)", insn) for insn, _ in code):
        faults.append("a stack frame")
    if faults:
        bad += 1
        print(f"{name}: {', '.join(faults)}")
        for insn, note in code:
            print("    ", insn, note)
print(f"{len(watched)} forwarders, {bad} bad")
sys.exit(1 if bad else 0)

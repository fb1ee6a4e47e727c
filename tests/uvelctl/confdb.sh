#!/usr/bin/env bash
# confdb.sh UVELCTL: the commands of `uvelctl confdb`, on a file of their own.
set -euo pipefail
uvelctl=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export UVELHOST_CONFDB=sqlite:$work/run/db
status=0

# expect DESCRIPTION CODE OUTPUT COMMAND...: the exit code and standard output, to the byte.
expect() {
    local description=$1 code=$2 output=$3 got=0
    shift 3
    "$uvelctl" "$@" >"$work/out" 2>"$work/err" || got=$?
    if [ "$got" -ne "$code" ] || [ "$(cat "$work/out")" != "$output" ]; then
        printf '%s: %s\n  code %s instead of %s, output:\n' "$description" "$*" "$got" "$code"
        cat "$work/out" "$work/err"
        status=1
    fi
}
# complains TEXT: the last command said so.
complains() {
    grep -qF -- "$1" "$work/err" || { echo "'$1' is expected in:"; cat "$work/err"; status=1; }
}

expect "a text is written" 0 "revision 1" confdb put system_info sys_name edge-1
expect "hexadecimal is written" 0 "revision 2" confdb put devm_global system_mac --hex 02:1A:2b:3c:4d:5e
expect "a number is written" 0 "revision 3" confdb put devm_global system_mac_number --u32 16
printf 'a\nb\0c' >"$work/bytes"
expect "a file is written" 0 "revision 4" confdb put files bytes --file "$work/bytes"

expect "a text is read" 0 "edge-1" confdb get system_info sys_name
expect "bytes are read as hexadecimal" 0 "hex:021a2b3c4d5e" confdb get devm_global system_mac
expect "a number has the order of the machine" 0 "hex:10000000" confdb get devm_global system_mac_number
expect "a value for machines" 0 '{"key":"sys_name","table":"system_info","value":"edge-1"}' \
    --json confdb get system_info sys_name
expect "bytes for machines" 0 '{"hex":"021a2b3c4d5e","key":"system_mac","table":"devm_global"}' \
    confdb get devm_global system_mac --json
"$uvelctl" confdb get files bytes --raw | cmp - "$work/bytes" || { echo "raw bytes differ"; status=1; }

expect "a table is listed" 0 "Table        Key                Revision  Value
devm_global  system_mac                2  hex:021a2b3c4d5e
devm_global  system_mac_number         3  hex:10000000" confdb get devm_global
expect "an empty table" 0 "Table  Key  Revision  Value" confdb get none
expect "everything for machines" 0 '[
{"table":"devm_global","key":"system_mac","revision":2,"value":"hex:021a2b3c4d5e"},
{"table":"devm_global","key":"system_mac_number","revision":3,"value":"hex:10000000"},
{"table":"files","key":"bytes","revision":4,"value":"hex:610a620063"},
{"table":"system_info","key":"sys_name","revision":1,"value":"edge-1"}
]' --json confdb get

expect "a watch tells what is there" 0 "present system_info/sys_name = edge-1" confdb watch system_info --count 1
expect "a watch ends after its time" 0 '{"change":"present","key":"sys_name","revision":1,"table":"system_info","value":"edge-1"}' \
    --json confdb watch system_info --time 0.3
timeout 20 "$uvelctl" confdb watch system_info --count 3 >"$work/watched" &
until [ -s "$work/watched" ]; do sleep 0.01; done
expect "a change" 0 "revision 5" confdb put system_info sys_name hex:not
expect "a deletion" 0 '{"revision":6}' --json confdb del system_info sys_name
wait $!
printf 'present system_info/sys_name = edge-1\nchanged system_info/sys_name = hex:6865783a6e6f74\ndeleted system_info/sys_name\n' |
    cmp - "$work/watched" || { cat "$work/watched"; status=1; }

expect "a key that is not there" 1 "" confdb get system_info sys_name
complains "no such key"
expect "deleting it" 1 "" confdb del system_info sys_name
expect "half a byte" 1 "" confdb put t k --hex 123
complains "hexadecimal"
expect "a number that is too large" 1 "" confdb put t k --u32 4294967296
complains "4294967295"
expect "a file that is missing" 1 "" confdb put t k --file "$work/none"
complains "none"
expect "a name with a slash" 1 "" confdb put a/b k v
complains "without '/'"
expect "an endpoint that is none" 1 "" confdb -e ftp://x get
complains "sqlite:PATH"
printf 'no database, but more than a few bytes of text' >"$work/text"
expect "a file that is no database" 1 "" confdb -e "sqlite:$work/text" get
complains "not a database"
if "$uvelctl" confdb watch >/dev/full 2>"$work/err"; then echo "a full disk is no failure"; status=1; fi
complains "cannot be written"
for wrong in "confdb" "confdb put t k" "confdb put t k v --hex --u32" "confdb watch --time x" "confdb fetch"; do
    # shellcheck disable=SC2086
    if "$uvelctl" $wrong >"$work/out" 2>&1; then echo "accepted: $wrong"; status=1; fi
done
exit $status

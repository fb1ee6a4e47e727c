#!/usr/bin/env bash
# capset.sh UVELCTL: `uvelctl capset list`, on files of its own.
set -euo pipefail
uvelctl=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

expect() {
    [ "$2" = "$3" ] || { printf '%s:\n%s\ninstead of:\n%s\n' "$1" "$3" "$2"; status=1; }
}

printf 'items:\n  SRV_SPEC_MAX_USER: 4294967295\n  EAPOL_FEATUREID_WLAN: 0x1\n' >"$work/good.yaml"
printf 'items: {}\n' >"$work/empty.yaml"
printf 'items:\n  WLAN: yes\n' >"$work/wrong.yaml"

table='Item                       Value
EAPOL_FEATUREID_WLAN           1
SRV_SPEC_MAX_USER     4294967295'
expect "the named file" "$table" "$("$uvelctl" capset list "$work/good.yaml")"
expect "the device's file" "$table" "$(UVELHOST_CAPSET_FILE=$work/good.yaml "$uvelctl" capset list)"
expect "for machines" '[
{"item":"EAPOL_FEATUREID_WLAN","value":1},
{"item":"SRV_SPEC_MAX_USER","value":4294967295}
]' \
    "$("$uvelctl" --json capset list "$work/good.yaml")"
expect "no items" 'Item  Value' "$("$uvelctl" capset list "$work/empty.yaml")"

code=0
told=$("$uvelctl" capset list "$work/wrong.yaml" 2>&1) || code=$?
expect "the exit code for a wrong file" 1 "$code"
expect "a wrong file" "uvelhost: capability set $work/wrong.yaml:2:9: expected a number from 0 to 4294967295, found \"yes\"
uvelctl: the capability set cannot be read" "$told"
exit $status

#!/usr/bin/env bash
# exports.sh LIBRARY EXPORT_LIST HEADER_DIR...
# The library exports exactly the listed names, as C symbols; the headers declare exactly these; no C++ runtime is needed.
set -euo pipefail
export LC_ALL=C
library=$1 list=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sort -c "$list" || { echo "$list is not sorted"; exit 1; }
cp "$list" "$work/listed"
nm -D --defined-only --format=posix "$library" | awk '$2 != "A" { sub(/@.*/, "", $1); print $1 }' | sort >"$work/built"
find "$@" -name '*.h' -print0 | xargs -0 cat |
    sed -nE '/^UVEL_(API|DATA) /{s/^UVEL_DATA .*[ *](g_[A-Za-z0-9_]+)(\[[^]]*\])?;.*/\1/;s/^UVEL_API [^(]*[ *]([A-Za-z0-9_]+)\(.*/\1/;p}' |
    sort >"$work/declared"

status=0
diff -u "$work/listed" "$work/built" >"$work/diff" || { echo "listed (-) and built (+) differ:"; cat "$work/diff"; status=1; }
diff -u "$work/listed" "$work/declared" >"$work/diff" || { echo "listed (-) and declared (+) differ:"; cat "$work/diff"; status=1; }
if grep -q '^_Z' "$work/built"; then echo "C++ symbols are exported"; status=1; fi
if readelf -d "$library" | grep -E 'NEEDED.*(stdc\+\+|libc\+\+)'; then echo "the C++ runtime is needed"; status=1; fi
if nm -D --undefined-only "$library" | grep -E ' (_Z|__cxa_(throw|begin|guard)|__gxx)'; then echo "C++ runtime symbols are used"; status=1; fi
echo "$(wc -l <"$work/built") exported names"
exit $status

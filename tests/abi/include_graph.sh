#!/usr/bin/env bash
# include_graph.sh SOURCE_DIR: the library includes of the host only its interface, the host nothing of the library.
set -euo pipefail
cd "$1"
status=0
own=$(find src host -name '*.h' | wc -l)
[ "$own" -gt 10 ] || { echo "no headers found below $1"; exit 1; }

# Every quoted include of src/ must lead to a file of src/, every angle include of a host header to the interface.
if grep -rnE '#include *[<"](\.\./)*(host/|os/|model/|ipc/|standby/|confdb/|netlink/|scenario/|crypto/|capset/)' src; then
    echo "src/ includes a private header of the host"; status=1
fi
if grep -rnE '#include *[<"](uvelcommon_base/|(\.\./)*src/|kivo_|securec)' host; then
    echo "host/ includes a header of the library"; status=1
fi
while read -r header; do
    [ -e "host/include/$header" ] || { echo "src/ includes <$header>, which is not part of the interface"; status=1; }
done < <(grep -rhoE '#include *[<"]uvelhost/[^>"]*' src | sed -E 's/.*[<"]//' | sort -u)
exit $status

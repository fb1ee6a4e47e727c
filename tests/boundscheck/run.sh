#!/usr/bin/env bash
# run.sh SOURCE_DIR: the bounds-checked functions come from an installed libboundscheck, from the bundled module, or
# from nowhere, as UVEL_BOUNDSCHECK says. A library of that name is made of the bundled module for this, and another one
# whose header tells that it is something else.
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work"/{real,foreign}/{include,lib}
grep -v SECUREC_BUNDLED "$source/src/boundscheck/include/securec.h" >"$work/real/include/securec.h"
g++ -std=c++20 -O1 -shared -fPIC -I"$work/real/include" "$source"/src/boundscheck/*.cpp -o "$work/real/lib/libboundscheck.so"
printf 'typedef int errno_t;\n#define EOK 0\n' >"$work/foreign/include/securec.h"
printf 'int memcpy_s(void) { return 0; }\n' | gcc -x c - -shared -fPIC -o "$work/foreign/lib/libboundscheck.so"

# choose PREFIX SETTING: configures the program on what is installed below PREFIX.
choose() {
    rm -rf "$work/build"
    cmake -S "$source/tests/boundscheck" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DUVEL_BOUNDSCHECK="$2" \
        -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF >"$work/log" 2>&1
}

# expect PREFIX SETTING installed|bundled: the program runs, and needs the library or not.
expect() {
    choose "$1" "$2" || { cat "$work/log"; exit 1; }
    cmake --build "$work/build" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
    "$work/build/choice" || { echo "$1 $2: wrong results"; exit 1; }
    local found=bundled
    readelf -d "$work/build/choice" | grep -q 'NEEDED.*libboundscheck' && found=installed
    [ "$found" = "$3" ] || { echo "$1 $2: $found in place of $3"; exit 1; }
}

expect "$work/real" auto installed
expect "$work/real" installed installed
expect "$work/real" bundled bundled
expect "$work/foreign" auto bundled
expect "$work/nothing" auto bundled
for prefix in foreign nothing; do
    ! choose "$work/$prefix" installed || { echo "$prefix was taken for libboundscheck"; exit 1; }
    grep -q 'no libboundscheck was found' "$work/log" || { cat "$work/log"; exit 1; }
done
echo "the choice is as configured"

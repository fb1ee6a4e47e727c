#!/usr/bin/env bash
# run.sh BUILD_DIR SOURCE_DIR: installs a copy, then uses it as a foreign project does: find_package and pkg-config,
# from C and from C++, with every compiler that is here, and each public object through the one that the library reads.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/usr" >"$work/install.log"
cmake -S "$source" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/usr" -DCMAKE_BUILD_TYPE=Release >"$work/cmake.log" ||
    { cat "$work/cmake.log"; exit 1; }
cmake --build "$work/cmake" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
"$work/cmake/from_c"
"$work/cmake/from_cxx"

PKG_CONFIG_PATH=$(dirname "$(find "$work/usr" -name uvelcommon_base.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs uvelcommon_base)"
lib=$(pkg-config --variable=libdir uvelcommon_base)
for compiler in "gcc -std=c11" "gcc -std=c11 -no-pie -fno-pic" "clang -std=c11 -fPIE -pie"; do
    $compiler -Wall -Wextra -Werror "$source/from_c.c" -o "$work/from_c" "${flags[@]}" -Wl,-rpath,"$lib"
    "$work/from_c"
done
for compiler in "g++ -std=c++20" "g++ -std=c++20 -no-pie -fno-pic" "clang++ -std=c++20 -fPIE -pie"; do
    $compiler -Wall -Wextra -Werror "$source/from_cxx.cpp" -o "$work/from_cxx" "${flags[@]}" -Wl,-rpath,"$lib"
    "$work/from_cxx"
done

# A module, by the command of docs/modules.md.
g++ -std=c++20 -shared -fPIC "$source/../../examples/tutorial/step5.cpp" -o "$work/flaps.so" "${flags[@]}"

# A compiler that copies objects into the executable must be refused by the linker, not split the table in two.
if clang -fno-pic -no-pie "$source/from_c.c" -o "$work/copy" "${flags[@]}" -Wl,-rpath,"$lib" 2>"$work/copy.log"; then
    "$work/copy" || { echo "an executable with a copy of a table was linked"; exit 1; }
else
    grep -q 'copy relocation' "$work/copy.log" || { cat "$work/copy.log"; exit 1; }
fi
[ "$(readelf -d "$lib/libuvelcommon_base.so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')" = libuvelcommon_base.so.1 ]
[ "$(readelf -d "$lib/libuvelhost.so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')" = libuvelhost.so.1 ]
echo "package works"

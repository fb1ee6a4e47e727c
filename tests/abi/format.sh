#!/usr/bin/env bash
# format.sh SOURCE_DIR: every C and C++ file is formatted as .clang-format says.
set -euo pipefail
cd "$1"
files=$(find src host apps examples tests bench \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \))
[ -n "$files" ] || { echo "no sources found"; exit 1; }
clang-format-14 --dry-run --Werror $files
echo "$(wc -w <<<"$files") files"

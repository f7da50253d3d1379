#!/usr/bin/env bash
# tidy.sh: clang-tidy over all sources but the tests, the folders without a C interface joined into
# one source each, so that their large headers are read once; lines are then those of the file in
# build/tidy. Of an include that the sources before have had, too, a blank line is left.
set -euo pipefail
cd "$(dirname "$0")/.."

join() { # NAME SOURCE...
    awk '/^#include/ { if (seen[$0] && seen[$0] != FILENAME) $0 = ""; else seen[$0] = FILENAME } { print }' \
        "${@:2}" >"build/tidy/$1.cpp"
}
mkdir -p build/tidy
join tools tools/*.cpp
join host host/*.cpp files/*.cpp
join bench bench/{inputs,names_bench,report,rows}.cpp
printf '%s\0' build/tidy/{tools,bench,host}.cpp bench/lock_bench.cpp names/*.cpp names/storage/*.cpp |
    xargs -0 -I{} --max-procs="$(nproc)" clang-tidy --quiet {} -- -std=c++20 -I. -Wall -Wextra -DNAMES_VERSION='"0"' 2>&1 |
    sed '/ warnings\? generated\.$/d'

#!/usr/bin/env bash
# tidy.sh: clang-tidy over all C++ sources. The sources of a folder are joined into one, so that
# headers are read once; lines are those of the joined file in build/tidy. Of an include that a
# source before has had, too, a blank line is left.
set -euo pipefail
cd "$(dirname "$0")/.."

join() { # NAME SOURCE...
    awk '/^#include/ { if (seen[$0] && seen[$0] != FILENAME) $0 = ""; else seen[$0] = FILENAME }
         { print }' "${@:2}" >"build/tidy/$1.cpp"
}
mkdir -p build/tidy/tests
cp tests/.clang-tidy build/tidy/tests
# Where the analyser follows calls into these it assumes records that cannot be: alone it does not.
# The tests that are alone declare again what others have.
alone=(names/{audit,own_names,self_check}.cpp names/storage/{longest,reading}.cpp
       bench/{lock_bench,names_bench,path_counts}.cpp
       tests/{lock_stress,counted_host/counted_memory,fuzz/load_fuzz}.cpp)
mapfile -t names < <(printf '%s\n' names/*.cpp names/storage/*.cpp |
                     grep -vxF "$(printf '%s\n' "${alone[@]}")")
join names "${names[@]}"
join tools tools/*.cpp
mapfile -t bench < <(ls bench/*.cpp | grep -vxF "$(printf '%s\n' "${alone[@]}")")
join bench "${bench[@]}"
join host host/*.cpp files/*.cpp
mapfile -t tests < <(ls tests/*_test.cpp tests/fuzz/operations_fuzz.cpp)
join tests/tests "${tests[@]}"
printf '%s\0' build/tidy/{tests/tests,tools,bench,names,host}.cpp "${alone[@]}" |
    xargs -0 -I{} --max-procs="$(nproc)" clang-tidy --quiet {} -- -std=c++20 -I. -Wall -Wextra \
        -Wpedantic -Wconversion -Wshadow -DNAMES_VERSION='"0"' -DNAMES_TEST_IMAGES='""' 2>&1 |
    sed '/ warnings\? generated\.$/d'

#!/usr/bin/env bash
# count_paths.sh [--update]: counts the instructions of single paths and compares them, per name,
# with bench/path_counts.txt. A path that takes over 3 % more fails: explain it, or take it back.
# One that takes over 3 % less fails until --update has written the new counts. Counts are those of
# one compiler on one kind of processor; elsewhere nothing is compared.
set -euo pipefail
cd "$(dirname "$0")/.."
counts=bench/path_counts.txt
vectors=$(grep -om 1 '\<avx2\>' /proc/cpuinfo || uname -m)
on="$(g++ --version | head -n 1), $(valgrind --version), $vectors"
if [[ ${1:-} != --update && $(head -n 1 $counts) != "$on" ]]; then
    echo "Not compared: counts are of $(head -n 1 $counts); this is $on"
    exit 0
fi
cmake --preset release >/dev/null
cmake --build --preset release --target path_counts >/dev/null
program=build/release/bench/path_counts
names=$(valgrind --tool=callgrind --callgrind-out-file=$program.out $program 2>$program.log)
callgrind_annotate --inclusive=yes --threshold=100 $program.out |
    sed -nE 's/^ *([0-9,]+) \([^)]*\).*:path_([a-z_]+) .*/\2 \1/p' | tr -d , | sort -u |
    awk -v names="$names" '{ printf "%-24s %9.2f\n", $1, $2 / names }' >$program.txt
if [[ ${1:-} == --update ]]; then
    { echo "$on"; cat $program.txt; } >$counts
    exit
fi
tail -n +2 $counts | join -a 1 -a 2 -e 0 -o 0,1.2,2.2 - $program.txt | awk '
    $3 > $2 * 1.03 { print "more:", $0; bad = 1 }
    $3 < $2 * 0.97 { print "less, bench/count_paths.sh --update:", $0; bad = 1 }
    END { print NR, "paths compared"; exit bad }'

#!/usr/bin/env bash
# check.sh [--three]: has SPIN search all that can happen in lock.pml, with two threads or, in a minute or two, with three. Then leaves out
# in turn what the lock needs; each time the search has to find what that leads to. Needs the packages spin and gcc.
set -euo pipefail
model=$(cd "$(dirname "$0")" && pwd)/lock.pml
threads=2 optimised=-O0
[[ ${1:-} != --three ]] || threads=3 optimised=-O2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
bad=0

search() { # OPTION...: into the file found; it ends at the first fault
    spin "$@" -a "$model" >messages || { cat messages; exit 1; }
    gcc "$optimised" -DSAFETY -DCOLLAPSE -DNOFAIR -o pan pan.c
    ./pan -m1000000 -w22 >found
}

holds() { # WHAT OPTION...
    search "${@:2}"
    local states
    states=$(sed -nE 's/ *([0-9]+) states, stored.*/\1/p' found)
    if grep -q 'errors: 0' found && ! grep -qE 'not completed|too small' found; then
        printf '%-70s %10d states, no fault\n' "$1" "$states"
    else
        printf '%-70s FAULT\n' "$1"
        cat found
        bad=1
    fi
}

finds() { # WHAT FAULT OPTION...
    search "${@:3}"
    if grep -qF "$2" found; then
        printf '%-70s found: %s\n' "$1" "$(sed -nE 's/^pan:1: (.*) \(at depth ([0-9]+)\)/\1, after \2 steps/p' found)"
    else
        printf '%-70s NOT FOUND: %s\n' "$1" "$2"
        bad=1
    fi
}

holds "$threads threads" -DTHREADS="$threads"
holds "$threads threads, stores that overtake each other" -DTHREADS="$threads" -DWEAK_STORES
holds "$threads threads, never biased" -DTHREADS="$threads" -DORDINARY
finds "without the limit of 1 ms" 'invalid end state' -DNO_LIMIT
finds "without the barrier" 'nHolders==0' -DNO_BARRIER
finds "with a look at nState after the store of a release" '!(bFreed)' -DLOOK_AFTER_STORE
finds "with a store of nInside that others overtake" 'violated bFreed' -DWEAK_STORES -DNO_RELEASE
exit "$bad"

#!/usr/bin/env bash
# check.sh [--three]: has SPIN search all that can happen in lock.pml, with two threads or, in a few
# minutes, with three. Then leaves out in turn what the lock needs; each time the search has to find
# what that leads to. Needs the packages spin and gcc.
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
    gcc "$optimised" -DSAFETY -DCOLLAPSE -o pan pan.c
    ./pan -m1000000 -w$((threads * 3 + 16)) >found
}

search_cycles() { # the same for ways to go on for ever while no thread is kept from running
    spin "$@" -a "$model" >messages || { cat messages; exit 1; }
    gcc "$optimised" -DNP -DNFAIR=3 -DCOLLAPSE -o pan pan.c
    ./pan -l -f -m1000000 -w$((threads * 3 + 16)) >found
}

holds() { # SEARCH WHAT OPTION...
    "$1" "${@:3}"
    shift
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

finds() { # SEARCH WHAT FAULT OPTION...
    "$1" "${@:4}"
    shift
    if grep -qF "$2" found; then
        printf '%-70s found: %s\n' "$1" \
               "$(sed -nE 's/^pan:1: (.*) \(at depth ([0-9]+)\)/\1, after \2 steps/p' found)"
    else
        printf '%-70s NOT FOUND: %s\n' "$1" "$2"
        bad=1
    fi
}

holds search "$threads threads" -DTHREADS="$threads"
holds search "$threads threads, stores that overtake each other" -DTHREADS="$threads" -DWEAK_STORES
holds search "$threads threads, never biased" -DTHREADS="$threads" -DORDINARY
holds search_cycles "$threads threads, whether all come to an end" -DTHREADS="$threads"
finds search "without the limit of 1 ms" 'invalid end state' -DNO_LIMIT
finds search "without the barrier" 'nHolders==0' -DNO_BARRIER
finds search "with a look at nState after the store of a release" '!(bFreed)' -DLOOK_AFTER_STORE
finds search "with a store of nInside that others overtake" 'violated bFreed' \
      -DWEAK_STORES -DNO_RELEASE
finds search_cycles "with nInside left by a thread that is turned away" 'non-progress cycle' \
      -DNO_STEP_BACK
exit "$bad"

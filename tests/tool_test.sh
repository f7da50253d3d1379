#!/usr/bin/env bash
# tool_test.sh NAMES_TOOL: what a person at a shell relies on.
set -u
tool=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failures=0

# expect EXIT_CODE PATTERN ARGUMENT...: runs the tool; PATTERN must be found in what it prints, on either stream.
expect() {
    local code=$1 pattern=$2 output got
    shift 2
    output=$("$tool" "$@" 2>&1)
    got=$?
    if [[ $got != "$code" ]] || ! grep -qE -- "$pattern" <<<"$output"; then
        printf 'names_tool %s: exit %s, expected %s; no /%s/ in:\n%.500s\n' "$*" "$got" "$code" "$pattern" "$output"
        failures=$((failures + 1))
    fi
}
same() {
    cmp -- "$1" "$2" || failures=$((failures + 1))
}

words=/usr/share/dict/american-english
expect 0 '^104334 names, 985084 bytes of text' import "$words" words.names
expect 0 '' export words.names words.txt
same "$words" words.txt
expect 0 'sound, 104334 names' check words.names
expect 0 '^ +1 +131072 .*#' show words.names
expect 0 '"live": 985084' show --json words.names
"$tool" show --json words.names | grep -qx '  "names": 104334,' || failures=$((failures + 1))
expect 0 $'^104333\tzygotes$' find words.names zygotes
expect 0 $'^104334\tzygotes  $' find --one-based words.names 'zygotes  '
expect 1 $'^-1\tno such word$' find --one-based words.names zygotes 'no such word'
expect 0 $'^0\tA$' find words.names < <(printf 'zygotes\r\nA')
expect 1 . find words.names <<<zygote-s

# Line ends, blanks, and the names that a list cannot hold.
printf 'one\r\ntwo  \n\n four\rfour' >odd.txt
expect 0 '^4 names, 20 bytes' import odd.txt odd.names
printf 'one\0two\0\0 four\rfour\0' >odd.expected
expect 0 '' export --null odd.names odd.null
same odd.expected odd.null
expect 0 '^2 names' import - cr.names < <(printf 'a\nb\r\r\n')
expect 2 'cr.names: name 1 .*line break' export cr.names
expect 0 '^0 names' import /dev/null none.names
expect 0 '0 names' check none.names

# A refused list names its line and leaves the older image whole, and nothing beside it.
cp words.names before.names
printf 'a\nb\0c\nd\n' >nul.txt
expect 2 'names_tool: nul.txt: line 2: .*NUL' import nul.txt words.names
{ head -c 1048575 /dev/zero | tr '\0' n; head -c 9000000 /dev/zero | tr '\0' ' '; printf '\r\nx\n'; } >long.txt
expect 0 '^2 names, 1048578 bytes' import long.txt long.names
{ head -c 1048575 /dev/zero | tr '\0' n; head -c 9000000 /dev/zero | tr '\0' ' '; printf '\r.\nx\n'; } >long.txt
expect 2 'long.txt: line 1: longer' import long.txt words.names
expect 2 'names_tool: missing.txt: cannot open' import missing.txt words.names
expect 2 'no/such/x.names: ' import odd.txt no/such/x.names
expect 2 'names_tool: \.: not a regular file' import odd.txt .
same before.names words.names
[[ -z $(find . -name '.names_tool*') ]] || failures=$((failures + 1))

# Damaged images are refused, repeated names reported.
head -c 100000 words.names >short.names
expect 1 'names_tool: short.names: .*ends too early' check short.names
{ cat words.names; printf x; } >longer.names
expect 2 'longer.names: .*more bytes' find longer.names A
{ head -c 108 words.names; printf '\377'; tail -c +110 words.names; } >damaged.names
expect 2 'damaged.names: not a sound image' export damaged.names
expect 0 '^6 names' import - twice.names < <(printf 'a\nb\na\nc\nb\na\n')
expect 1 '"a" is repeated: names 0, 2, 5$' check twice.names
expect 1 '"b" is repeated: names 1, 4$' check twice.names
expect 2 'names_tool: .*cannot open' check missing.names
expect 2 '^names_tool: ' frobnicate

# The picture: well-formed, as small for very many blocks as for few, with every byte in its legend; and never in place of an image.
expect 0 '' show --svg words.svg words.names
expect 0 'live text: 985,084 bytes' show --svg - words.names
grep -q 'block 8: 131,072 bytes; 6,836 names in' words.svg || failures=$((failures + 1))
head -c 1000000 /dev/zero | tr '\0' n >name
for ((i = 0; i < 100; ++i)); do cat name && echo " $i"; done | "$tool" import - many.names >summary
expect 0 '' show --svg many.svg many.names
[[ $(<many.svg) == *'A row for each 3 blocks'*'>block 99<'* ]] || failures=$((failures + 1))
[[ $(wc -c <many.svg) -lt 100000 && $(tail -n 1 many.svg) == '</svg>' ]] || failures=$((failures + 1))
expect 2 'is the image itself' show --svg words.names ./words.names
expect 2 'is the image itself' export words.names ./words.names
same before.names words.names

# At a shell: every command has examples and an exit code for its help, and a reader that has seen enough ends the tool without a word.
expect 0 '^names_tool [0-9]+\.[0-9]+\.[0-9]+$' --version
for command in import export find show check self-check; do
    expect 0 "^  names_tool $command|\\| names_tool $command" "$command" --help
done
for ignored in '' PIPE; do
    ([[ -z $ignored ]] || trap '' "$ignored"; "$tool" export words.names) 2>errors | head -n 1 >first
    [[ $(<first) == A && ! -s errors ]] || { echo "closed pipe: $(<errors)"; failures=$((failures + 1)); }
done

# What cannot be printed is an error, not a short answer.
if [[ -c /dev/full ]]; then
    "$tool" export words.names >/dev/full 2>errors && failures=$((failures + 1))
    grep -q 'standard output: cannot write: No space' errors || failures=$((failures + 1))
fi
exit "$((failures > 0))"

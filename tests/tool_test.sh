#!/usr/bin/env bash
# shellcheck disable=SC2317,SC2094
# tool_test.sh NAMES_TOOL [SYSTEM]: what a person at a shell relies on. On Windows without limits on
# files, signals sent by others, permissions, links and devices that are full, which it has not.
set -u
tool=$1
system=${2:-}
docs=$(cd "$(dirname "$0")/../docs" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
failures=0

# expect EXIT_CODE PATTERN ARGUMENT...: runs the tool; PATTERN must be found in what it prints, on
# either stream.
expect() {
    local code=$1 pattern=$2 output got
    shift 2
    output=$("$tool" "$@" 2>&1)
    got=$?
    output=${output//$'\r'/}
    if [[ $got != "$code" ]] || ! grep -qE -- "$pattern" <<<"$output"; then
        printf 'names_tool %s: exit %s, expected %s; no /%s/ in:\n%.500s\n' \
               "$*" "$got" "$code" "$pattern" "$output"
        failures=$((failures + 1))
    fi
}
same() {
    cmp -- "$1" "$2" || failures=$((failures + 1))
}
# must COMMAND...: it must succeed.
must() {
    "$@" || { printf 'failed: %s\n' "$*"; failures=$((failures + 1)); }
}
nothing_left() {
    ! compgen -G '.names-*'
}

words=/usr/share/dict/american-english
expect 0 '^104334 names, 985084 bytes of text, 9 blocks, 820 segments$' import "$words" words.names
expect 0 '' export words.names words.txt
same "$words" words.txt
cp words.names before.names
expect 0 'sound, 104334 names' check words.names
expect 0 '"live": 985084' show --json words.names
expect 0 '^  "names": 104334,$' show --json words.names
expect 0 '^ +0 +4096 +4090 +0 +508 +#+\.$' show words.names
expect 0 '^ +1-7 +917504 +917474 +0 +96990 +#+\.$' show words.names
expect 0 $'^104333\tzygotes$' find words.names zygotes
expect 0 $'^104334\tzygotes  $' find --one-based words.names 'zygotes  '
expect 1 $'^-1\tno such word$' find --one-based words.names zygotes 'no such word'
expect 0 $'^0\tA$' find words.names < <(printf 'zygotes\r\nA')
expect 1 . find words.names <<<zygote-s

# A few names are looked for in another way than very many, with the same answers, whatever is
# repeated on either side.
for ((i = 0; i < 1500; ++i)); do echo "name $((i % 7 * i % 400))"; done >repeated.txt
for ((i = 0; i < 1500; ++i)); do
    printf 'name %s%*s\n' $((i * 31 % 600)) $((i % 3)) ''
done >sought.txt
for ((i = 0; i < 20; ++i)); do cat sought.txt; done >very_many.txt
expect 0 '^1500 names' import repeated.txt repeated.names
mapfile -t sought <sought.txt
"$tool" find --one-based repeated.names <very_many.txt | head -n 1500 >by_index
"$tool" find --one-based repeated.names "${sought[@]}" >by_walk
same by_index by_walk
must grep -q ^-1 by_walk
must grep -qv ^-1 by_walk

# Line ends, blanks, a byte order mark, and the names that a list of lines cannot hold.
printf '\xef\xbb\xbfone\r\ntwo  \n\n four\rfour' >odd.txt
expect 0 '^4 names, 20 bytes' import odd.txt odd.names
printf 'one\0two\0\0 four\rfour\0' >odd.expected
expect 0 '' export --null odd.names odd.null
same odd.expected odd.null
expect 0 $'^0\tone$' find odd.names < <(printf '\xef'; sleep 0.1; printf '\xbb\xbfone\n')
expect 0 '^2 names' import - cr.names < <(printf 'a\nb\r\r\n')
expect 2 'cr.names: name 1 .*line break' export cr.names
printf '\xef\xbb\xbfa\nb\0c \0d\r\0' >null.txt
expect 0 '^3 names' import --null null.txt null.names
expect 2 'null.names: name 0 .*line break; --null' export null.names
printf '\xef\xbb\xbfa\nb\0c\0d\r\0' >null.expected
"$tool" export --null null.names | cmp - null.expected || failures=$((failures + 1))
"$tool" find --null null.names <null.txt | tr '\0\n\r' '|/<' >null.found
must grep -q $'^0\t\xef\xbb\xbfa/b|1\tc |2\td<|$' null.found
expect 0 '^1 name, 5 bytes of text, 1 block, 1 segment$' import --null - mark.names \
       < <(printf '\xef\xbb\xbfa\0')
expect 2 'mark.names: name 0 begins with a byte order mark' export mark.names
expect 0 '^0 names' import /dev/null none.names
expect 0 '0 names' check none.names

# A refused list names its line and leaves the older image whole, and nothing beside it.
printf 'a\nb\0c\nd\n' >hole.txt
expect 2 'names_tool: hole.txt: line 2: .*NUL' import hole.txt words.names
{ head -c 1048575 /dev/zero | tr '\0' n; head -c 9000000 /dev/zero | tr '\0' ' '
  printf '\r\nx\n'; } >long.txt
expect 0 '^2 names, 1048578 bytes' import long.txt long.names
{ head -c 1048575 /dev/zero | tr '\0' n; head -c 9000000 /dev/zero | tr '\0' ' '
  printf '\r.\nx\n'; } >long.txt
expect 2 'long.txt: line 1: longer' import long.txt words.names
expect 2 'long.txt: entry 1: longer' import --null long.txt words.names
expect 2 'names_tool: missing.txt: cannot open' import missing.txt words.names
expect 2 'no/such/x.names: ' import odd.txt no/such/x.names
expect 2 'names_tool: \.: .*(directory|denied)' import odd.txt .
same before.names words.names
must nothing_left

# Nor does anything else harm an older file: a full disk, or so it seems; a signal; being read and
# written at once.
cp odd.expected list.txt
expect 2 'cannot be read and written at once' export words.names ./words.names
expect 2 'cannot be read and written at once' show --svg words.names ./words.names
expect 2 'cannot be read and written at once' import list.txt list.txt
limited() ( # BLOCKS COMMAND...: where no file can grow beyond so many
    ulimit -f "$1"
    shift
    "$@"
    exit "$failures"
)
# While a list is being read, which goes on for as long as descriptor 3 is open. The signal may be
# ignored where this script was started, as in the background; the tool gets it as at a terminal.
ended_by() { # SIGNAL
    exec 3<>slow
    env --default-signal="$1" "$tool" import slow words.names 3>&- &
    until compgen -G '.names-*' >/dev/null || ! kill -0 $!; do sleep 0.01; done
    must compgen -G '.names-*' >/dev/null
    kill -s "$1" $!
    exec 3>&-
    wait $!
    [[ $? == $((128 + $(kill -l "$1"))) ]]
}
if [[ $system != Windows ]]; then
    expect 2 'cannot be read and written at once' import - list.txt <list.txt
    limited 100 expect 2 'list.txt: cannot write: File too large' export words.names list.txt ||
        failures=$((failures + 1))
    limited 100 expect 2 'words.names: cannot write: File too large' import "$words" words.names ||
        failures=$((failures + 1))
    mkfifo slow
    for signal in INT TERM HUP; do
        must ended_by "$signal" 2>/dev/null
        must nothing_left
    done
fi
same odd.expected list.txt
same before.names words.names
must nothing_left

# A new file has the usual permissions, one that is replaced keeps its own, and links stay links.
if [[ $system != Windows ]]; then
    (umask 027 && "$tool" export odd.names >/dev/null new.txt)
    must test "$(stat -c %a new.txt)" = 640
    chmod 604 new.txt
    ln -s new.txt link.txt
    expect 0 '' export words.names link.txt
    must test "$(stat -c %a new.txt)" = 604 -a -L link.txt
    same "$words" new.txt
fi

# Standard input and output as files.
"$tool" import - - <"$words" 2>summary | cmp - words.names || failures=$((failures + 1))
must grep -q '^104334 names' summary
"$tool" import "$words" /dev/stdout 2>/dev/null | "$tool" export - | cmp - "$words" ||
    failures=$((failures + 1))
{ echo first; "$tool" export odd.names /dev/stdout; } >appended
must test "$(head -n 2 appended)" = $'first\none'
expect 0 'standard input: sound' check - <words.names
expect 0 '^names +104334' show - < <(cat words.names)
expect 0 '>standard input</text>' show --svg - - <words.names
expect 0 $'^0\tA$' find - A <words.names
expect 2 'standard input: cannot be both' find - <words.names

# Damaged images are refused, repeated names reported.
head -c 100000 words.names >short.names
expect 1 'names_tool: short.names: .*ends too early' check short.names
{ cat words.names; printf x; } >longer.names
expect 2 'longer.names: .*more bytes' find longer.names A
{ head -c 108 words.names; printf '\377'; tail -c +110 words.names; } >damaged.names
expect 2 'damaged.names: not a sound image' export damaged.names
expect 1 'standard input: not a sound image' check - </dev/zero
{ od -An -v -tx1 -w4 -N24 odd.names | sed -E 's/ (..) (..) (..) (..)/\\x\4\\x\3\\x\2\\x\1/' |
      tr -d '\n' | xargs -0 printf
  tail -c +25 odd.names; } >swapped.names
expect 1 'swapped.names: .*other byte order' check swapped.names
expect 2 'standard input: .*other byte order' show - < <(cat swapped.names)
expect 0 '^6 names' import - twice.names < <(printf 'a\nb\na\nc\nb\na\n')
expect 1 '"a" is repeated: names 0, 2, 5$' check twice.names
expect 1 '"b" is repeated: names 1, 4$' check twice.names
expect 2 'names_tool: .*cannot open' check missing.names
if (ulimit -v 2000000; "$tool" --version) >/dev/null 2>&1; then # not under a sanitizer
    { head -c 8 odd.names; printf '\x7f\0\0\x7f'; tail -c +13 odd.names; } >huge.names
    (ulimit -v 2000000; expect 2 'huge.names: out of memory' check huge.names; exit "$failures") ||
        failures=$((failures + 1))
fi

# diff, with images, lists and standard input on either side. All that it prints is compared, with a
# blank for a tab and a bar for an end.
diff_is() { # EXIT_CODE OUTPUT ARGUMENT...
    local expected="$1: $2" got
    shift 2
    got=$("$tool" diff "$@" | tr '\t\n\0' ' ||'; exit "${PIPESTATUS[0]}")
    got="$?: $got"
    [[ $got == "$expected" ]] ||
        { printf 'diff %s: got %s\n' "$*" "$got"; failures=$((failures + 1)); }
}
printf 'a\nb\nc\nb\nd\n' >old.txt
printf 'a\r\nc\nb \nb\ne\na' >new.txt
printf 'a\0c\0b\0b\0e\na\0' >new.null
"$tool" import old.txt old.names >summary
"$tool" import new.txt new.names >summary
for side in old.txt old.names; do
    diff_is 0 '' "$side" old.txt
    diff_is 0 '' "$side" - <old.names
    for other in new.txt new.names; do
        diff_is 1 '4 -1 d|-1 4 e|-1 5 a|1 2 b|2 1 c|' "$side" "$other"
        diff_is 1 '4 -1 e|5 -1 a|-1 4 d|1 2 c|2 1 b|' - "$side" < <(cat "$other")
    done
    expected="1 name only in $side|2 names only in new.txt|"
    diff_is 1 "${expected}2 names whose index differs|2 names the same|" --summary "$side" new.txt
done
diff_is 1 '4 -1 d|-1 4 e|a|1 2 b|2 1 c|' --null old.names new.null
counts='"counts": {"onlyInA":1,"onlyInB":1,"indexDiffers":2,"same":2}'
names='  "onlyInA": [|    {"indexInA":4,"name":"d"}|  ],|'
names+='  "onlyInB": [|    {"indexInB":4,"name":"e\na"}|  ],|'
names+='  "indexDiffers": [|    {"indexInA":1,"indexInB":2,"name":"b"},|'
names+='    {"indexInA":2,"indexInB":1,"name":"c"}|  ]|}|'
diff_is 1 "{|  \"a\": \"old.names\",|  \"b\": \"new.null\",|  $counts,|$names" \
        --json --null old.names new.null
diff_is 1 "{|  \"a\": \"old.names\",|  \"b\": \"new.null\",|  $counts|}|" \
        --json --summary --null old.names new.null
diff_is 0 '' /dev/null none.names
diff_is 1 '-1 0 a|' none.names - <<<a
expect 2 'standard input: cannot be both' diff - -
expect 2 'missing.names: cannot open' diff old.txt missing.names
expect 2 'damaged.names: not a sound image' diff old.txt damaged.names
expect 2 'swapped.names: .*other byte order' diff swapped.names old.txt
expect 2 'new.null: line 1: .*NUL' diff old.txt new.null

# What diff prints is enough to make one list of the other, and what is in one only is what two
# sorted lists say. Names are repeated more and less, and edited by inserting and removing some in a
# row.
export LC_ALL=C
for ((seed = 1; seed <= 12; ++seed)); do
    awk -v seed=$seed 'BEGIN { srand(seed)
                               while (++i <= 3000) print int(rand() * exp(seed)) }' >a.txt
    awk -v seed=$seed 'BEGIN { srand(-seed) }
                       rand() < 0.01 { gone = rand() * 40 }
                       rand() < 0.01 { for (i = rand() * 40; i > 0; --i) print int(rand() * 99) }
        --gone < 0' a.txt >b.txt
    "$tool" diff a.txt b.txt >lines
    awk -F '\t' 'FILENAME == "lines" { if ($1 >= 0) gone[$1]; if ($2 >= 0) name[$2] = $3; next }
                  !(FNR - 1 in gone) { name[FNR - 1] = $1 }
        END { for (i = 0; i in name; ++i) print name[i] }' lines a.txt >b.made
    same b.txt b.made
    awk -F '\t' '$2 < 0 { print $3 }' lines | sort |
        cmp - <(comm -23 <(sort a.txt) <(sort b.txt)) ||
        failures=$((failures + 1))
    awk -F '\t' '$1 < 0 { print $3 }' lines | sort |
        cmp - <(comm -13 <(sort a.txt) <(sort b.txt)) ||
        failures=$((failures + 1))
done

# The picture: well-formed, as small for very many blocks as for few, with every byte in its legend;
# lines between segments in all rows or none.
expect 0 '' show --svg words.svg words.names
expect 0 'live text: 985,084 bytes' show --svg - words.names
must grep -q 'block 8: 131,072 bytes; 6,836 names in' words.svg
must test "$(grep -c 'class="seam" d=' words.svg)" = 9
expect 0 '^40000 names' import - dense.names < <(yes a | head -n 40000)
expect 0 '' show --svg dense.svg dense.names
must test "$(grep -c '<g ' dense.svg) $(grep -c 'seam" d=\|White' dense.svg)" = '2 0'
head -c 1000000 /dev/zero | tr '\0' n >name
for ((i = 0; i < 100; ++i)); do cat name && echo " $i"; done | "$tool" import - many.names >summary
expect 0 '' show --svg many.svg many.names
[[ $(<many.svg) == *'A row for each 3 blocks'*'>block 99<'* ]] || failures=$((failures + 1))
[[ $(wc -c <many.svg) -lt 100000 && $(tail -n 1 many.svg) == '</svg>' ]] ||
    failures=$((failures + 1))

# At a shell: every command has examples and an exit code for its help, what is unknown is named,
# and a reader that has seen enough ends the tool without a word.
expect 0 '^names_tool [0-9]+\.[0-9]+\.[0-9]+$' --version
for command in import export find diff show check self-check; do
    expect 0 "^  names_tool $command|\\| names_tool $command" "$command" --help
done
expect 0 '^self-check: passed$' self-check
expect 0 '^  -h, --help  ' check --help
expect 0 'no checksum' check --help
expect 2 "^names_tool: unknown command 'exprot' \(names_tool --help tells more\)\$" exprot
expect 2 "^names_tool: unknown option '--nul' \(names_tool export --help" export --nul
expect 2 "^names_tool: unexpected argument 'c'" export a b c
expect 2 '^names_tool: a command is missing'
for ignored in '' PIPE; do
    [[ $system != Windows ]] || break
    ([[ -z $ignored ]] || trap '' "$ignored"; "$tool" export words.names) 2>errors |
        head -n 1 >first
    [[ $(<first) == A && ! -s errors ]] ||
        { echo "closed pipe: $(<errors)"; failures=$((failures + 1)); }
done

# The page in docs/ is what the tool itself says.
"$tool" --markdown-page | diff - "$docs/tool.md" || failures=$((failures + 1))
"$tool" --man-page >names_tool.1
if command -v mandoc >/dev/null; then
    must mandoc -Tlint names_tool.1
fi

# What cannot be printed is an error, not a short answer.
if [[ -c /dev/full && $system != Windows ]]; then
    for command in "export words.names" "find words.names" "show words.names" "import - -" \
                   "--help"; do
        # shellcheck disable=SC2086
        "$tool" $command <"$words" >/dev/full 2>errors && failures=$((failures + 1))
        must grep -q 'standard output: cannot write: No space' errors
    done
fi
exit "$((failures > 0))"

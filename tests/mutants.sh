#!/usr/bin/env bash
# mutants.sh [-n COUNT] [-s SEED] [FILE...]: changes one operator, number or statement at a time in
# the sources named, or in those of names/, host/ and files/ that differ from origin/main (without
# one: from the last commit but one), and says which changes no test notices. COUNT (100) are chosen
# at random. Works on a copy in build/mutants, with assertions and sanitizers. What does not compile
# is not counted.
set -euo pipefail
cd "$(dirname "$0")/.."

count=100 seed=1
while getopts n:s: option; do
    case $option in
    n) count=$OPTARG ;;
    s) seed=$OPTARG ;;
    *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
base=$(git rev-parse --verify --quiet origin/main || git rev-parse HEAD~1)
mapfile -t files < <(git diff --name-only "$base" -- {names,host,files}/'*.[ch]pp')
(($#)) && files=("$@")
tests=(tiny_history_test history_test foreign_history_test foreign_tiny_history_test unit_test
       image_test text_walk_test hash_map_test thread_test no_futex_thread_test lock_stress
       no_futex_lock_stress)

copy=build/mutants sanitizers="-fsanitize=address,undefined -fno-sanitize-recover=all"
export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=256
mkdir -p "$copy"
git ls-files -z | xargs -0 cp --parents --target-directory="$copy"
cmake -S "$copy" -B "$copy/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DNAMES_BUILD_EXAMPLES=OFF \
    -DNAMES_BUILD_TOOLS=OFF -DCMAKE_CXX_FLAGS="-O1 $sanitizers" >/dev/null
build() {
    cmake --build "$copy/build" --parallel "$(nproc)" --target "${tests[@]}" >"$copy/log" 2>&1
}
build || { tail "$copy/log"; exit 1; }

# Prints FILE, LINE, COLUMN, OLD and NEW of every change that could be made, tab-separated.
changes() {
    perl -ne '
        BEGIN {
            %new = ("<=" => "<", ">=" => ">", " < " => " <= ", " > " => " >= ", "==" => "!=",
                    "!=" => "==", "&&" => "||", "||" => "&&", " + " => " - ", " - " => " + ",
                    " += " => " -= ", " * " => " + ", "++" => "--", "true" => "false",
                    "false" => "true", "std::min" => "std::max", "std::max" => "std::min");
            $old = join "|", map { quotemeta } sort { length $b <=> length $a } keys %new;
            sub change {
                my ($column, $old, $new) = @_;
                print join("\t", $ARGV, $., $column, $old, $new), "\n";
            }
        }
        close ARGV if eof;
        next if m{^\s*(//|\*|/\*|#|template|using|static_assert|assert)};
        s{//.*}{};
        change(pos() - length $1, $1, $new{$1}) while /($old)/g;
        change(pos() - length $1, $1, $1 + 1) while /(?<![\w.])(\d+)(?![\w.])/g;
        next if /^\s+(return|const|auto|static|int32_t|char|bool)\b/;
        change(length $1, $2, ";") if /^(\s+)(\w[^=;{}]*(\(.*\)| [-+|&]?= .*);)$/;
    ' "$@"
}

killed=0 survived=0
while ((killed + survived < count)) && IFS=$'\t' read -r file line column old new; do
    cp "$file" "$copy/original"
    AT=$line COLUMN=$column OLD=$old NEW=$new perl -pe '
        substr($_, $ENV{COLUMN}, length $ENV{OLD}) = $ENV{NEW} if $. == $ENV{AT}
    ' "$file" >"$copy/$file"
    if build; then
        noticed=
        for test in "${tests[@]}"; do
            (cd "$copy/build/tests" && timeout 120 "./$test" >/dev/null 2>&1) || noticed=$test
            [[ -z $noticed ]] || break
        done
        if [[ -n $noticed ]]; then
            killed=$((killed + 1))
        else
            survived=$((survived + 1))
            echo "survives: $file:$line: $old -> $new"
        fi
    fi
    cp "$copy/original" "$copy/$file"
done < <(changes "${files[@]}" | shuf --random-source=<(yes "$seed"))
echo "$killed killed, $survived survived"

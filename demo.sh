#!/usr/bin/env bash
# Installs what is missing, builds, and takes Debian's word list through an image: made, searched, shown, checked, exported, compared.
set -euo pipefail
cd "$(dirname "$0")"

cmake/install_packages.sh
cmake --preset release >/dev/null
cmake --build --preset release --parallel "$(nproc)" --target names_tool

words=/usr/share/dict/american-english
folder=build/demo
image=$folder/words.names
mkdir -p "$folder"

run() {
    printf '\n$ %s\n' "$*"
    "$@"
}
PATH=$PWD/build/release/tools:$PATH
run names_tool import "$words" "$image"
run names_tool find "$image" names manager zebra "Ångström"
run names_tool show "$image"
run names_tool check "$image"
run names_tool export "$image" "$folder/exported.txt"
run cmp "$words" "$folder/exported.txt"
printf '\nThe exported list equals its source, %s words.\n' "$(wc -l <"$words")"

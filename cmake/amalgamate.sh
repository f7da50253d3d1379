#!/bin/sh
# amalgamate.sh FOLDER: writes the whole component with the shipped host into FOLDER, as names_manager.h and names_manager.cpp.
set -eu
mkdir -p "$1"
folder=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
version=$(sed -n 's/^#define NAMES_MANAGER_VERSION_[A-Z]* \([0-9]*\)$/\1/p' names/names_manager.h | paste -s -d .)
headers="names/names_manager.h $(echo host/*.h)"
sources="$(echo names/*.cpp) $(echo host/*.cpp)"
print_files() { # MODE KNOWN FILE...
    mode=$1 known=$2
    shift 2
    awk -v mode="$mode" -v known="$known" -f cmake/amalgamate.awk "$@"
}

# Words of these lists are the names of files.
# shellcheck disable=SC2086
{
    cat <<END
/* names_manager $version: keeps the names of numbered entities. For C11 and later and for C++; with the face for C++ from C++17 on.
 *
 * This header and names_manager.cpp, which is C++20, are the whole component. They were put together from these files, whose names stand
 * where their parts begin:
$(printf ' *     %s\n' $headers names/names_manager.hpp $sources)
 * Where names_manager.cpp is compiled with NAMES_OWN_HOST defined it leaves out the sources of host/; their services are then yours to
 * implement.
 */
#ifndef NAMES_MANAGER_H
#define NAMES_MANAGER_H
END
    print_files header "" $headers
    printf '\n#if defined(__cplusplus) && __cplusplus >= 201703L\n'
    print_files header "$headers" names/names_manager.hpp
    printf '#endif\n\n#endif\n'
} >"$folder/names_manager.h"

# shellcheck disable=SC2086
{
    printf '/* names_manager %s: the implementation. names_manager.h says where its parts come from. */\n' "$version"
    printf '#include "names_manager.h"\n'
    print_files source "$headers" names/*.cpp
    printf '\n#ifndef NAMES_OWN_HOST\n'
    print_files source "$headers" host/*.cpp
    printf '#endif\n'
} >"$folder/names_manager.cpp"

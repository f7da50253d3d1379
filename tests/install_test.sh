#!/usr/bin/env bash
# install_test.sh SOURCE BUILD: installs BUILD (static) and a shared build of SOURCE into empty prefixes, moves these, and takes each way to
# use them, and the source tree itself, from a C program, a C++ program and a project that knows C alone. Compilers: CC, CXX.
set -Eeuo pipefail
trap 'echo "line $LINENO failed"' ERR
source=$1
build=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export CC=${CC:-cc} CXX=${CXX:-c++}
quietly() {
    "$@" >log 2>&1 || { printf 'failed: %s\n' "$*"; tail -n 40 log; exit 1; }
}
same_output() { # PROGRAM EXPECTED
    "$1" | cmp - "$source/examples/$2.expected"
}

quietly cmake --install "$build" --prefix "$folder/first"
mv first static
quietly cmake -S "$source" -B shared-build -DCMAKE_BUILD_TYPE=Debug -DBUILD_SHARED_LIBS=ON -DNAMES_BUILD_TESTS=OFF -DNAMES_BUILD_TOOLS=OFF \
    -DNAMES_BUILD_EXAMPLES=OFF
quietly cmake --build shared-build --parallel 2
quietly cmake --install shared-build --prefix "$folder/second"
mv second shared

# Nothing but the public operations can be linked against, and each of these can.
exported() {
    nm -D --defined-only "shared/lib/$1" | awk '{ print $3 }' | sort
}
declared() { # HEADER...
    "$CC" -E -P -I"$source" "$@" | tr '\n' ' ' | sed 's/static inline[^}]*}//g' | grep -oE '\b(NamesManager|Host[A-Za-z]*|ZOLT)[A-Za-z_]+ ?\(' |
        tr -d ' (' | sort -u
}
cat "$source"/host/host_*.h >all_host.h
[[ $(exported libnames_module.so) == "$(declared "$source/names/names_manager.h" | grep ^NamesManager_)" ]] || { echo "module: exports differ"; exit 1; }
[[ $(exported libnames_host.so | grep -v '^HostHashMap_StringKeys$') == "$(declared all_host.h)" ]] || { echo "host: exports differ"; exit 1; }

# pkg-config.
for kind in static shared; do
    flags=$(PKG_CONFIG_PATH=$kind/lib/pkgconfig pkg-config --cflags --libs "--$kind" names_manager)
    # shellcheck disable=SC2086
    quietly "$CC" "$source/examples/typical_course.c" -o pc_c $flags "-Wl,-rpath,$folder/$kind/lib"
    # shellcheck disable=SC2086
    quietly "$CXX" -std=c++17 "$source/examples/typical_course.cpp" -o pc_cpp $flags "-Wl,-rpath,$folder/$kind/lib"
    same_output ./pc_c typical_course_c
    same_output ./pc_cpp typical_course_cpp
done

# CMake: project NAME LANGUAGES HOW-TO-FIND-IT [OPTION...]
project() {
    local name=$1 languages=$2 how=$3
    shift 3
    mkdir "$name"
    {
        printf 'cmake_minimum_required(VERSION 3.22)\nproject(consumer %s)\n%s\n' "$languages" "$how"
        printf 'set(CMAKE_CXX_STANDARD 17)\n'
        for language in $languages; do
            printf 'add_executable(use_%s "%s/examples/typical_course.%s")\n' "$language" "$source" "$([[ $language == C ]] && echo c || echo cpp)"
            printf 'target_link_libraries(use_%s PRIVATE names_manager::names_manager)\n' "$language"
        done
    } >"$name/CMakeLists.txt"
    quietly cmake -S "$name" -B "$name/build" "$@"
    quietly cmake --build "$name/build" --parallel 2
    same_output "$name/build/use_C" typical_course_c
    [[ $languages == C ]] || same_output "$name/build/use_CXX" typical_course_cpp
    [[ -z $(find "$name/build" -name '*_test' -o -name names_tool) ]] || { echo "$name: built tests or tools unasked"; exit 1; }
}
found='find_package(names_manager 0.1 REQUIRED)'
project package_static 'C CXX' "$found" -DCMAKE_PREFIX_PATH="$folder/static"
project package_static_c C "$found" -DCMAKE_PREFIX_PATH="$folder/static"
project package_shared 'C CXX' "$found" -DCMAKE_PREFIX_PATH="$folder/shared"
project subdirectory C "add_subdirectory(\"$source\" names_manager)"
project fetched 'C CXX' "include(FetchContent)
FetchContent_Declare(names_manager SOURCE_DIR \"$source\")
FetchContent_MakeAvailable(names_manager)" -DBUILD_SHARED_LIBS=ON

# The tool, its page, and its completion.
export PATH=$folder/static/bin:$PATH
names_tool --version | grep -q '^names_tool [0-9.]*$'
grep -q '^\.SS self-check$' static/share/man/man1/names_tool.1
# shellcheck disable=SC1091
. static/share/bash-completion/completions/names_tool
complete_as() { # EXPECTED WORD...
    local expected=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    _names_tool
    [[ ${COMPREPLY[*]} == "$expected" ]] || { echo "completion of '$*': ${COMPREPLY[*]}"; exit 1; }
}
complete_as 'show self-check' names_tool s
complete_as '--svg' names_tool show --s
complete_as '--help --version' names_tool --
complete_as 'static' names_tool export stat

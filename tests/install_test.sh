#!/usr/bin/env bash
# install_test.sh SOURCE BUILD: installs BUILD (static), a shared build of SOURCE and the module
# alone into empty prefixes, moves these, and takes each way to use them, the source tree itself and
# its two-file form, from a C program, a C++ program and a project that knows C alone. Compilers:
# CC, CXX. What is compiled more than once comes from ccache where that is installed.
set -Eeuo pipefail
trap 'echo "line $LINENO failed"' ERR
source=$1
build=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export CC=${CC:-cc} CXX=${CXX:-c++}
ccache=$(command -v ccache || true)
export CMAKE_C_COMPILER_LAUNCHER=$ccache CMAKE_CXX_COMPILER_LAUNCHER=$ccache CMAKE_GENERATOR=Ninja
# BUILD and the two files are optimised, and nothing else, as it is not speed that is tested.
alike=(-DCMAKE_BUILD_TYPE=Debug -DNAMES_WERROR=ON -DCMAKE_UNITY_BUILD=ON)
quietly() {
    "$@" >log 2>&1 || { printf 'failed: %s\n' "$*"; tail -n 40 log; exit 1; }
}
same_output() { # PROGRAM EXPECTED
    "$1" | cmp - "$source/examples/$2.expected"
}
build_and_install() { # NAME OPTION...
    quietly cmake -S "$source" -B "$1-build" "${alike[@]}" -DNAMES_BUILD_TESTS=OFF \
            -DNAMES_BUILD_TOOLS=OFF -DNAMES_BUILD_EXAMPLES=OFF "${@:2}"
    quietly cmake --build "$1-build" --parallel 2
    quietly cmake --install "$1-build" --prefix "$folder/$1-first"
    mv "$1-first" "$1"
}

quietly cmake --install "$build" --prefix "$folder/first"
mv first static
build_and_install shared -DBUILD_SHARED_LIBS=ON
build_and_install module -DNAMES_BUILD_HOST=OFF -DCMAKE_DISABLE_FIND_PACKAGE_Threads=ON

# What the installed headers declare, and nothing else, can be linked against. The static library,
# too, hides the rest, except for what it has from the standard library.
cat static/include/names_manager/*/*.h >all.h
"$CC" -E -P -Istatic/include/names_manager all.h | tr '\n' ' ' | sed 's/static inline[^}]*}//g' |
    grep -oE '\b(Names[A-Z]|Host|ZOLT)[A-Za-z_]+ ?\(' | tr -d ' (' | sort -u >declared
nm -D --defined-only shared/lib/libnames_manager.so | awk '{ print $3 }' | LC_ALL=C sort >symbols
diff "$source/docs/symbols.txt" symbols ||
    { echo "If that is meant, bring docs/symbols.txt and CHANGELOG.md up to date"; exit 1; }
grep -vx HostHashMap_StringKeys symbols | sort >exported
readelf -sW static/lib/libnames_manager.a |
    awk '$5 ~ /GLOBAL|WEAK|UNIQUE/ && $6 == "DEFAULT" && $7 != "UND" { print $8 }' |
    grep -vE '^(HostHashMap_StringKeys|_ZN?K?St|_ZZN?K?St)' | sort -u >visible
diff declared exported
diff visible exported

# pkg-config.
for kind in static shared; do
    flags=$(PKG_CONFIG_PATH=$kind/lib/pkgconfig pkg-config --cflags --libs "--$kind" names_manager)
    # shellcheck disable=SC2086
    quietly "$CC" "$source/examples/typical_course.c" -o pc_c $flags "-Wl,-rpath,$folder/$kind/lib"
    # shellcheck disable=SC2086
    quietly "$CXX" -std=c++17 "$source/examples/typical_course.cpp" -o pc_cpp $flags \
            "-Wl,-rpath,$folder/$kind/lib"
    same_output ./pc_c typical_course_c
    same_output ./pc_cpp typical_course_cpp
done

# A program's own service takes the place of the library's; another host's services, those of all.
cat >own_memory.c <<'END'
#include <stdio.h>
#include <stdlib.h>
#include "host/host_memory.h"
#include "names/names_manager.h"
static int nCalls = 0;
void *HostMem_AllocRecord(uint64_t n, uint64_t nTag, int32_t nLine) {
    return (void)nTag, (void)nLine, ++nCalls, malloc(n + 1);
}
void *HostMem_Alloc(uint64_t n, uint64_t nTag, int32_t nLine) {
    return HostMem_AllocRecord(n, nTag, nLine);
}
void *HostMem_Realloc(void *p, uint64_t n, uint64_t nTag, int32_t nLine) {
    return (void)nTag, (void)nLine, ++nCalls, realloc(p, n + 1);
}
void HostMem_Free(void *p, uint64_t nTag, int32_t nLine) { (void)nTag, (void)nLine, free(p); }
int main(void) {
    NamesManager *mgr = NamesManager_Create(NULL, NULL);
    NamesManager_Destroy(mgr);
    return mgr != NULL && nCalls > 1 ? 0 : 1;
}
END
flags=$(PKG_CONFIG_PATH=static/lib/pkgconfig pkg-config --cflags --libs --static names_manager)
# shellcheck disable=SC2086
quietly "$CC" own_memory.c -o own_memory $flags
./own_memory
flags=$(PKG_CONFIG_PATH=module/lib/pkgconfig pkg-config --cflags --libs names_manager_module)
# shellcheck disable=SC2086
if "$CC" own_memory.c -o needs_a_host $flags 2>log; then exit 1; fi
grep -q 'HostLock_Acquire' log
[[ ! -e module/lib/libnames_manager.a ]]

# The shared library alone, as foreign function interfaces load it.
cat >load.c <<'END'
#include <dlfcn.h>
#include <stddef.h>
#include "names/names_manager.h"
int main(int nArguments, char **arguments) {
    void *pLibrary = nArguments == 2 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : NULL;
    if (pLibrary == NULL) return 1;
    int32_t (*pfnVersion)(void);
    *(void **)&pfnVersion = dlsym(pLibrary, "NamesManager_Version");
    return pfnVersion() == NAMES_MANAGER_VERSION ? 0 : 1;
}
END
quietly "$CC" load.c -o load -Ishared/include/names_manager -ldl
./load shared/lib/libnames_manager.so

# CMake: project NAME LANGUAGES HOW-TO-FIND-IT [OPTION...]
project() {
    local name=$1 languages=$2 how=$3
    shift 3
    mkdir "$name"
    {
        printf 'cmake_minimum_required(VERSION 3.22)\nproject(consumer %s)\n%s\n' \
               "$languages" "$how"
        printf 'set(CMAKE_CXX_STANDARD 17)\n'
        for language in $languages; do
            printf 'add_executable(use_%s "%s/examples/typical_course.%s")\n' \
                   "$language" "$source" "$([[ $language == C ]] && echo c || echo cpp)"
            printf 'target_link_libraries(use_%s PRIVATE names_manager::names_manager)\n' \
                   "$language"
        done
    } >"$name/CMakeLists.txt"
    quietly cmake -S "$name" -B "$name/build" "${alike[@]}" "$@"
    quietly cmake --build "$name/build" --parallel 2
    same_output "$name/build/use_C" typical_course_c
    [[ $languages == C ]] || same_output "$name/build/use_CXX" typical_course_cpp
    [[ -z $(find "$name/build" -name '*_test' -o -name names_tool) ]] ||
        { echo "$name: built tests or tools unasked"; exit 1; }
}
found='find_package(names_manager 0.1 REQUIRED)'
project package_static 'C CXX' "$found" -DCMAKE_PREFIX_PATH="$folder/static"
project package_static_c C "$found" -DCMAKE_PREFIX_PATH="$folder/static"
project package_shared 'C CXX' "$found" -DCMAKE_PREFIX_PATH="$folder/shared"
project fetched C "include(FetchContent)
FetchContent_Declare(names_manager SOURCE_DIR \"$source\")
FetchContent_MakeAvailable(names_manager)"

# Two files, in place of all headers; for a host of one's own, too.
quietly cmake --build "$build" --target amalgamation
two=$build/amalgamation
head -n 1 "$two/names_manager.h" | grep -qE '^/\* names_manager [0-9]+\.[0-9]+\.[0-9]+: '
quietly "$CC" -std=c11 -Wall -Wextra -pedantic-errors -Werror -fsyntax-only \
        -x c "$two/names_manager.h"
quietly "$CXX" -std=c++17 -Wall -Wextra -pedantic-errors -Werror -fsyntax-only \
        -x c++ "$two/names_manager.h"
quietly "$CXX" -std=c++20 -Wall -Wextra -Werror -DNAMES_OWN_HOST -fsyntax-only \
        "$two/names_manager.cpp"
quietly ${ccache:+"$ccache"} "$CXX" -std=c++20 -O2 -Wall -Wextra -Werror \
        -c "$two/names_manager.cpp" -o names_manager.o
nm -g --defined-only names_manager.o | awk '{ print $3 }' | sort >linkable
grep -E '^(Names|Host|ZOLT)' linkable | grep -vx HostHashMap_StringKeys | diff - exported
if grep -E '^_ZNK?(5names|4host)' linkable; then exit 1; fi
for language in c cpp; do
    sed -E -e 's|^#include "names/names_manager.hp*"|#include "names_manager.h"|' \
           -e '/^#include "(host|files)/d' \
        "$source/examples/typical_course.$language" >"two.$language"
    quietly "$CC" -I"$two" -O2 -c "two.$language" -o two.o
    quietly "$CXX" two.o names_manager.o -o two -pthread
    same_output ./two "typical_course_$language"
done
printf '#include "names_manager.h"\n%s\n' \
       'int main(void) { return NamesManager_SelfCheck() == 0 ? 0 : 1; }' \
       >self_check.c
quietly "$CC" -I"$two" -c self_check.c
quietly "$CXX" self_check.o names_manager.o -o self_check -pthread
quietly ./self_check

# The tool, its page, and its completion; the pages that comments name.
export PATH=$folder/static/bin:$PATH
names_tool --version | grep -q '^names_tool [0-9.]*$'
grep -q '^\.SS self-check$' static/share/man/man1/names_tool.1
for page in README.md docs/design.md docs/image_format.md; do
    [[ -s static/share/doc/names_manager/$page ]]
done
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

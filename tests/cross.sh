#!/usr/bin/env bash
# cross.sh TARGET [CMAKE-OPTION...]: builds everything for another platform and runs its tests
# there. Installs what is missing. Targets:
#   aarch64    AArch64 Linux, by user-mode emulation
#   s390x      s390x Linux, whose byte order is the other one, by user-mode emulation
#   windows    64-bit Windows, by MinGW-w64 and Wine
#   libcxx     this machine, by clang and libc++ of version $LLVM (16); 16 and 14 are known to do
# Builds below build/TARGET, which may go afterwards. Uses this machine's architecture-independent
# headers and GoogleTest's sources.
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:?aarch64, s390x, windows or libcxx}
llvm=${LLVM:-16}
build=$PWD/build/$target
sysroot=$build/sysroot
mkdir -p "$sysroot/include"

# Tests take this many times as long as they are given on the machine itself.
timeout_factor=10
options=("${@:2}")

# /usr/include as a whole holds this machine's C library, so what the target may see of it is linked
# into a folder of its own.
share_headers() {
    local header
    for header in xxhash.h CLI nlohmann; do
        ln -sfn "/usr/include/$header" "$sysroot/include/$header"
    done
    package CLI11 CLI11::CLI11
    package nlohmann_json nlohmann_json::nlohmann_json
}

# A CMake package of headers alone; the one installed lies in a folder of this machine's
# architecture.
package() { # NAME TARGET
    mkdir -p "$sysroot/lib/cmake/$1"
    cat >"$sysroot/lib/cmake/$1/$1Config.cmake" <<END
if(NOT TARGET $2)
    add_library($2 INTERFACE IMPORTED)
    set_target_properties($2 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "$sysroot/include")
endif()
END
}

toolchain() { # SYSTEM PROCESSOR COMPILER-PREFIX COMPILER-SUFFIX EMULATOR
    share_headers
    cat >"$build/toolchain.cmake" <<END
set(CMAKE_SYSTEM_NAME $1)
set(CMAKE_SYSTEM_PROCESSOR $2)
set(CMAKE_C_COMPILER $3-gcc$4)
set(CMAKE_CXX_COMPILER $3-g++$4)
set(CMAKE_CROSSCOMPILING_EMULATOR "$5")
set(CMAKE_FIND_ROOT_PATH "$sysroot")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END
}

linux() { # PROCESSOR
    cmake/install_packages.sh "g++-$1-linux-gnu" qemu-user googletest
    toolchain Linux "$1" "$1-linux-gnu" "" "qemu-$1;-L;/usr/$1-linux-gnu"
}

windows() {
    cmake/install_packages.sh g++-mingw-w64-x86-64-posix wine64 googletest
    toolchain Windows x86_64 x86_64-w64-mingw32 -posix /usr/lib/wine/wine64
    # The runtime libraries become part of the programs, so that Wine need not be told where they
    # lie.
    echo 'set(CMAKE_EXE_LINKER_FLAGS_INIT -static)' >>"$build/toolchain.cmake"
    export WINEPREFIX=$build/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
    [[ -d $WINEPREFIX ]] || /usr/lib/wine/wine64 wineboot --init >/dev/null 2>&1
}

# Packages of several versions of libc++ exclude each other, so this one is unpacked instead of
# installed.
libcxx() {
    cmake/install_packages.sh "clang-$llvm" googletest
    local root=$build/libc++-$llvm
    local folder=$root/usr/lib/llvm-$llvm
    if [[ ! -d $root ]]; then
        mkdir -p "$build/packages"
        (cd "$build/packages" && apt-get download -qq -o APT::Sandbox::User=root \
            {libc++,libc++abi,libunwind}-"$llvm"-dev {libc++1,libc++abi1,libunwind}-"$llvm")
        for file in "$build"/packages/*.deb; do
            dpkg --extract "$file" "$root"
        done
    fi
    cat >"$build/toolchain.cmake" <<END
set(CMAKE_C_COMPILER clang-$llvm)
set(CMAKE_CXX_COMPILER clang++-$llvm)
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -Wno-unused-command-line-argument -isystem $folder/include/c++/v1")
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-stdlib=libc++ -L$folder/lib -Wl,-rpath,$folder/lib:$root/usr/lib/x86_64-linux-gnu")
set(CMAKE_PREFIX_PATH "$sysroot")
END
    timeout_factor=1
    options+=(-DNAMES_INSTALL=OFF)
}

case $target in
aarch64 | s390x) linux "$target" ;;
windows) windows ;;
libcxx) libcxx ;;
*) echo "cross.sh: no target $target" >&2; exit 2 ;;
esac

configure() { # SOURCE FOLDER OPTION...
    local source=$1 folder=$2
    shift 2
    cmake --fresh -S "$source" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release \
          -DCMAKE_TOOLCHAIN_FILE="$build/toolchain.cmake" "$@" >/dev/null
}
configure /usr/src/googletest "$build/googletest" -DBUILD_GMOCK=OFF \
          -DCMAKE_INSTALL_PREFIX="$sysroot"
cmake --build "$build/googletest" --parallel "$(nproc)" --target install >/dev/null
configure . "$build" -DNAMES_WERROR=ON -DNAMES_TEST_TIMEOUT_FACTOR="$timeout_factor" "${options[@]}"
cmake --build "$build" --parallel "$(nproc)"
ctest --test-dir "$build" --parallel "$(nproc)" --output-on-failure

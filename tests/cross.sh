#!/usr/bin/env bash
# cross.sh: builds everything for AArch64 and runs the tests there, under user-mode emulation. Installs what is missing; uses the machine's
# architecture-independent headers and GoogleTest's sources. Build folder: the first argument, or build/aarch64.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/aarch64}
target=aarch64-linux-gnu

cmake/install_packages.sh g++-$target qemu-user libgtest-dev
mkdir -p "$build"
build=$(cd "$build" && pwd)

# /usr/include as a whole holds this machine's C library, so what the target may see of it is linked into a folder of its own.
mkdir -p "$build/sysroot/include" "$build/sysroot/share"
for header in xxhash.h CLI nlohmann; do
    ln -sfn "/usr/include/$header" "$build/sysroot/include/$header"
done
cat >"$build/toolchain.cmake" <<END
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER $target-gcc)
set(CMAKE_CXX_COMPILER $target-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/$target)
set(CMAKE_FIND_ROOT_PATH "$build/sysroot")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
END

# Packages of headers alone; their CMake files lie in folders of this machine's.
headers=$build/sysroot/include
package() { # NAME TARGET
    mkdir -p "$build/sysroot/lib/cmake/$1"
    printf 'if(NOT TARGET %s)\nadd_library(%s INTERFACE IMPORTED)\nset_target_properties(%s PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "%s")\nendif()\n' \
        "$2" "$2" "$2" "$headers" >"$build/sysroot/lib/cmake/$1/$1Config.cmake"
}
package CLI11 CLI11::CLI11
package nlohmann_json nlohmann_json::nlohmann_json

cmake -S /usr/src/googletest -B "$build/googletest" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$build/toolchain.cmake" -DCMAKE_BUILD_TYPE=Release \
    -DBUILD_GMOCK=OFF -DCMAKE_INSTALL_PREFIX="$build/sysroot" >/dev/null
cmake --build "$build/googletest" --parallel "$(nproc)" --target install >/dev/null
cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$build/toolchain.cmake" -DCMAKE_BUILD_TYPE=Release -DNAMES_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)"

# Scripts that test a program start it by its name, which this machine cannot, so one that can stands in its place meanwhile.
programs=(tools/names_tool examples/typical_course_c examples/typical_course_cpp)
restore() {
    for program in "${programs[@]}"; do
        [[ ! -e $build/$program.elf ]] || mv "$build/$program.elf" "$build/$program"
    done
}
trap restore EXIT
for program in "${programs[@]}"; do
    mv "$build/$program" "$build/$program.elf"
    printf '#!/bin/sh\nexec qemu-aarch64 -L /usr/%s "%s" "$@"\n' "$target" "$build/$program.elf" >"$build/$program"
    chmod +x "$build/$program"
done

# The emulator keeps books on memory that nobody touches, so what it holds resident says nothing about the loader.
export GTEST_FILTER=-Loader.TouchesNoMemoryThatAnImageOnlyClaims
ctest --test-dir "$build" --parallel "$(nproc)" --output-on-failure --timeout 1800

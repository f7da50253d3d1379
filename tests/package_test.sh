#!/usr/bin/env bash
# package_test.sh: builds the packages from two copies of the sources, which must give the same
# bytes, installs them into an empty root, builds the examples there, and removes them without a
# trace. Unoptimised, as only the packaging is tested.
set -Eeuo pipefail
trap 'echo "line $LINENO failed"; cat log' ERR
source=$(cd "$(dirname "$0")/.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export SOURCE_DATE_EPOCH=1700000000

for copy in first another/copy; do
    mkdir -p "$copy/source"
    (cd "$source" && git ls-files -z | xargs -0 tar c --ignore-failed-read) 2>log |
        tar x -C "$copy/source"
    cmake -S "$copy/source" -B "$copy/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DBUILD_SHARED_LIBS=ON -DNAMES_BUILD_TESTS=OFF -DNAMES_BUILD_EXAMPLES=OFF \
        -DCMAKE_UNITY_BUILD=ON \
        -DCMAKE_CXX_FLAGS_RELEASE=-O0 >log
    cmake --build "$copy/build" --parallel "$(nproc)" >log
    (cd "$copy/build" && cpack -G DEB && cpack -G TGZ) >log
    mkdir "$copy/packages"
    mv "$copy"/build/*.{deb,tar.gz} "$copy/packages"
done
diff -r first/packages another/copy/packages

mkdir -p root/var/lib/dpkg/{updates,info}
touch root/var/lib/dpkg/{status,available}
package() { # What the packages depend on is this machine's.
    dpkg --root="$folder/root" --force-not-root,script-chrootless,depends "$@" >log 2>&1
}
package --install first/packages/*.deb
mkdir archive
tar xf first/packages/*.tar.gz -C archive --strip-components 1
diff -r --no-dereference root/usr archive

export PKG_CONFIG_PATH=root/usr/lib/pkgconfig LD_LIBRARY_PATH=root/usr/lib
flags=$(pkg-config --cflags --libs names_manager)
# shellcheck disable=SC2086
gcc "$source/examples/typical_course.c" -o use_c $flags
# shellcheck disable=SC2086
g++ -std=c++17 "$source/examples/typical_course.cpp" -o use_cpp $flags
./use_c | cmp - "$source/examples/typical_course_c.expected"
./use_cpp | cmp - "$source/examples/typical_course_cpp.expected"
env -u LD_LIBRARY_PATH root/usr/bin/names_tool self-check >log

package --purge names-manager-dev names-manager
[[ ! -e root/usr ]]

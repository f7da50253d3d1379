#!/bin/sh
# amalgamate.sh FOLDER: writes the whole component with the shipped host into FOLDER, as
# names_manager.h and names_manager.cpp.
set -eu
mkdir -p "$1"
folder=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
version=$(sed -n 's/^#define NAMES_MANAGER_VERSION_[A-Z]* \([0-9]*\)$/\1/p' names/names_manager.h |
    paste -s -d .)
list() { find "$@" | LC_ALL=C sort | paste -s -d ' '; }
include() { printf '#include "%s"\n' "$@"; }
headers=$(list names host files -name '*.h')

# Words of lists are the names of files.
# shellcheck disable=SC2046,SC2086
awk -f cmake/amalgamate.awk >"$folder/names_manager.h" <<END
/* names_manager $version: keeps the names of numbered entities. For C11 and later and for C++; with
 * the C++ face from C++17 on.
 *
 * This header and names_manager.cpp, which is C++20, are the whole component, put together from the
 * files whose names stand where they begin. Where names_manager.cpp is compiled with NAMES_OWN_HOST
 * defined, it leaves out host/ and files/; the services are then yours to implement.
 */
#ifndef NAMES_MANAGER_H
#define NAMES_MANAGER_H
$(include names/names_manager.h $headers)
#if defined(__cplusplus) && __cplusplus >= 201703L
$(include names/names_manager.hpp files/names_file.hpp)
#endif
#endif
END
# shellcheck disable=SC2046
awk -v known="$headers" -v hidden=1 -f cmake/amalgamate.awk >"$folder/names_manager.cpp" <<END
/* names_manager $version: the implementation. */
#pragma GCC diagnostic ignored "-Wunused-function" /* of helpers that only the tool calls */
$(include names_manager.h)
$(include $(list names -name '*.cpp'))
#ifndef NAMES_OWN_HOST
$(include $(list host files -name '*.cpp'))
#endif
END

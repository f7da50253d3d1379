#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: optimised by gcc, then by clang under
# AddressSanitizer and UndefinedBehaviorSanitizer. Then the threads' tests under ThreadSanitizer, and
# each fuzz target for some seconds. All warnings of both compilers are errors.
set -euo pipefail
cd "$(dirname "$0")"

cmake/install_packages.sh clang libclang-rt-14-dev
for preset in release asan; do
    echo "== $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --parallel "$(nproc)"
    ctest --preset "$preset" --parallel "$(nproc)"
done

echo "== tsan"
cmake --preset tsan >/dev/null
cmake --build --preset tsan --parallel "$(nproc)" --target thread_test lock_stress
ctest --preset tsan --tests-regex '^(thread_test|lock_stress)$'

echo "== fuzz"
tests/fuzz.sh 0.15

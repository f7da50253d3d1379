#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: optimised, then under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")"

cmake/install_packages.sh
for preset in release asan; do
    echo "== $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --parallel "$(nproc)"
    ctest --preset "$preset" --parallel "$(nproc)"
done

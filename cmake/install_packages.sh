#!/usr/bin/env bash
# install_packages.sh [PACKAGE...]: installs those of the Debian packages that a build needs, and of
# those named, that are missing, as root or with sudo. Does nothing on a system without dpkg.
set -euo pipefail

build_packages=(g++ cmake ninja-build ccache pkg-config
                libxxhash-dev libgtest-dev libcli11-dev nlohmann-json3-dev wamerican)

command -v dpkg-query >/dev/null || exit 0

missing=()
for package in "${build_packages[@]}" "$@"; do
    status=$(dpkg-query --show --showformat='${db:Status-Abbrev}' "$package" 2>/dev/null || true)
    [[ $status == ?i* ]] || missing+=("$package")
done
((${#missing[@]})) || exit 0

as_root=()
if [[ $(id -u) != 0 ]]; then
    command -v sudo >/dev/null || { echo "Not root, no sudo, missing: ${missing[*]}" >&2; exit 1; }
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -qq --yes --no-install-recommends "${missing[@]}" >/dev/null

#!/usr/bin/env bash
# Builds the library and runs every test, from a fresh clone or an existing build.
#
# Installs the Debian packages the build needs when they are missing (as root, with apt-get),
# configures the "default" preset (build/default), builds, and runs the whole suite with
# ctest's "default" preset. Exits non-zero when anything fails. Running it again only rebuilds
# what changed.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

packages=(cmake ninja-build g++ clang libgtest-dev libgmock-dev libbenchmark-dev pkg-config
  libglib2.0-dev)

install_missing_packages() {
  command -v dpkg >/dev/null 2>&1 || return 0
  local missing=() package
  for package in "${packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  ((${#missing[@]} == 0)) && return 0
  if [[ "$(id -u)" -ne 0 ]]; then
    echo "test.sh: missing packages: ${missing[*]}" >&2
    echo "test.sh: install them with: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "test.sh: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -y -q --no-install-recommends "${missing[@]}"
}

install_missing_packages

jobs="${ZELSYSTS_JOBS:-$(nproc 2>/dev/null || echo 2)}"
cmake --preset default
cmake --build --preset default -j "$jobs"
ctest --preset default

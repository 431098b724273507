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

source "$root/tools/setup.sh"
zelsysts_install_missing_packages test.sh

jobs="${ZELSYSTS_JOBS:-$(nproc 2>/dev/null || echo 2)}"
cmake --preset default
cmake --build --preset default -j "$jobs"
ctest --preset default

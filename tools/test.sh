#!/usr/bin/env bash
# Builds the library and runs every test, from a fresh clone or an existing build.
#
# Installs the Debian packages the build and the tests need when they are missing (as root, with
# apt-get), configures the "default" preset (build/default), builds, and runs the whole suite
# with ctest's "default" preset. Exits non-zero when anything fails. Running it again only
# rebuilds what changed. Parallelism: CMAKE_BUILD_PARALLEL_LEVEL, CTEST_PARALLEL_LEVEL.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

source "$root/tools/setup.sh"
zelsysts_require test.sh build tests
zelsysts_parallelism

cmake --preset default
cmake --build --preset default
ctest --preset default

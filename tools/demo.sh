#!/usr/bin/env bash
# Builds and runs the demonstration, from a fresh clone or an existing build.
#
# Installs the Debian packages the build needs when they are missing (as root, with apt-get),
# configures the "demo" preset (build/demo: the library and the demonstration, no test
# framework), builds the demonstration's host program and its three implementation libraries,
# and runs the host on the dictionaries that the repository ships (examples/dictionaries), with
# the build's lib/ folder on LD_LIBRARY_PATH so that the libraries that the dictionaries name are
# found. Exits with the host's status: 0 when every step behaved as the dictionaries and
# libraries promise. Parallelism: CMAKE_BUILD_PARALLEL_LEVEL.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

source "$root/tools/setup.sh"
zelsysts_require demo.sh build
zelsysts_parallelism

cmake --preset demo >/dev/null
cmake --build --preset demo

build="$root/build/demo"
echo "demo.sh: ZELDictionaryPath=$root/examples/dictionaries"
echo "demo.sh: LD_LIBRARY_PATH=$build/lib"
exec env ZELDictionaryPath="$root/examples/dictionaries" \
  LD_LIBRARY_PATH="$build/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
  "$build/bin/drawing_host"

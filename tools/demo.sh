#!/usr/bin/env bash
# Builds and runs the demonstration, from a fresh clone or an existing build.
#
# Installs the Debian packages the build needs when they are missing (as root, with apt-get),
# configures the "demo" preset (build/demo: the library and the demonstration, no test
# framework), builds the demonstration's host program and its three implementation libraries,
# and runs the host on the dictionaries that the repository ships (examples/dictionaries), with
# the build's lib/ folder on LD_LIBRARY_PATH so that the libraries that the dictionaries name are
# found. Then shows the dictionary tool at work: zelsysts-dict explains the host's failing
# request (the circle asked for IStatistics) and checks the dictionaries. Exits with the host's
# status: 0 when every step behaved as the dictionaries and libraries promise. Parallelism:
# CMAKE_BUILD_PARALLEL_LEVEL.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

source "$root/tools/setup.sh"
zelsysts_require demo.sh build
zelsysts_parallelism

cmake --preset demo >/dev/null
cmake --build --preset demo
cmake --build build/demo --target zelsysts-dict

build="$root/build/demo"
echo "demo.sh: ZELDictionaryPath=$root/examples/dictionaries"
echo "demo.sh: LD_LIBRARY_PATH=$build/lib"
export ZELDictionaryPath="$root/examples/dictionaries"
export LD_LIBRARY_PATH="$build/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"
status=0
"$build/bin/drawing_host" || status=$?

# The dictionary tool on the demonstration's own failing request and dictionaries. Its exit
# statuses are shown, not fatal: explain exits 2 for a request that fails.
for command in "explain Circle IStatistics" "check --load $ZELDictionaryPath"; do
  echo
  echo "demo.sh: zelsysts-dict $command"
  tool=0
  # shellcheck disable=SC2086 # the command's words are meant to split
  "$build/bin/zelsysts-dict" $command || tool=$?
  echo "demo.sh: zelsysts-dict $command: exit status $tool"
done
exit "$status"

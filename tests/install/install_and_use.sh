#!/usr/bin/env bash
# Installs the build tree into a fresh prefix, then builds and runs a client against the
# installed files three times: with pkg-config, with pkg-config and only a run path (no
# LD_LIBRARY_PATH), and with find_package. Each run must print exactly "client: ok".
#
#   install_and_use.sh <build dir> <work dir> <client source dir> [extra compiler flags]
#
# The extra flags (those of a sanitizer build) go to both client builds, so that the client and
# the installed libraries agree on the runtime they need.
set -euo pipefail

build_dir="$1"
work_dir="$2"
client_dir="$3"
extra_flags="${4:-}"

rm -rf "$work_dir"
prefix="$work_dir/prefix"
mkdir -p "$prefix" "$work_dir/dictionary"

step() { echo "== $*"; }

step "install into $prefix"
cmake --install "$build_dir" --prefix "$prefix" >"$work_dir/install.log"

# The library folder is lib, lib64 or lib/<multiarch>, as GNUInstallDirs chose.
pc_file="$(find "$prefix" -name ZELSysTSObjectModeler.pc -path '*/pkgconfig/*' | head -n 1)"
[[ -n "$pc_file" ]] || { echo "no ZELSysTSObjectModeler.pc installed"; exit 1; }
libdir="$(dirname "$(dirname "$pc_file")")"
for file in \
  "$libdir/libZELSysTSObjectModeler.so" "$libdir/libZELSysTS.so" \
  "$libdir/cmake/ZELSysTSObjectModeler/ZELSysTSObjectModelerConfig.cmake" \
  "$prefix/include/ZELSysTSObjectModeler/ZELSysTSObjectModeler.h"; do
  [[ -e "$file" ]] || { echo "not installed: $file"; exit 1; }
done

# The installed tree must be self-contained: nothing may point back into the build tree.
if grep -rIl -- "$build_dir" "$prefix" >"$work_dir/leaks.txt"; then
  echo "installed files refer to the build tree:"
  cat "$work_dir/leaks.txt"
  exit 1
fi

# run_client <binary> [library path]: runs the client on an empty dictionary folder.
run_client() {
  local binary="$1" library_path="${2-$libdir}"
  local out="$work_dir/$(basename "$1").out" err="$work_dir/$(basename "$1").err"
  if ! env -u LD_LIBRARY_PATH ${library_path:+LD_LIBRARY_PATH="$library_path"} \
    ZELDictionaryPath="$work_dir/dictionary" "$binary" >"$out" 2>"$err"; then
    cat "$out" "$err"
    echo "client $binary failed"
    exit 1
  fi
  if [[ -s "$err" ]]; then
    echo "client $binary wrote to standard error:"
    cat "$err"
    exit 1
  fi
  cat "$out"
  [[ "$(cat "$out")" == "client: ok" ]] || { echo "client $binary did not say ok"; exit 1; }
}

step "pkg-config client"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
pkg-config --exists --print-errors ZELSysTSObjectModeler
# shellcheck disable=SC2046,SC2086  # word splitting of the flags is intended
"${CXX:-c++}" -std=c++17 $extra_flags "$client_dir/client.cpp" $(pkg-config --cflags --libs ZELSysTSObjectModeler) \
  -o "$work_dir/client-pkgconfig"
run_client "$work_dir/client-pkgconfig"

step "pkg-config client with a run path and no LD_LIBRARY_PATH"
# shellcheck disable=SC2046,SC2086
"${CXX:-c++}" -std=c++17 $extra_flags "$client_dir/client.cpp" $(pkg-config --cflags --libs ZELSysTSObjectModeler) \
  -Wl,-rpath,"$libdir" -o "$work_dir/client-rpath"
run_client "$work_dir/client-rpath" ""

step "find_package client"
cmake -S "$client_dir" -B "$work_dir/client-build" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="$extra_flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$extra_flags" >"$work_dir/client-configure.log" ||
  { cat "$work_dir/client-configure.log"; exit 1; }
cmake --build "$work_dir/client-build" >"$work_dir/client-build.log" ||
  { cat "$work_dir/client-build.log"; exit 1; }
cp "$work_dir/client-build/client" "$work_dir/client-find-package"
run_client "$work_dir/client-find-package"

echo "install and use: ok"
